// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/TemporaryFolder.h"

#include <QDBusConnection>
#include <QMap>
#include <QProcess>
#include <QStringList>

#include <memory>

/// A private D-Bus daemon with a socket of its own. It can be stopped and started again at the same address. It starts
/// only services that the test has put into `services`, and none that are installed on the machine.
class PrivateBus {
public:
    PrivateBus();
    ~PrivateBus();

    std::filesystem::path socket() const { return folder_.path / "bus"; }
    QString address() const;

    /// Where the bus looks for services that it starts on demand.
    std::filesystem::path services() const { return folder_.path / "services"; }

    void start();
    void stop();

    /// The test's own connection, to talk to the services on the bus.
    QDBusConnection connection() const { return connection_; }

    /// Whether somebody has the name.
    bool has(const QString& name) const;

    /// Calls a method and returns the first value of the reply; fails the test if the reply is an error.
    QVariant call(const QString& service, const QString& path, const QString& interface, const QString& method,
                  const QVariantList& arguments = {}) const;

private:
    TemporaryFolder folder_;
    QProcess daemon_;
    QDBusConnection connection_;
    int starts_ = 0;
};

/// A program that owns a name on a private bus, its system bus, until it is stopped or goes out of scope.
class BusService {
public:
    /// `environment` is added to our own; returns when `name` is on the bus.
    BusService(const PrivateBus& bus, const QString& name, const QString& program, const QStringList& arguments,
               const QMap<QString, QString>& environment = {});
    ~BusService();

    void stop();

private:
    QProcess process_;
};

/// A service mocked by python-dbusmock.
class StandIn : public BusService {
public:
    /// `arguments` as for `python3 -m dbusmock --system`.
    StandIn(const PrivateBus& bus, const QString& name, const QStringList& arguments);
};
