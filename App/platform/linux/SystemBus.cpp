// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/SystemBus.h"

#include "platform/MainLoop.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <utility>

namespace fs = std::filesystem;

namespace {

QString connectionName(int attempt) {
    return QStringLiteral("velmora-system-%1").arg(attempt);
}

/// Whether somebody listens at the socket. Asked first because the bus library waits long for an answer.
bool somebodyListens(const fs::path& socket) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path = socket.string();
    if (path.empty() || path.size() >= sizeof address.sun_path)
        return false;
    path.copy(address.sun_path, path.size());
    const FileDescriptor descriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    return descriptor && ::connect(descriptor.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

} // namespace

SystemBus::SystemBus(fs::path socket, MainLoop& loop)
    : socket_(std::move(socket))
    , loop_(loop)
    , connection_(connectionName(0))
    , watch_([this] {
        watchSocket();
        tryToConnect();
        // The socket is there a moment before somebody listens at it.
        loop_.after(Duration(1), lifetime_.guard([this] { tryToConnect(); }));
    }) {}

SystemBus::~SystemBus() {
    QDBusConnection::disconnectFromBus(connectionName(attempt_));
}

fs::path SystemBus::usualSocket() {
    const QString address = qEnvironmentVariable("DBUS_SYSTEM_BUS_ADDRESS");
    const QString prefix = QStringLiteral("unix:path=");
    if (address.startsWith(prefix))
        return QString(address.mid(prefix.size())).section(QLatin1Char(','), 0, 0).toStdString();
    // An address of another kind is nothing that could be watched: then there is no system bus.
    return address.isEmpty() ? "/run/dbus/system_bus_socket" : "";
}

void SystemBus::start() {
    watchSocket();
    tryToConnect();
}

void SystemBus::watchSocket() {
    watch_.watch({socket_});
}

void SystemBus::tryToConnect() {
    if (connection_.isConnected() || !somebodyListens(socket_))
        return;
    QDBusConnection::disconnectFromBus(connectionName(attempt_));
    connection_ = QDBusConnection::connectToBus(QStringLiteral("unix:path=") + QString::fromStdString(socket_.string()),
                                                connectionName(++attempt_));
    if (!connection_.isConnected())
        return;
    connection_.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
                        QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"), this,
                        SLOT(connectionLost()));
    connected_.notify();
}

void SystemBus::connectionLost() {
    lost_.notify();
    // The next bus may already be listening, with its socket made before we knew of the loss.
    tryToConnect();
}
