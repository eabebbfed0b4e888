// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/PrivateBus.h"

#include "support/WaitUntil.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>
#include <gtest/gtest.h>

namespace {

const char* const configuration = R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:path=SOCKET</listen>
  <servicedir>SERVICES</servicedir>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
)";

void end(QProcess& process) {
    if (process.state() == QProcess::NotRunning)
        return;
    process.terminate();
    if (!process.waitForFinished(5000)) {
        process.kill();
        process.waitForFinished(5000);
    }
}

} // namespace

PrivateBus::PrivateBus() : connection_(QStringLiteral("none")) {
    std::filesystem::create_directory(services());
    QString content = QString::fromLatin1(configuration);
    content.replace(QLatin1String("SOCKET"), QString::fromStdString(socket().string()));
    content.replace(QLatin1String("SERVICES"), QString::fromStdString(services().string()));
    write(folder_.path / "bus.conf", content.toStdString());
    start();
}

PrivateBus::~PrivateBus() {
    stop();
}

QString PrivateBus::address() const {
    return QStringLiteral("unix:path=") + QString::fromStdString(socket().string());
}

void PrivateBus::start() {
    daemon_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    daemon_.start(QStringLiteral("dbus-daemon"),
                  {QStringLiteral("--nofork"), QStringLiteral("--nopidfile"), QStringLiteral("--print-address"),
                   QStringLiteral("--config-file=") + QString::fromStdString((folder_.path / "bus.conf").string())});
    // dbus-daemon prints its address once it listens.
    ASSERT_TRUE(waitUntil([this] { return daemon_.canReadLine(); }));
    connection_ = QDBusConnection::connectToBus(address(), QStringLiteral("test-%1").arg(++starts_));
    ASSERT_TRUE(connection_.isConnected());
}

void PrivateBus::stop() {
    QDBusConnection::disconnectFromBus(connection_.name());
    end(daemon_);
    daemon_.readAll();
}

bool PrivateBus::has(const QString& name) const {
    return connection_.interface()->isServiceRegistered(name).value();
}

QVariant PrivateBus::call(const QString& service, const QString& path, const QString& interface, const QString& method,
                          const QVariantList& arguments) const {
    auto message = QDBusMessage::createMethodCall(service, path, interface, method);
    message.setArguments(arguments);
    const QDBusMessage reply = connection_.call(message, QDBus::Block, 5000);
    EXPECT_EQ(reply.type(), QDBusMessage::ReplyMessage) << qPrintable(reply.errorMessage());
    return reply.arguments().value(0);
}

BusService::BusService(const PrivateBus& bus, const QString& name, const QString& program, const QStringList& arguments,
                       const QMap<QString, QString>& environment) {
    QProcessEnvironment all = QProcessEnvironment::systemEnvironment();
    all.insert(QStringLiteral("DBUS_SYSTEM_BUS_ADDRESS"), bus.address());
    all.remove(QStringLiteral("LD_PRELOAD")); // it must not see the simulated devices
    for (auto entry = environment.begin(); entry != environment.end(); ++entry)
        all.insert(entry.key(), entry.value());
    process_.setProcessEnvironment(all);
    process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process_.start(program, arguments);
    EXPECT_TRUE(waitUntil([&] { return bus.has(name); })) << qPrintable(program);
}

BusService::~BusService() {
    stop();
}

void BusService::stop() {
    end(process_);
}

StandIn::StandIn(const PrivateBus& bus, const QString& name, const QStringList& arguments)
    : BusService(bus, name, QStringLiteral("/usr/bin/python3"),
                 QStringList{QStringLiteral("-m"), QStringLiteral("dbusmock"), QStringLiteral("--system")} +
                     arguments) {}
