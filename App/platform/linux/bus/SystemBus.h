// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Lifetime.h"
#include "platform/Observers.h"
#include "platform/linux/files/FileDescriptor.h"
#include "platform/linux/files/FolderWatch.h"

#include <QDBusConnection>
#include <QObject>
#include <QSocketNotifier>

#include <filesystem>

class MainLoop;

/// The system bus, which may be absent, appear late, hang, or be restarted while we run. Its socket is watched, so
/// nothing polls. libdbus would block the whole program on a bus that hangs, so we first ask the bus which ways to
/// authenticate it offers, without waiting, and connect only once it has answered.
class SystemBus final : public QObject {
    Q_OBJECT

public:
    /// `socket` is the bus's socket.
    SystemBus(std::filesystem::path socket, MainLoop& loop);
    ~SystemBus() override;

    /// Where the bus of this machine listens: what DBUS_SYSTEM_BUS_ADDRESS names, else the usual place.
    static std::filesystem::path usualSocket();

    /// Connects soon if the bus is there, and whenever it appears.
    void start();

    /// The present connection; not connected while there is no bus.
    QDBusConnection connection() const { return connection_; }

    /// Calls back at each new connection; signals have to be subscribed to again then.
    [[nodiscard]] Subscription onConnected(std::function<void()> callback) {
        return connected_.add(std::move(callback));
    }

    /// Calls back when the connection is lost.
    [[nodiscard]] Subscription onLost(std::function<void()> callback) { return lost_.add(std::move(callback)); }

private Q_SLOTS:
    void connectionLost();

private:
    std::filesystem::path socket_;
    MainLoop& loop_;
    QDBusConnection connection_;
    Observers<> connected_;
    Observers<> lost_;
    FolderWatch watch_;
    int attempt_ = 0;
    FileDescriptor line_;               ///< while the question is open
    QSocketNotifier* answer_ = nullptr; ///< of that line
    Lifetime lifetime_;

    void tryToConnect();
    void hangUp();
    void connectNow();
};
