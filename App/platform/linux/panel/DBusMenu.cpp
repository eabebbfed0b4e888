// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/panel/DBusMenu.h"

#include "dbusmenuadaptor.h"
#include "platform/linux/bus/MessageLimits.h"
#include "platform/qt/HeapMemory.h"

#include <QGuiApplication>

#include <algorithm>
#include <chrono>
#include <utility>

DBusMenu::DBusMenu(QDBusConnection bus) {
    registerMenuTypes();
    new DbusmenuAdaptor(this); // owned by this object, as adaptors are
    bus.registerObject(QLatin1String(path), this);
    refusal_.setSingleShot(true);
    refusal_.setInterval(std::chrono::milliseconds(200));
    connect(&refusal_, &QTimer::timeout, [] { giveBackFreeMemory(); });
}

void DBusMenu::setEntries(std::vector<StatusItem::MenuEntry> entries) {
    QList<int> ids;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const bool isTheSame = i < entries_.size() && entries_[i].label == entries[i].label;
        ids.append(isTheSame ? ids_[static_cast<qsizetype>(i)] : ++lastId_);
    }
    entries_ = std::move(entries);
    if (std::exchange(ids_, ids) != ids)
        Q_EMIT LayoutUpdated(++revision_, 0);
}

QString DBusMenu::textDirection() {
    return QGuiApplication::isRightToLeft() ? QStringLiteral("rtl") : QStringLiteral("ltr");
}

const StatusItem::MenuEntry* DBusMenu::entry(int id) const {
    const auto found = std::ranges::find(ids_, id);
    return found == ids_.end() ? nullptr : &entries_[static_cast<std::size_t>(found - ids_.begin())];
}

QVariantMap DBusMenu::properties(int id, const QStringList& names) const {
    QVariantMap all;
    if (id == 0) {
        all.insert(QStringLiteral("children-display"), QStringLiteral("submenu"));
    } else {
        // An underscore marks a mnemonic; a literal one is doubled.
        QString label = QString::fromStdString(entry(id)->label);
        label.replace(QLatin1Char('_'), QLatin1String("__"));
        all.insert(QStringLiteral("label"), label);
        all.insert(QStringLiteral("enabled"), true);
        all.insert(QStringLiteral("visible"), true);
    }
    if (names.isEmpty())
        return all;
    QVariantMap wanted;
    for (const QString& name : names) {
        if (all.contains(name))
            wanted.insert(name, all.value(name));
    }
    return wanted;
}

void DBusMenu::refuse(int id) const {
    if (calledFromDBus())
        sendErrorReply(QDBusError::InvalidArgs, QStringLiteral("There is no menu item %1.").arg(id));
}

bool DBusMenu::refuses(bool hasTooMany) {
    if (!hasTooMany)
        return false;
    if (calledFromDBus())
        sendErrorReply(QDBusError::LimitsExceeded,
                       QStringLiteral("A message may name no more than %1 items or properties.").arg(mostInMessage));
    refusal_.start();
    return true;
}

uint DBusMenu::GetLayout(int parentId, int recursionDepth, const QStringList& propertyNames, MenuLayout& layout) {
    if (!isItem(parentId)) {
        refuse(parentId);
        return revision_;
    }
    if (refuses(propertyNames.size() > mostInMessage))
        return revision_;
    layout = {.id = parentId, .properties = properties(parentId, propertyNames), .children = {}};
    if (parentId != 0 || recursionDepth == 0)
        return revision_;
    for (const int id : ids_)
        layout.children.append({.id = id, .properties = properties(id, propertyNames), .children = {}});
    return revision_;
}

MenuItems DBusMenu::GetGroupProperties(const MenuIds& ids, const QStringList& propertyNames) {
    if (refuses(ids.hasMore || propertyNames.size() > mostInMessage))
        return {};
    MenuItems items;
    for (const int id : ids.items.isEmpty() ? QList<int>{0} + ids_ : ids.items) {
        if (isItem(id))
            items.append({.id = id, .properties = properties(id, propertyNames)});
    }
    return items;
}

QDBusVariant DBusMenu::GetProperty(int id, const QString& name) const {
    const QVariant value = isItem(id) ? properties(id, {}).value(name) : QVariant();
    if (!value.isValid() && calledFromDBus())
        sendErrorReply(QDBusError::InvalidArgs, QStringLiteral("Menu item %1 has no such property.").arg(id));
    return QDBusVariant(value);
}

void DBusMenu::Event(int id, const QString& eventId, const QDBusVariant& /*data*/, uint /*timestamp*/) {
    if (!isItem(id)) {
        refuse(id);
        return;
    }
    if (id == 0 || eventId != QLatin1String("clicked"))
        return;
    // On a later turn of the loop: the panel gets its reply first, whatever the entry does.
    const auto action = entry(id)->action;
    QMetaObject::invokeMethod(
        this, [action] { action(); }, Qt::QueuedConnection);
}

QList<int> DBusMenu::EventGroup(const MenuEvents& events) {
    if (refuses(events.hasMore))
        return {};
    QList<int> unknown;
    for (const MenuEvent& event : events.items) {
        if (isItem(event.id))
            Event(event.id, event.eventId, {}, 0);
        else
            unknown.append(event.id);
    }
    return unknown;
}

bool DBusMenu::AboutToShow(int id) const {
    if (!isItem(id))
        refuse(id);
    return false;
}

QList<int> DBusMenu::AboutToShowGroup(const MenuIds& ids, QList<int>& idErrors) {
    if (refuses(ids.hasMore))
        return {};
    for (const int id : ids.items) {
        if (!isItem(id))
            idErrors.append(id);
    }
    return {};
}
