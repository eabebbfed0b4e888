// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/StatusBar.h"
#include "platform/linux/panel/MenuTypes.h"

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusVariant>
#include <QList>
#include <QObject>
#include <QTimer>

#include <vector>

/// A flat menu, exported for the panel to draw (com.canonical.dbusmenu). Item 0 is the root. An entry with a new label
/// becomes a new item: in an open menu, a click on the old label must not do what the new one says.
///
/// A call with more than `mostInMessage` ids, events or names is refused as a whole: a panel that is told so knows what
/// has not happened, which a few events done out of many would not tell it.
class DBusMenu final : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_PROPERTY(uint Version READ version)
    Q_PROPERTY(QString TextDirection READ textDirection)
    Q_PROPERTY(QString Status READ status)
    Q_PROPERTY(QStringList IconThemePath READ iconThemePath)

public:
    static constexpr const char* path = "/MenuBar";

    /// Exports the menu at `path`.
    explicit DBusMenu(QDBusConnection bus);

    /// Replaces the entries, and tells the panel if the menu reads differently.
    void setEntries(std::vector<StatusItem::MenuEntry> entries);
    const std::vector<StatusItem::MenuEntry>& entries() const { return entries_; }

    // Called by the panel; the names are those of the D-Bus interface.
    uint GetLayout(int parentId, int recursionDepth, const QStringList& propertyNames, MenuLayout& layout);
    MenuItems GetGroupProperties(const MenuIds& ids, const QStringList& propertyNames);
    QDBusVariant GetProperty(int id, const QString& name) const;
    void Event(int id, const QString& eventId, const QDBusVariant& data, uint timestamp);
    QList<int> EventGroup(const MenuEvents& events);
    bool AboutToShow(int id) const;
    QList<int> AboutToShowGroup(const MenuIds& ids, QList<int>& idErrors);

Q_SIGNALS:
    void LayoutUpdated(uint revision, int parent);
    void ItemActivationRequested(int id, uint timestamp);

private:
    std::vector<StatusItem::MenuEntry> entries_;
    QList<int> ids_; ///< of the entries
    int lastId_ = 0;
    uint revision_ = 1;
    QTimer refusal_; ///< QtDBus makes a string of every name that it receives; by then they are free

    static uint version() { return 3; }
    static QString textDirection();
    static QString status() { return QStringLiteral("normal"); }
    static QStringList iconThemePath() { return {}; }
    const StatusItem::MenuEntry* entry(int id) const;
    bool isItem(int id) const { return id == 0 || entry(id) != nullptr; }
    QVariantMap properties(int id, const QStringList& names) const;
    void refuse(int id) const;
    bool refuses(bool hasTooMany);
};
