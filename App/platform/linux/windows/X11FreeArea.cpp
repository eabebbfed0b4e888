// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/windows/X11FreeArea.h"

#include "platform/linux/windows/PanelDepth.h"
#include "platform/linux/windows/X11.h"

#include <QScreen>

#include <array>
#include <cstring>

QRect x11FreeArea(const QScreen& screen) {
    xcb_connection_t* connection = x11Connection();
    if (connection == nullptr || screen.virtualSiblings().size() < 2)
        return screen.availableGeometry();
    const QRect whole = screen.geometry(); // its corner is in device pixels
    std::array<std::int32_t, 4> area{};    // of the first workspace: x, y, width and height in device pixels
    const auto question = xcb_get_property(connection, 0, x11Screen(connection).root,
                                           x11Atom(connection, "_NET_WORKAREA"), XCB_ATOM_CARDINAL, 0, area.size());
    const X11Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(connection, question, nullptr));
    if (!reply || reply->format != 32 || xcb_get_property_value_length(reply.get()) != sizeof area)
        return whole;
    std::memcpy(area.data(), xcb_get_property_value(reply.get()), sizeof area);
    const auto [x, y, width, height] = area;
    const double scale = screen.devicePixelRatio();
    const auto depth = [scale](double from, double to) { return panelDepth(to - from, scale); };
    return whole.marginsRemoved({depth(whole.x(), x), depth(whole.y(), y),
                                 depth(width, whole.x() + whole.width() * scale - x),
                                 depth(height, whole.y() + whole.height() * scale - y)});
}
