// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/panel/XEmbedItem.h"

#include "platform/linux/panel/PanelMenu.h"

#include <QGuiApplication>
#include <QScreen>

#include <utility>

namespace {

/// A point beside the item, so that a window that opens there does not cover it: a tray need not reserve its space on
/// the screen.
ScreenPoint besideIt(const QRect& item) {
    const QPoint centre = item.center();
    const QScreen* screen = QGuiApplication::screenAt(centre);
    const bool isAbove = screen == nullptr || centre.y() < screen->geometry().center().y();
    return {centre.x(), isAbove ? item.bottom() + 1 : item.top() - 1};
}

} // namespace

bool XEmbedItem::isPossible() {
    return QGuiApplication::platformName() == QLatin1String("xcb");
}

bool XEmbedItem::hasTray() {
    return isPossible() && QSystemTrayIcon::isSystemTrayAvailable();
}

XEmbedItem::XEmbedItem(const GlyphImages& glyphs) : glyphs_(glyphs) {
    icon_.setContextMenu(&menu_);
    QObject::connect(&icon_, &QSystemTrayIcon::activated, &icon_, [this](QSystemTrayIcon::ActivationReason reason) {
        // A double click comes after two single ones.
        const bool isClick = reason == QSystemTrayIcon::Trigger || reason == QSystemTrayIcon::MiddleClick;
        if (!isClick || !action_)
            return;
        action_(besideIt(icon_.geometry()));
    });
}

bool XEmbedItem::knowsSymbol(std::string_view name) const {
    return glyphs_.has(name);
}

void XEmbedItem::show(const Content& content) {
    const std::string& symbol = content.numberSymbol.empty() ? content.symbol : content.numberSymbol;
    if (std::exchange(shownSymbol_, symbol) != symbol)
        icon_.setIcon(glyphs_.icon(symbol));
    icon_.setToolTip(QString::fromStdString(content.toolTip));
    icon_.show();
}

void XEmbedItem::setAction(std::function<void(std::optional<ScreenPoint>)> action) {
    action_ = std::move(action);
}

void XEmbedItem::setMenu(std::vector<MenuEntry> entries) {
    fillMenu(menu_, entries);
}
