// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusVirtualObject>
#include <QString>

class StatusNotifierItem;

/// What panels see of an item at its object path: its properties, and the calls that it takes. A property without a
/// value is not there at all. That is why this is no adaptor, which always offers every property: a panel takes an
/// empty label for a label, and MATE's then hides the picture where buttons have no pictures.
class StatusNotifierObject final : public QDBusVirtualObject {
    Q_OBJECT

public:
    /// The item must outlive this.
    explicit StatusNotifierObject(StatusNotifierItem& item) : item_(item) {}

    QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

private:
    StatusNotifierItem& item_;

    QDBusMessage answerAboutProperties(const QDBusMessage& call) const;
    bool take(const QDBusMessage& call);
};
