// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/session/SessionApplication.h"

#include "applicationadaptor.h"
#include "platform/ApplicationId.h"
#include "platform/linux/windows/ActivationToken.h"

#include <QDBusError>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QVariantMap>

#include <utility>

namespace {

constexpr QLatin1String path("/app/velmora/Velmora");
constexpr QLatin1String interface("org.freedesktop.Application");
constexpr int answerMilliseconds = 5000;

} // namespace

SessionApplication::SessionApplication(QDBusConnection bus) : bus_(std::move(bus)) {
    qDBusRegisterMetaType<PlatformData>();
    new ApplicationAdaptor(this); // owned by this object, as adaptors are
    bus_.registerObject(path, this);
}

bool SessionApplication::claim() {
    return bus_.registerService(QLatin1String(applicationId));
}

void SessionApplication::release() {
    auto message =
        QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
                                       QStringLiteral("org.freedesktop.DBus"), QStringLiteral("ReleaseName"));
    message << QString::fromLatin1(applicationId);
    bus_.send(message);
}

bool SessionApplication::activateOther() {
    // The launcher gave this process the right to take the focus; the other instance needs it.
    QVariantMap platformData;
    const QString token = qEnvironmentVariable("XDG_ACTIVATION_TOKEN");
    if (!token.isEmpty())
        platformData.insert(QStringLiteral("activation-token"), token);
    const QString startup = qEnvironmentVariable("DESKTOP_STARTUP_ID");
    if (!startup.isEmpty())
        platformData.insert(QStringLiteral("desktop-startup-id"), startup);
    auto message =
        QDBusMessage::createMethodCall(QLatin1String(applicationId), path, interface, QStringLiteral("Activate"));
    message << platformData;
    message.setAutoStartService(false);
    const QDBusMessage answer = bus_.call(message, QDBus::Block, answerMilliseconds);
    // An instance that does not answer is there all the same.
    return QDBusError(answer).type() != QDBusError::ServiceUnknown &&
           answer.errorName() != QLatin1String("org.freedesktop.DBus.Error.NameHasNoOwner");
}

void SessionApplication::Activate(const PlatformData& platformData) {
    if (!platformData.activationToken.isEmpty())
        takeActivationToken(platformData.activationToken);
    // On a later turn of the main loop: the other process gets its answer first and can end.
    QMetaObject::invokeMethod(this, &SessionApplication::activated, Qt::QueuedConnection);
}

void SessionApplication::Open(const QStringList& /*uris*/, const PlatformData& platformData) {
    Activate(platformData);
}

void SessionApplication::ActivateAction(const QString& /*actionName*/, const QVariantList& /*parameter*/,
                                        const PlatformData& /*platformData*/) {}
