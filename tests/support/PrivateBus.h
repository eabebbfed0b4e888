// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/TemporaryFolder.h"

#include <QDBusConnection>
#include <QProcess>
#include <QStringList>

#include <memory>

/// A message bus of a test's own, at a socket of its own. It can be stopped and started again at the same place.
class PrivateBus {
public:
    PrivateBus();
    ~PrivateBus();

    std::filesystem::path socket() const { return folder_.path / "bus"; }
    QString address() const;

    void start();
    void stop();

    /// The test's own connection, to talk to the services on the bus.
    QDBusConnection connection() const { return connection_; }

    /// Whether somebody has the name.
    bool has(const QString& name) const;

    /// Calls a method and gives its first answer; fails the test when it is refused.
    QVariant call(const QString& service, const QString& path, const QString& interface, const QString& method,
                  const QVariantList& arguments = {}) const;

private:
    TemporaryFolder folder_;
    QProcess daemon_;
    QDBusConnection connection_;
    int starts_ = 0;
};

/// One of python-dbusmock's stand-ins on a private bus, until it is stopped or goes out of scope.
class StandIn {
public:
    /// `arguments` as for `python3 -m dbusmock --system`; returns when `name` is on the bus.
    StandIn(const PrivateBus& bus, const QString& name, const QStringList& arguments);
    ~StandIn();

    void stop();

private:
    QProcess process_;
};
