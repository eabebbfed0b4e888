// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/panel/PanelMenu.h"

#include <QMenu>

void fillMenu(QMenu& menu, const std::vector<StatusItem::MenuEntry>& entries) {
    menu.clear();
    for (const StatusItem::MenuEntry& entry : entries)
        QObject::connect(menu.addAction(QString::fromStdString(entry.label)), &QAction::triggered, &menu,
                         [action = entry.action] { action(); });
}

PanelMenu::PanelMenu() = default;
PanelMenu::~PanelMenu() = default;

void PanelMenu::show(const std::vector<StatusItem::MenuEntry>& entries, ScreenPoint point) {
    if (!menu_) {
        menu_ = std::make_unique<QMenu>();
        menu_->setWindowFlag(Qt::FramelessWindowHint); // no title bar, see below
    }
    fillMenu(*menu_, entries);
    // In Wayland a menu that belongs to no window is a window like others; a fixed size makes a tiling compositor let
    // it float.
    menu_->setFixedSize(menu_->sizeHint());
    menu_->popup(QPoint(point.x, point.y));
}
