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
    if (!menu_)
        menu_ = std::make_unique<QMenu>();
    fillMenu(*menu_, entries);
    menu_->popup(QPoint(point.x, point.y));
}
