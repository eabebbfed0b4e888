// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/session/LogindSleep.h"

#include "platform/linux/bus/DBusCall.h"
#include "platform/linux/bus/SystemBus.h"

#include <QDBusPendingReply>

#include <utility>

namespace {

constexpr QLatin1String service("org.freedesktop.login1");
constexpr QLatin1String path("/org/freedesktop/login1");
constexpr QLatin1String manager("org.freedesktop.login1.Manager");

} // namespace

LogindSleep::LogindSleep(SystemBus& bus, std::function<void(Task)> afterUpdates)
    : bus_(bus)
    , afterUpdates_(std::move(afterUpdates)) {}

void LogindSleep::start() {
    subscriptions_.push_back(bus_.onConnected([this] { follow(); }));
    if (bus_.connection().isConnected())
        follow();
}

void LogindSleep::follow() {
    QDBusConnection connection = bus_.connection();
    // With the signature: libdbus aborts on an argument of another type.
    connection.connect(service, path, manager, QStringLiteral("PrepareForSleep"), {}, QStringLiteral("b"), this,
                       SLOT(prepareForSleep(bool)));
    watcher_ = std::make_unique<QDBusServiceWatcher>(service, connection, QDBusServiceWatcher::WatchForOwnerChange);
    // The lock is gone when the logind that gave it is.
    connect(watcher_.get(), &QDBusServiceWatcher::serviceOwnerChanged, this, [this] {
        takeLock(answerTries);
        endSleep();
    });
    takeLock(answerTries);
    endSleep();
}

void LogindSleep::endSleep() {
    if (std::exchange(asleep_, false))
        didWake.notify();
}

void LogindSleep::takeLock(int triesLeft) {
    auto message = QDBusMessage::createMethodCall(service, path, manager, QStringLiteral("Inhibit"));
    message << QStringLiteral("sleep") << QStringLiteral("Velmora")
            << QStringLiteral("The history has to be on the disk first") << QStringLiteral("delay");
    message.setAutoStartService(false);
    const int request = ++request_;
    callAsync(bus_.connection(), message, this,
              [this, request, triesLeft](const QDBusPendingReply<QDBusUnixFileDescriptor>& reply) {
                  // A lock that arrives when the machine is already going to sleep would only delay that.
                  if (request != request_ || asleep_)
                      return;
                  if (reply.isError())
                      askAgain(this, reply.error(), triesLeft, [this, request, triesLeft] {
                          if (request == request_ && !asleep_)
                              takeLock(triesLeft - 1);
                      });
                  else
                      lock_ = reply.value();
              });
}

void LogindSleep::prepareForSleep(bool goesToSleep) {
    asleep_ = goesToSleep;
    if (goesToSleep) {
        willSleep.notify();
        // The task holds the lock until it has run.
        afterUpdates_([lock = std::exchange(lock_, std::nullopt)] {});
        return;
    }
    takeLock(answerTries);
    didWake.notify();
}
