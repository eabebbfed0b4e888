// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/windows/LayerShellWindows.h"

#include "platform/linux/windows/LayerEdge.h"

#include <QGuiApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QRasterWindow>
#include <QScreen>

#include <wayland-client.h>

#include <LayerShellQt/Window>
#include <string_view>
#include <utility>

namespace {

using Layer = LayerShellQt::Window;

struct Delete {
    void operator()(wl_event_queue* queue) const { wl_event_queue_destroy(queue); }
    void operator()(wl_registry* registry) const { wl_registry_destroy(registry); }
    void operator()(void* wrapper) const { wl_proxy_wrapper_destroy(wrapper); }
};
template <class T>
using Owned = std::unique_ptr<T, Delete>;

/// Whether the compositor has a protocol. Asked apart from Qt's events, which nothing else may handle meanwhile.
bool hasProtocol(wl_display* display, std::string_view name) {
    const Owned<wl_event_queue> queue(wl_display_create_queue(display));
    const Owned<void> wrapper(wl_proxy_create_wrapper(display));
    wl_proxy_set_queue(static_cast<wl_proxy*>(wrapper.get()), queue.get());
    const Owned<wl_registry> registry(wl_display_get_registry(static_cast<wl_display*>(wrapper.get())));
    auto search = std::pair(name, false);
    constexpr wl_registry_listener listener{
        .global =
            [](void* data, wl_registry*, std::uint32_t, const char* interface, std::uint32_t) {
                auto& [wanted, isThere] = *static_cast<decltype(search)*>(data);
                isThere = isThere || wanted == interface;
            },
        .global_remove = [](void*, wl_registry*, std::uint32_t) {}};
    wl_registry_add_listener(registry.get(), &listener, &search);
    return wl_display_roundtrip_queue(display, queue.get()) >= 0 && search.second;
}

/// A wholly transparent window that tells of clicks.
class InvisibleWindow final : public QRasterWindow {
public:
    explicit InvisibleWindow(std::function<void()> clicked) : clicked_(std::move(clicked)) {
        QSurfaceFormat transparent;
        transparent.setAlphaBufferSize(8);
        setFormat(transparent);
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        painter.fillRect(QRect({}, size()), Qt::transparent);
    }
    void mousePressEvent(QMouseEvent* event) override {
        const std::function<void()> clicked = clicked_; // it ends this
        event->accept();
        clicked();
    }

private:
    std::function<void()> clicked_;
};

} // namespace

LayerShellWindows::~LayerShellWindows() = default;

bool LayerShellWindows::canHaveShadow() {
    return true;
}

void LayerShellWindows::willShowPopover(QWindow& window, const QRect& place, int shadow) {
    if (QScreen* screen = QGuiApplication::screenAt(place.center()))
        window.setScreen(screen);
    const QRect whole = window.screen()->geometry();
    const LayerEdge across = layerEdge(place.x(), place.width(), whole.x(), whole.width());
    const LayerEdge down = layerEdge(place.y(), place.height(), whole.y(), whole.height());
    Layer& layer = *Layer::get(&window);
    layer.setScope(QStringLiteral("popover"));
    layer.setLayer(Layer::LayerOverlay);
    layer.setKeyboardInteractivity(Layer::KeyboardInteractivityOnDemand);
    Layer::Anchors anchors = across.isAtEnd ? Layer::AnchorRight : Layer::AnchorLeft;
    anchors |= down.isAtEnd ? Layer::AnchorBottom : Layer::AnchorTop;
    layer.setAnchors(anchors);
    layer.setMargins(QMargins(across.margin, down.margin, across.margin, down.margin) - shadow);
}

void LayerShellWindows::popoverShown(QWindow& /*window*/, std::function<void()> clickedElsewhere) {
    if (!under_.empty())
        return; // it has another size; these cover all of the screens
    for (QScreen* screen : QGuiApplication::screens()) {
        auto window = std::make_unique<InvisibleWindow>(clickedElsewhere);
        window->setScreen(screen);
        window->setGeometry(screen->geometry());
        window->create();
        Layer& layer = *Layer::get(window.get());
        layer.setScope(QStringLiteral("around-popover"));
        layer.setLayer(Layer::LayerTop);
        layer.setKeyboardInteractivity(Layer::KeyboardInteractivityNone);
        layer.setAnchors({Layer::AnchorTop, Layer::AnchorBottom, Layer::AnchorLeft, Layer::AnchorRight});
        constexpr int overPanels = -1;
        layer.setExclusiveZone(overPanels);
        window->show();
        under_.push_back(std::move(window));
    }
}

void LayerShellWindows::popoverHidden() {
    // On a later turn of the loop: one of them may be telling of a click.
    for (std::unique_ptr<QWindow>& window : under_) {
        window->hide();
        window.release()->deleteLater();
    }
    under_.clear();
}

void LayerShellWindows::willShowSettings(QWindow& /*window*/) {}

DesktopWindows* makeLayerShellWindows() {
    const auto* wayland = qGuiApp->nativeInterface<QNativeInterface::QWaylandApplication>();
    if (wayland == nullptr || !hasProtocol(wayland->display(), "zwlr_layer_shell_v1"))
        return nullptr;
    return new LayerShellWindows;
}
