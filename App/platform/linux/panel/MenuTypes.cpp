// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/panel/MenuTypes.h"

#include "platform/linux/bus/MessageLimits.h"

#include <QDBusMetaType>
#include <QDBusVariant>

namespace {

/// Reads no more than a message may hold: QtDBus reads what a method takes before it calls the method.
template <class List>
const QDBusArgument& readFirst(const QDBusArgument& argument, List& list) {
    argument.beginArray();
    while (!argument.atEnd() && list.items.size() < mostInMessage) {
        list.items.emplaceBack();
        argument >> list.items.back();
    }
    list.hasMore = !argument.atEnd();
    argument.endArray();
    return argument;
}

} // namespace

QDBusArgument& operator<<(QDBusArgument& argument, const MenuLayout& layout) {
    argument.beginStructure();
    argument << layout.id << layout.properties;
    argument.beginArray(QMetaType::fromType<QDBusVariant>());
    for (const MenuLayout& child : layout.children)
        argument << QDBusVariant(QVariant::fromValue(child));
    argument.endArray();
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, MenuLayout& layout) {
    argument.beginStructure();
    argument >> layout.id >> layout.properties;
    argument.beginArray();
    while (!argument.atEnd()) {
        QDBusVariant child;
        argument >> child;
        layout.children.append(qdbus_cast<MenuLayout>(child.variant()));
    }
    argument.endArray();
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const MenuItem& item) {
    argument.beginStructure();
    argument << item.id << item.properties;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, MenuItem& item) {
    argument.beginStructure();
    argument >> item.id >> item.properties;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const MenuEvent& event) {
    argument.beginStructure();
    argument << event.id << event.eventId << QDBusVariant(0) << 0U;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, MenuEvent& event) {
    argument.beginStructure();
    argument >> event.id >> event.eventId;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const MenuIds& ids) {
    return argument << ids.items;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, MenuIds& ids) {
    return readFirst(argument, ids);
}

QDBusArgument& operator<<(QDBusArgument& argument, const MenuEvents& events) {
    return argument << events.items;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, MenuEvents& events) {
    return readFirst(argument, events);
}

void registerMenuTypes() {
    qDBusRegisterMetaType<QList<int>>();
    qDBusRegisterMetaType<MenuLayout>();
    qDBusRegisterMetaType<MenuItem>();
    qDBusRegisterMetaType<MenuItems>();
    qDBusRegisterMetaType<MenuEvent>();
    qDBusRegisterMetaType<MenuIds>();
    qDBusRegisterMetaType<MenuEvents>();
}
