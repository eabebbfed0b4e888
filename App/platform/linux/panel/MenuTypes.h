// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusArgument>
#include <QDBusVariant>
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

/// Something that happened to an item on the screen, signature (isvu).
struct MenuEvent {
    int id = 0;
    QString eventId;
    QDBusVariant data{QVariant(0)}; ///< never invalid: QtDBus takes the signature from a default-constructed value
    uint timestamp = 0;
};
using MenuEvents = QList<MenuEvent>;
Q_DECLARE_METATYPE(MenuLayout)
Q_DECLARE_METATYPE(MenuItem)
Q_DECLARE_METATYPE(MenuEvent)

QDBusArgument& operator<<(QDBusArgument& argument, const MenuLayout& layout);
const QDBusArgument& operator>>(const QDBusArgument& argument, MenuLayout& layout);
QDBusArgument& operator<<(QDBusArgument& argument, const MenuItem& item);
const QDBusArgument& operator>>(const QDBusArgument& argument, MenuItem& item);
QDBusArgument& operator<<(QDBusArgument& argument, const MenuEvent& event);
const QDBusArgument& operator>>(const QDBusArgument& argument, MenuEvent& event);

/// Registers the types above with QtDBus; to be called before they are used there.
void registerMenuTypes();
