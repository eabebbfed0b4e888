// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/bus/SystemBus.h"

#include "platform/MainLoop.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <string_view>
#include <utility>

namespace fs = std::filesystem;

namespace {

QString connectionName(int attempt) {
    return QStringLiteral("velmora-system-%1").arg(attempt);
}

/// What a bus answers to anybody: which ways to authenticate it offers. Every conversation starts with a zero byte.
constexpr std::string_view question("\0AUTH\r\n", 7);

/// A connection to the socket, with the question sent; none if nobody listens.
FileDescriptor lineTo(const fs::path& socket) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path = socket.string();
    if (path.empty() || path.size() >= sizeof address.sun_path)
        return {};
    path.copy(address.sun_path, path.size());
    FileDescriptor line(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!line || ::connect(line.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::send(line.get(), question.data(), question.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(question.size()))
        return {};
    return line;
}

} // namespace

SystemBus::SystemBus(fs::path socket, MainLoop& loop)
    : socket_(std::move(socket))
    , loop_(loop)
    , connection_(connectionName(0))
    , watch_([this] {
        watch_.watch({socket_});
        hangUp(); // a bus that has been replaced never answers
        tryToConnect();
        // The socket exists a moment before the bus listens on it.
        loop_.after(Duration(1), lifetime_.guard([this] { tryToConnect(); }));
    }) {}

SystemBus::~SystemBus() {
    hangUp();
    QDBusConnection::disconnectFromBus(connectionName(attempt_));
}

fs::path SystemBus::usualSocket() {
    const QString address = qEnvironmentVariable("DBUS_SYSTEM_BUS_ADDRESS");
    const QString prefix = QStringLiteral("unix:path=");
    if (address.startsWith(prefix))
        return QString(address.mid(prefix.size())).section(QLatin1Char(','), 0, 0).toStdString();
    // An address of another kind cannot be watched; then there is no system bus for us.
    return address.isEmpty() ? "/run/dbus/system_bus_socket" : "";
}

void SystemBus::start() {
    watch_.watch({socket_});
    tryToConnect();
}

void SystemBus::tryToConnect() {
    if (connection_.isConnected() || line_)
        return;
    line_ = lineTo(socket_);
    if (!line_)
        return;
    answer_ = new QSocketNotifier(line_.get(), QSocketNotifier::Read, this);
    connect(answer_, &QSocketNotifier::activated, this, [this] {
        char first = 0;
        const bool isAlive = ::recv(line_.get(), &first, 1, MSG_DONTWAIT) == 1;
        hangUp();
        if (isAlive)
            connectNow();
    });
}

void SystemBus::hangUp() {
    if (!line_)
        return;
    answer_->setEnabled(false);
    answer_->deleteLater(); // hangUp() may be called from its own signal
    line_ = FileDescriptor();
}

void SystemBus::connectNow() {
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
    // The next bus may be listening already: it may have made its socket before we noticed the loss.
    tryToConnect();
}
