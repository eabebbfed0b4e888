// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusArgument>
#include <QList>
#include <QString>
#include <QVariantMap>

/// An item of a menu with its children, signature (ia{sv}av); each child is a variant that holds the same struct.
struct MenuLayout {
    int id = 0;
    QVariantMap properties;
    QList<MenuLayout> children;
};

/// The properties of one item, signature (ia{sv}).
struct MenuItem {
    int id = 0;
    QVariantMap properties;
};
using MenuItems = QList<MenuItem>;

/// Something that happened to an item on the screen, signature (isvu). The event's data and its time are not read: no
/// entry needs them, and the data can be anything.
struct MenuEvent {
    int id = 0;
    QString eventId;
};

/// The first ids of a message, signature ai.
struct MenuIds {
    QList<int> items;
    bool hasMore = false; ///< the message has more than `mostInMessage`; the others are not read
};

/// The first events of a message, signature a(isvu).
struct MenuEvents {
    QList<MenuEvent> items;
    bool hasMore = false; ///< likewise
};
Q_DECLARE_METATYPE(MenuLayout)
Q_DECLARE_METATYPE(MenuItem)
Q_DECLARE_METATYPE(MenuEvent)
Q_DECLARE_METATYPE(MenuIds)
Q_DECLARE_METATYPE(MenuEvents)

QDBusArgument& operator<<(QDBusArgument& argument, const MenuLayout& layout);
const QDBusArgument& operator>>(const QDBusArgument& argument, MenuLayout& layout);
QDBusArgument& operator<<(QDBusArgument& argument, const MenuItem& item);
const QDBusArgument& operator>>(const QDBusArgument& argument, MenuItem& item);
QDBusArgument& operator<<(QDBusArgument& argument, const MenuEvent& event);
const QDBusArgument& operator>>(const QDBusArgument& argument, MenuEvent& event);
QDBusArgument& operator<<(QDBusArgument& argument, const MenuIds& ids);
const QDBusArgument& operator>>(const QDBusArgument& argument, MenuIds& ids);
QDBusArgument& operator<<(QDBusArgument& argument, const MenuEvents& events);
const QDBusArgument& operator>>(const QDBusArgument& argument, MenuEvents& events);

/// Registers the types above with QtDBus; to be called before they are used there.
void registerMenuTypes();
