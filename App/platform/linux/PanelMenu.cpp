// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/PanelMenu.h"

#include <QMenu>

void showPanelMenu(const std::vector<StatusItem::MenuEntry>& entries, ScreenPoint point) {
    auto* menu = new QMenu;
    menu->setAttribute(Qt::WA_DeleteOnClose);
    for (const StatusItem::MenuEntry& entry : entries)
        QObject::connect(menu->addAction(QString::fromStdString(entry.label)), &QAction::triggered, menu,
                         [action = entry.action] { action(); });
    menu->popup(QPoint(point.x, point.y));
}
