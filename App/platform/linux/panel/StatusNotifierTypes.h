// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QDBusArgument>
#include <QList>
#include <QString>

/// One size of an icon, signature (iiay): ARGB32, each pixel in network byte order. Not premultiplied, except for a
/// panel that expects it.
struct StatusNotifierPixmap {
    int width = 0;
    int height = 0;
    QByteArray pixels;
};
using StatusNotifierPixmaps = QList<StatusNotifierPixmap>;

/// A tooltip, signature (sa(iiay)ss).
struct StatusNotifierToolTip {
    QString iconName;
    StatusNotifierPixmaps iconPixmap;
    QString title;
    QString text;
};
Q_DECLARE_METATYPE(StatusNotifierPixmap)
Q_DECLARE_METATYPE(StatusNotifierToolTip)

QDBusArgument& operator<<(QDBusArgument& argument, const StatusNotifierPixmap& pixmap);
const QDBusArgument& operator>>(const QDBusArgument& argument, StatusNotifierPixmap& pixmap);
QDBusArgument& operator<<(QDBusArgument& argument, const StatusNotifierToolTip& toolTip);
const QDBusArgument& operator>>(const QDBusArgument& argument, StatusNotifierToolTip& toolTip);

/// Registers the types above with QtDBus; to be called before they are used there.
void registerStatusNotifierTypes();
