// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/dialogs/PortalSaveDialog.h"

#include "platform/qt/Text.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QList>
#include <QRandomGenerator>
#include <QTimer>
#include <QVariantMap>

#include <glib.h>

#include <filesystem>
#include <limits>
#include <utility>

namespace {

/// A filter for files, as the portal takes it: (sa(us)), where the number 1 stands for a MIME type.
struct FilterRule {
    uint kind = 1;
    QString pattern;
};
struct Filter {
    QString name;
    QList<FilterRule> rules;
};

QDBusArgument& operator<<(QDBusArgument& argument, const FilterRule& rule) {
    argument.beginStructure();
    argument << rule.kind << rule.pattern;
    argument.endStructure();
    return argument;
}
const QDBusArgument& operator>>(const QDBusArgument& argument, FilterRule& rule) {
    argument.beginStructure();
    argument >> rule.kind >> rule.pattern;
    argument.endStructure();
    return argument;
}
QDBusArgument& operator<<(QDBusArgument& argument, const Filter& filter) {
    argument.beginStructure();
    argument << filter.name << filter.rules;
    argument.endStructure();
    return argument;
}
const QDBusArgument& operator>>(const QDBusArgument& argument, Filter& filter) {
    argument.beginStructure();
    argument >> filter.name >> filter.rules;
    argument.endStructure();
    return argument;
}

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString requestInterface = QStringLiteral("org.freedesktop.portal.Request");

/// Withdraws a question; the portal closes its dialog.
void closeRequest(const QDBusConnection& bus, const QString& request) {
    auto message = QDBusMessage::createMethodCall(service, request, requestInterface, QStringLiteral("Close"));
    message.setAutoStartService(false);
    bus.send(message);
}

/// The file of this machine that a URI names, byte for byte; empty for any other URI.
std::optional<std::filesystem::path> fileOf(const QString& uri) {
    char* host = nullptr;
    char* const path = g_filename_from_uri(uri.toUtf8().constData(), &host, nullptr);
    const bool isHere = host == nullptr || g_ascii_strcasecmp(host, "localhost") == 0;
    std::optional<std::filesystem::path> file;
    // GLib takes a folder for a file. Version 2.74 takes a query for a part of the name, and 2.84 drops queries and
    // fragments.
    if (path != nullptr && isHere && !g_str_has_suffix(path, "/") && !uri.contains(QLatin1Char('?')) &&
        !uri.contains(QLatin1Char('#')))
        file = path;
    g_free(host);
    g_free(path);
    return file;
}

std::optional<QString> requestIn(const QDBusMessage& reply) {
    if (reply.type() != QDBusMessage::ReplyMessage || reply.signature() != QLatin1String("o"))
        return std::nullopt;
    return reply.arguments().at(0).value<QDBusObjectPath>().path();
}

} // namespace

PortalSaveDialog::PortalSaveDialog(QDBusConnection bus, std::chrono::milliseconds timeout)
    : bus_(std::move(bus))
    , timeout_(timeout) {
    setObjectName(QStringLiteral("portalSaveDialog"));
    setAttribute(Qt::WA_DontShowOnScreen);
    qDBusRegisterMetaType<FilterRule>();
    qDBusRegisterMetaType<QList<FilterRule>>();
    qDBusRegisterMetaType<Filter>();
    qDBusRegisterMetaType<QList<Filter>>();
}

PortalSaveDialog::~PortalSaveDialog() {
    if (hasTaken_ && !isOver_)
        closeRequest(bus_, request_);
    if (call_ == nullptr)
        return;
    // A portal that was too slow may still ask, and nobody would wait for the user's answer.
    disconnect(call_, nullptr, this, nullptr);
    connect(call_, &QDBusPendingCallWatcher::finished, call_, [bus = bus_, call = call_] {
        call->deleteLater();
        if (const auto request = requestIn(call->reply()))
            closeRequest(bus, *request);
    });
}

void PortalSaveDialog::ask(const Question& question) {
    const QString token = QStringLiteral("velmora%1").arg(QRandomGenerator::global()->generate());
    follow(toQString(portalRequestPath(bus_.baseService().toStdString(), token.toStdString())));
    watcher_.setConnection(bus_);
    watcher_.setWatchMode(QDBusServiceWatcher::WatchForOwnerChange);
    watcher_.addWatchedService(service);
    connect(&watcher_, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString& /*name*/, const QString& before) {
                if (!before.isEmpty() && hasTaken_)
                    portalLost();
            });
    auto message = QDBusMessage::createMethodCall(service, QStringLiteral("/org/freedesktop/portal/desktop"),
                                                  QStringLiteral("org.freedesktop.portal.FileChooser"),
                                                  QStringLiteral("SaveFile"));
    const QList<Filter> filters{{.name = question.typeName, .rules = {{.kind = 1, .pattern = question.contentType}}}};
    message << question.parentWindow << question.title
            << QVariantMap{{QStringLiteral("handle_token"), token},
                           {QStringLiteral("modal"), true},
                           {QStringLiteral("filters"), QVariant::fromValue(filters)},
                           {QStringLiteral("current_name"), question.name},
                           // Bytes with a zero at the end.
                           {QStringLiteral("current_folder"), question.folder + '\0'}};
    // Without a timeout, so that a late answer is heard too; and the call may have to outlive this dialog.
    call_ = new QDBusPendingCallWatcher(bus_.asyncCall(message, std::numeric_limits<int>::max()),
                                        QCoreApplication::instance());
    connect(call_, &QDBusPendingCallWatcher::finished, this, &PortalSaveDialog::replied);
    QTimer::singleShot(timeout_, this, [this] {
        if (!hasTaken_)
            end({.outcome = SaveAnswer::Outcome::failed, .file = {}});
    });
}

void PortalSaveDialog::follow(const QString& request) {
    request_ = request;
    // With the service name, so that Qt drops signals from anybody but its owner. The reply to the question does not
    // tell who that is: from Qt 6.8 on, replies have no sender.
    bus_.connect(service, request, requestInterface, QStringLiteral("Response"), this, SLOT(responded(QDBusMessage)));
}

void PortalSaveDialog::replied() {
    QDBusPendingCallWatcher* const call = std::exchange(call_, nullptr);
    call->deleteLater();
    const auto request = requestIn(call->reply());
    if (!request) {
        isOver_ = true;
        end({.outcome = SaveAnswer::Outcome::failed, .file = {}});
        return;
    }
    hasTaken_ = true;
    sinceTaken_.start();
    if (*request != request_) // portals before 0.9 chose the path themselves
        follow(*request);
    if (early_)
        responded(*std::exchange(early_, std::nullopt));
}

void PortalSaveDialog::responded(const QDBusMessage& signal) {
    if (isOver_ || signal.signature() != QLatin1String("ua{sv}"))
        return;
    if (!hasTaken_) { // the portal is multi-threaded: a quick answer may overtake its reply to the question
        early_ = signal;
        return;
    }
    isOver_ = true;
    const QVariantList arguments = signal.arguments();
    const QStringList uris = qdbus_cast<QVariantMap>(arguments.at(1)).value(QStringLiteral("uris")).toStringList();
    end(saveAnswer(arguments.at(0).toUInt(), fileOf(uris.value(0)), std::chrono::milliseconds(sinceTaken_.elapsed())));
}

void PortalSaveDialog::portalLost() {
    if (isOver_)
        return;
    isOver_ = true;
    end({}); // the user may have been using its dialog; a second one would come as a surprise
}

void PortalSaveDialog::end(const SaveAnswer& answer) {
    answer_ = answer;
    done(answer.outcome == SaveAnswer::Outcome::chosen ? Accepted : Rejected);
}
