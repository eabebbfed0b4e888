// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/windows/X11Windows.h"

#include "platform/linux/windows/X11.h"
#include "platform/linux/windows/X11FreeArea.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QWindow>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <initializer_list>
#include <utility>

namespace {

/// Whether the X server is inside a Wayland compositor.
bool isInWayland() {
    return !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

void setAtoms(xcb_connection_t* connection, const QWindow& window, std::string_view property,
              std::initializer_list<std::string_view> names) {
    std::vector<xcb_atom_t> atoms;
    for (const std::string_view name : names)
        atoms.push_back(x11Atom(connection, name));
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, static_cast<xcb_window_t>(window.winId()),
                        x11Atom(connection, property), XCB_ATOM_ATOM, 32, static_cast<std::uint32_t>(atoms.size()),
                        atoms.data());
}

/// Tells window managers which part of the window is its own shadow, by the property that GTK made for that.
void setShadow(xcb_connection_t* connection, const QWindow& window, int shadow) {
    const auto side = static_cast<std::uint32_t>(std::lround(shadow * window.devicePixelRatio()));
    const std::array<std::uint32_t, 4> sides{side, side, side, side};
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, static_cast<xcb_window_t>(window.winId()),
                        x11Atom(connection, "_GTK_FRAME_EXTENTS"), XCB_ATOM_CARDINAL, 32, sides.size(), sides.data());
}

constexpr std::uint8_t transparentDepth = 32;

/// The visual whose fourth byte is the opacity; none if the server has no such.
xcb_visualid_t transparentVisual(const xcb_screen_t& screen) {
    for (auto depths = xcb_screen_allowed_depths_iterator(&screen); depths.rem > 0; xcb_depth_next(&depths)) {
        if (depths.data->depth == transparentDepth && xcb_depth_visuals_length(depths.data) > 0)
            return xcb_depth_visuals(depths.data)->visual_id;
    }
    return XCB_NONE;
}

/// What is left of the screen without the window, in device pixels.
std::vector<xcb_rectangle_t> around(xcb_connection_t* connection, const xcb_screen_t& screen, xcb_window_t window) {
    const auto sizeQuestion = xcb_get_geometry(connection, window);
    const auto placeQuestion = xcb_translate_coordinates(connection, window, screen.root, 0, 0);
    const X11Reply<xcb_get_geometry_reply_t> size(xcb_get_geometry_reply(connection, sizeQuestion, nullptr));
    const X11Reply<xcb_translate_coordinates_reply_t> place(
        xcb_translate_coordinates_reply(connection, placeQuestion, nullptr));
    if (!size || !place)
        return {};
    const int width = screen.width_in_pixels;
    const int height = screen.height_in_pixels;
    const int left = std::clamp<int>(place->dst_x, 0, width);
    const int top = std::clamp<int>(place->dst_y, 0, height);
    const int right = std::clamp(place->dst_x + size->width, left, width);
    const int bottom = std::clamp(place->dst_y + size->height, top, height);
    std::vector<xcb_rectangle_t> rectangles;
    const auto add = [&](int x, int y, int toX, int toY) {
        if (x < toX && y < toY)
            rectangles.push_back({static_cast<std::int16_t>(x), static_cast<std::int16_t>(y),
                                  static_cast<std::uint16_t>(toX - x), static_cast<std::uint16_t>(toY - y)});
    };
    add(0, 0, width, top);
    add(0, top, left, bottom);
    add(right, top, width, bottom);
    add(0, bottom, width, height);
    return rectangles;
}

/// A window that tells of clicks. Without a visual it has no picture; with one it is wholly transparent.
xcb_window_t invisibleWindow(xcb_connection_t* connection, xcb_window_t root, const xcb_rectangle_t& place,
                             xcb_visualid_t visual, xcb_colormap_t colours) {
    const bool hasPicture = visual != XCB_NONE;
    // In the order of their bits: background, border, no frame, what we want to hear of, colours.
    const std::array<std::uint32_t, 5> values{0, 0, 1, XCB_EVENT_MASK_BUTTON_PRESS, colours};
    const std::uint32_t always = XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK;
    const std::uint32_t ofPicture = XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_COLORMAP;
    const xcb_window_t window = xcb_generate_id(connection);
    xcb_create_window(connection, hasPicture ? transparentDepth : 0, window, root, place.x, place.y, place.width,
                      place.height, 0, hasPicture ? XCB_WINDOW_CLASS_INPUT_OUTPUT : XCB_WINDOW_CLASS_INPUT_ONLY,
                      hasPicture ? visual : XCB_COPY_FROM_PARENT, hasPicture ? always | ofPicture : always,
                      hasPicture ? values.data() : values.data() + 2);
    xcb_map_window(connection, window);
    return window;
}

} // namespace

X11Windows::X11Windows() {
    constexpr std::chrono::milliseconds soon{30}; // before a second click
    untilPointerIsFree_.setSingleShot(true);
    untilPointerIsFree_.setInterval(soon);
    QObject::connect(&untilPointerIsFree_, &QTimer::timeout, &untilPointerIsFree_, [this] {
        xcb_connection_t* connection = x11Connection();
        if (popover_ != nullptr && connection != nullptr)
            takePointer(connection);
    });
}

X11Windows::~X11Windows() {
    popoverHidden();
}

std::optional<ScreenRect> X11Windows::freeArea(const QScreen& screen) {
    const QRect area = x11FreeArea(screen);
    return ScreenRect{area.x(), area.y(), area.width(), area.height()};
}

void X11Windows::popoverWanted() {
    xcb_connection_t* connection = x11Connection();
    if (connection == nullptr || isInWayland() || asked_)
        return;
    // A compositing manager owns this selection (Extended Window Manager Hints).
    if (compositor_ == XCB_ATOM_NONE)
        compositor_ = x11Atom(connection, "_NET_WM_CM_S0");
    asked_ = xcb_get_selection_owner(connection, compositor_);
    xcb_flush(connection);
}

bool X11Windows::canHaveShadow() {
    xcb_connection_t* connection = x11Connection();
    if (connection == nullptr)
        return false;
    popoverWanted();
    X11Reply<xcb_get_selection_owner_reply_t> compositor;
    if (const auto question = std::exchange(asked_, std::nullopt))
        compositor.reset(xcb_get_selection_owner_reply(connection, *question, nullptr));
    return transparentVisual(x11Screen(connection)) != XCB_NONE &&
           (isInWayland() || (compositor && compositor->owner != XCB_NONE));
}

void X11Windows::willShowPopover(QWindow& window, const QRect& /*place*/, int shadow) {
    xcb_connection_t* connection = x11Connection();
    if (connection == nullptr)
        return;
    if (shadow > 0)
        setShadow(connection, window, shadow);
    if (!isInWayland())
        return;
    // Before each showing, because window managers remove the property from a hidden window. Qt adds to it.
    setAtoms(connection, window, "_NET_WM_STATE",
             {"_NET_WM_STATE_SKIP_TASKBAR", "_NET_WM_STATE_SKIP_PAGER", "_KDE_NET_WM_STATE_SKIP_SWITCHER"});
}

bool X11Windows::takePointer(xcb_connection_t* connection) {
    // Qt does not look whether the server gave it the pointer. Asked without Qt's hold on it, which is of another kind
    // where the server has the X Input Extension, so that the server would refuse us as it refuses strangers.
    popover_->setMouseGrabEnabled(false);
    const auto question =
        xcb_grab_pointer(connection, 0, static_cast<xcb_window_t>(popover_->winId()), XCB_EVENT_MASK_BUTTON_PRESS,
                         XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC, XCB_NONE, XCB_NONE, XCB_CURRENT_TIME);
    const X11Reply<xcb_grab_pointer_reply_t> reply(xcb_grab_pointer_reply(connection, question, nullptr));
    if (reply && reply->status == XCB_GRAB_STATUS_SUCCESS) {
        xcb_ungrab_pointer(connection, XCB_CURRENT_TIME);
        hasPointer_ = popover_->setMouseGrabEnabled(true); // Qt refuses under a debugger
    } else {
        untilPointerIsFree_.start(); // mostly because a button is held on the panel
    }
    return hasPointer_;
}

void X11Windows::popoverShown(QWindow& window, std::function<void()> clickedElsewhere) {
    const bool hadPointer = hasPointer_;
    popoverHidden();
    xcb_connection_t* connection = x11Connection();
    if (connection == nullptr)
        return;
    popover_ = &window;
    clickedElsewhere_ = std::move(clickedElsewhere);
    QCoreApplication::instance()->installNativeEventFilter(this);
    const xcb_screen_t& screen = x11Screen(connection);
    xcb_visualid_t visual = XCB_NONE;
    if (isInWayland()) { // whose compositor knows only windows with a picture; elsewhere they need none
        visual = transparentVisual(screen);
        if (visual == XCB_NONE)
            return;
        colours_ = xcb_generate_id(connection);
        xcb_create_colormap(connection, XCB_COLORMAP_ALLOC_NONE, colours_, screen.root, visual);
    } else {
        hasPointer_ = hadPointer;
        if (hasPointer_ || takePointer(connection))
            return;
    }
    for (const xcb_rectangle_t& place : around(connection, screen, static_cast<xcb_window_t>(window.winId())))
        around_.push_back(invisibleWindow(connection, screen.root, place, visual, colours_));
    xcb_flush(connection);
}

void X11Windows::popoverHidden() {
    if (!clickedElsewhere_)
        return;
    clickedElsewhere_ = {};
    untilPointerIsFree_.stop();
    hasPointer_ = false;
    popover_ = nullptr;
    QCoreApplication::instance()->removeNativeEventFilter(this);
    xcb_connection_t* connection = x11Connection();
    for (const xcb_window_t window : std::exchange(around_, {}))
        xcb_destroy_window(connection, window);
    if (colours_ != 0)
        xcb_free_colormap(connection, std::exchange(colours_, 0));
    xcb_flush(connection);
}

void X11Windows::willShowSettings(QWindow& window) {
    xcb_connection_t* connection = x11Connection();
    // QUIRK: KWin gives every window a minimise button, whatever the window asks for, unless it is a utility window of
    // no other one. Qt makes its own utility windows depend on all other windows of the program.
    if (connection == nullptr || !qgetenv("XDG_CURRENT_DESKTOP").toUpper().contains("KDE"))
        return;
    setAtoms(connection, window, "_NET_WM_WINDOW_TYPE", {"_NET_WM_WINDOW_TYPE_UTILITY", "_NET_WM_WINDOW_TYPE_NORMAL"});
}

bool X11Windows::nativeEventFilter(const QByteArray& type, void* message, qintptr* /*result*/) {
    if (type != "xcb_generic_event_t")
        return false;
    constexpr unsigned sentByOther = 0x80;
    constexpr xcb_button_t lastButton = 3; // the others are wheels
    const auto* event = static_cast<xcb_generic_event_t*>(message);
    if ((event->response_type & ~sentByOther) != XCB_BUTTON_PRESS)
        return false;
    const auto* press = reinterpret_cast<const xcb_button_press_event_t*>(event);
    if (press->detail > lastButton || std::find(around_.begin(), around_.end(), press->event) == around_.end())
        return false;
    const std::function<void()> clicked = clickedElsewhere_; // it ends this
    clicked();
    return true;
}
