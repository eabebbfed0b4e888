// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/notifications/NotificationDaemon.h"

#include "platform/linux/bus/DBusCall.h"
#include "platform/qt/Text.h"

#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QTimer>

#include <string>
#include <utility>
#include <vector>

namespace {

constexpr QLatin1String service("org.freedesktop.Notifications");
constexpr QLatin1String path("/org/freedesktop/Notifications");
constexpr QLatin1String interface("org.freedesktop.Notifications");

QDBusMessage method(const QString& name, const char* member) {
    return QDBusMessage::createMethodCall(name, path, interface, QString::fromLatin1(member));
}

constexpr std::chrono::milliseconds readyInterval(200);

/// QUIRK: GNOME Shell owns the name before the object exists that we call.
bool isNotReady(const QDBusError& error) {
    return error.type() == QDBusError::UnknownMethod || error.type() == QDBusError::UnknownObject ||
           error.type() == QDBusError::UnknownInterface;
}

std::optional<bool> toAnswer(const DoNotDisturbQuestion& question, const QDBusMessage& reply) {
    if (reply.type() == QDBusMessage::ErrorMessage)
        return !question.refusedOff.empty() && reply.errorName() == toQString(question.refusedOff)
                   ? std::optional(false)
                   : std::nullopt;
    const QVariant value = reply.arguments().value(0);
    if (!question.mode.empty()) {
        if (value.typeId() != QMetaType::QStringList)
            return std::nullopt;
        return value.toStringList().contains(toQString(question.mode));
    }
    const QVariant content = value.value<QDBusVariant>().variant();
    return content.typeId() == QMetaType::Bool ? std::optional(content.toBool()) : std::nullopt;
}

} // namespace

NotificationDaemon::NotificationDaemon(QDBusConnection bus, Timeouts timeouts)
    : bus_(std::move(bus))
    , timeouts_(timeouts) {}

void NotificationDaemon::start() {
    watcher_.setConnection(bus_);
    watcher_.setWatchMode(QDBusServiceWatcher::WatchForOwnerChange);
    watcher_.addWatchedService(service);
    connect(&watcher_, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString& /*name*/, const QString& /*before*/, const QString& now) { setOwner(now); });
    // From any sender, which is compared with the owner on arrival: some daemons send signals to us directly, and so
    // could anybody.
    const struct {
        const char* signal;
        const char* signature;
        const char* slot;
    } wanted[] = {{"NotificationClosed", "uu", SLOT(notificationClosed(uint, uint, QDBusMessage))},
                  {"ActionInvoked", "us", SLOT(actionInvokedBy(uint, QString, QDBusMessage))}};
    // With the signature: libdbus aborts on arguments of other types.
    for (const auto& [signal, signature, slot] : wanted)
        bus_.connect(QString(), path, interface, QString::fromLatin1(signal), {}, QString::fromLatin1(signature), this,
                     slot);

    auto message =
        QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
                                       QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetNameOwner"));
    message << QString(service);
    callAsync(
        bus_, message, this,
        [this](const QDBusPendingReply<QString>& reply) {
            if (ownerChanges_ == 0 && !reply.isError())
                setOwner(reply.value());
        },
        timeouts_.notify);
}

void NotificationDaemon::setOwner(const QString& owner) {
    ++ownerChanges_;
    const QString former = std::exchange(owner_, owner);
    if (former.isEmpty() && asking_ == Asking::waiting) {
        // Our call has started it; from now on it can be expected to answer.
        QTimer::singleShot(timeouts_.abilities, this, [this, question = question_] { stopWaitingFor(question); });
        return;
    }
    const bool isAwaited = asking_ == Asking::waiting;
    ++question_;
    asking_ = Asking::notYet;
    server_ = {};
    Q_EMIT replaced();
    if (!isAwaited)
        return;
    // Once more, but not for ever: perhaps our call crashes the daemon that it starts.
    if (std::exchange(mayAskAgain_, false))
        askAbilities();
    else
        Q_EMIT absent();
}

bool NotificationDaemon::prepare() {
    if (asking_ == Asking::notYet) {
        mayAskAgain_ = true;
        askAbilities();
    }
    return asking_ == Asking::done;
}

void NotificationDaemon::askAbilities() {
    asking_ = Asking::waiting;
    askInformation(++question_);
    if (!owner_.isEmpty())
        QTimer::singleShot(timeouts_.abilities, this, [this, question = question_] { stopWaitingFor(question); });
}

void NotificationDaemon::askInformation(int question) {
    // Asked first, because this call starts a daemon that is not running, and one that has just started may not be
    // ready.
    callAsync(
        bus_, method(service, "GetServerInformation"), this,
        [this, question](const QDBusPendingReply<QString, QString, QString, QString>& information) {
            if (question != question_)
                return;
            if (information.isError() && owner_.isEmpty()) {
                asking_ = Asking::notYet;
                Q_EMIT absent();
            } else if (information.isError() && asking_ == Asking::waiting && isNotReady(information.error())) {
                QTimer::singleShot(readyInterval, this, [this, question] {
                    if (question == question_ && asking_ == Asking::waiting)
                        askInformation(question);
                });
            } else {
                askCapabilities(question, information.isError() ? QString() : information.argumentAt<0>());
            }
        },
        timeouts_.notify);
}

void NotificationDaemon::askCapabilities(int question, const QString& name) {
    callAsync(
        bus_, method(service, "GetCapabilities"), this,
        [this, question, name](const QDBusPendingReply<QStringList>& capabilities) {
            settle(question, name, capabilities.isError() ? QStringList() : capabilities.value());
        },
        timeouts_.notify);
}

void NotificationDaemon::stopWaitingFor(int question) {
    if (question != question_ || asking_ != Asking::waiting)
        return;
    asking_ = Asking::done;
    Q_EMIT prepared();
}

void NotificationDaemon::settle(int question, const QString& name, const QStringList& capabilities) {
    if (question != question_)
        return;
    std::vector<std::string> texts;
    for (const QString& capability : capabilities)
        texts.push_back(capability.toStdString());
    // Even when it is late: it is good for later notifications.
    server_ = notificationServer(name.toStdString(), texts);
    stopWaitingFor(question);
}

void NotificationDaemon::askDoNotDisturb(std::function<void(std::optional<bool>)> answer) {
    if (!server_.doNotDisturb) {
        QMetaObject::invokeMethod(
            this, [answer = std::move(answer)] { answer(std::nullopt); }, Qt::QueuedConnection);
        return;
    }
    const DoNotDisturbQuestion question = doNotDisturbQuestion(*server_.doNotDisturb);
    auto message = QDBusMessage::createMethodCall(question.service.empty() ? owner_ : toQString(question.service),
                                                  toQString(question.path), toQString(question.interface),
                                                  toQString(question.method));
    for (const std::string_view argument : question.arguments)
        message << toQString(argument);
    message.setAutoStartService(false);
    callAsync(
        bus_, message, this,
        [question, answer = std::move(answer)](const QDBusPendingCall& call) {
            answer(toAnswer(question, call.reply()));
        },
        timeouts_.doNotDisturb);
}

void NotificationDaemon::notify(const Notification& notification, uint replaced,
                                std::function<void(std::optional<uint>)> answer) {
    send(notification, replaced, 1, std::move(answer));
}

void NotificationDaemon::send(const Notification& notification, uint replaced, int retries,
                              std::function<void(std::optional<uint>)> answer) {
    // An id is valid only for the daemon that gave it, and from Qt 6.8 on a reply does not tell who sent it. So we call
    // this very daemon by its unique name; if there is none, the bus starts the one that answers.
    const QString askedOf = owner_;
    auto message = method(askedOf.isEmpty() ? QString(service) : askedOf, "Notify");
    message << QStringLiteral("Velmora") << replaced << notification.icon << notification.summary << notification.body
            << notification.actions << notification.hints << -1;
    callAsync(
        bus_, message, this,
        [this, notification, replaced, retries, askedOf, changes = ownerChanges_,
         answer = std::move(answer)](const QDBusPendingReply<uint>& reply) {
            if (!reply.isError()) {
                const bool isStillThere =
                    askedOf.isEmpty() ? ownerChanges_ == changes + 1 && !owner_.isEmpty() : owner_ == askedOf;
                answer(isStillThere ? std::optional(reply.value()) : std::nullopt);
                return;
            }
            // Once more if it did not reach the screen: the daemon no longer knows the id, since that one was closed a
            // moment ago, or the daemon went away before it answered.
            const bool isGone = !askedOf.isEmpty() && askedOf != owner_;
            const bool isRefused = replaced != 0 && reply.error().type() != QDBusError::NoReply;
            if (retries > 0 && (isGone || isRefused))
                send(notification, 0, retries - 1, answer);
            else
                answer(std::nullopt);
        },
        timeouts_.notify);
}

void NotificationDaemon::close(uint id) {
    auto message = method(owner_, "CloseNotification");
    message << id;
    message.setAutoStartService(false);
    bus_.send(message);
}

void NotificationDaemon::notificationClosed(uint id, uint /*reason*/, const QDBusMessage& message) {
    if (message.service() == owner_)
        Q_EMIT closed(id);
}

void NotificationDaemon::actionInvokedBy(uint id, const QString& key, const QDBusMessage& message) {
    if (message.service() == owner_)
        Q_EMIT actionInvoked(id, key);
}
