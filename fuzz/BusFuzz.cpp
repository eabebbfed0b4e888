// SPDX-License-Identifier: GPL-3.0-or-later
#include "AnyValue.h"
#include "Target.h"
#include "platform/linux/appearance/AppearanceWatch.h"
#include "platform/linux/bus/SystemBus.h"
#include "platform/linux/notifications/NotificationDaemon.h"
#include "platform/linux/panel/DBusMenu.h"
#include "platform/linux/panel/StatusNotifierItem.h"
#include "platform/linux/power/PowerProfiles.h"
#include "platform/linux/session/LogindSleep.h"
#include "platform/linux/session/QtMainLoop.h"
#include "platform/linux/session/SessionApplication.h"
#include "support/PrivateBus.h"

#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCall>
#include <QDBusVirtualObject>
#include <QGuiApplication>

#include <map>
#include <memory>
#include <vector>

// An input is what all other services on the buses do: first how they answer, then which signals they send, with right
// and wrong types. The bus is a real one, so that everything arrives the way it does in a session.

namespace {

const QString appearance = QStringLiteral("org.freedesktop.appearance");
const QString gnome = QStringLiteral("org.gnome.desktop.interface");
const QString newProfiles = QStringLiteral("org.freedesktop.UPower.PowerProfiles");
const QString oldProfiles = QStringLiteral("net.hadess.PowerProfiles");
const QString notifications = QStringLiteral("org.freedesktop.Notifications");
const QString portal = QStringLiteral("org.freedesktop.portal.Desktop");
const QString watcher = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString logind = QStringLiteral("org.freedesktop.login1");
const QString properties = QStringLiteral("org.freedesktop.DBus.Properties");

using Spaces = QMap<QString, QVariantMap>;

QString pathOf(QString name) {
    return QLatin1Char('/') + name.replace(QLatin1Char('.'), QLatin1Char('/'));
}

QVariant variant(const QVariant& value) {
    return QVariant::fromValue(QDBusVariant(value));
}

/// An event as panels send it, with what the program does not read.
struct SentEvent {
    MenuEvent event;
    QDBusVariant data{QVariant(0)}; // never invalid: QtDBus takes the signature from a default-constructed value
    uint timestamp = 0;
};

QDBusArgument& operator<<(QDBusArgument& argument, const SentEvent& sent) {
    argument.beginStructure();
    argument << sent.event.id << sent.event.eventId << sent.data << sent.timestamp;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, SentEvent& sent) {
    argument.beginStructure();
    argument >> sent.event.id >> sent.event.eventId >> sent.data >> sent.timestamp;
    argument.endStructure();
    return argument;
}

/// All other services: owns all names, and answers as told.
class Others final : public QDBusVirtualObject {
public:
    explicit Others(QDBusConnection connection) : connection_(std::move(connection)) {
        connection_.registerVirtualObject(QStringLiteral("/"), this, QDBusConnection::SubPath);
        for (const QString& name : {newProfiles, oldProfiles, notifications, portal, watcher, logind})
            connection_.registerService(name);
    }

    /// By what is called: the property for a Get, else the method.
    std::map<QString, QVariantList> answers;

    QString introspect(const QString& /*path*/) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        const QString asked =
            message.interface() == properties ? message.arguments().value(0).toString() : message.member();
        const auto answer = answers.find(asked);
        return connection.send(answer != answers.end()
                                   ? message.createReply(answer->second)
                                   : message.createErrorReply(QDBusError::AccessDenied, QStringLiteral("no")));
    }

private:
    QDBusConnection connection_;
};

/// Made once for all inputs.
struct World {
    PrivateBus bus;
    QDBusConnection own = QDBusConnection::connectToBus(bus.address(), QStringLiteral("own"));
    QDBusConnection other = bus.connection();
    Others others{other};
    QtMainLoop loop;
    SystemBus systemBus{bus.socket(), loop};
    GlyphImages glyphs{"/there is no such folder"};

    World() { systemBus.start(); }

    static World& get() {
        // QCoreApplication keeps a reference to its arguments.
        static int count = 1;
        static char name[] = "fuzz";
        static char* arguments[] = {name, nullptr};
        qputenv("QT_QPA_PLATFORM", "offscreen");
        static QGuiApplication application(count, arguments);
        qDBusRegisterMetaType<Spaces>();
        qDBusRegisterMetaType<SentEvent>();
        qDBusRegisterMetaType<QList<SentEvent>>();
        static World world;
        return world;
    }

    /// Waits until all messages so far have arrived, and the answers to them, and the answers to those.
    void settle(int rounds) {
        for (int round = 0; round < rounds; ++round) {
            for (const QDBusConnection& ours : {own, systemBus.connection()}) {
                ping(other, ours.baseService());
                ping(ours, other.baseService());
            }
        }
    }

private:
    static void ping(const QDBusConnection& from, const QString& to) {
        QDBusPendingCall call = from.asyncCall(QDBusMessage::createMethodCall(
            to, QStringLiteral("/"), QStringLiteral("org.freedesktop.DBus.Peer"), QStringLiteral("Ping")));
        call.waitForFinished();
        QCoreApplication::processEvents();
    }
};

/// The expected portal settings, worked out from what was sent.
class PortalModel {
public:
    Appearance expected() const { return appearanceOf(settings_); }
    void forget() { settings_ = {}; }

    void set(const QString& space, const QString& key, const AnyValue& sent) {
        const QVariant& value = sent.value;
        const bool isText = value.typeId() == QMetaType::QString;
        const auto text = isText ? std::optional(value.toString().toStdString()) : std::nullopt;
        if (space == appearance && key == QLatin1String("color-scheme"))
            settings_.colorScheme =
                value.typeId() == QMetaType::UInt ? std::optional<std::uint32_t>(value.toUInt()) : std::nullopt;
        if (space == appearance && key == QLatin1String("accent-color"))
            settings_.accentColor = sent.color;
        if (space == gnome && key == QLatin1String("text-scaling-factor"))
            settings_.textScale = value.typeId() == QMetaType::Double ? std::optional(value.toDouble()) : std::nullopt;
        if (space == gnome && key == QLatin1String("font-name"))
            settings_.fontName = text;
        if (space == gnome && key == QLatin1String("gtk-theme"))
            settings_.themeName = text;
    }

private:
    DesktopSettings settings_;
};

/// Runs one input.
class Story {
public:
    explicit Story(Bytes& bytes) : bytes_(bytes) {}

    void tell() {
        world_.others.answers.clear();
        answerPortal();
        answerProfiles();
        answerNotifications();
        world_.others.answers[watcher] = {bytes_.flag() ? variant(AnyValue::of(bytes_).value) : bytes_.text()};
        world_.others.answers[QStringLiteral("RegisterStatusNotifierItem")] = anyValues(bytes_);
        world_.others.answers[QStringLiteral("Inhibit")] = anyValues(bytes_);

        menu_.setEntries(entries());
        item_.setMenu(entries());
        portalSettings_.start(false);
        profiles_.start();
        sleep_.start();
        daemon_.start();
        world_.settle(2);
        daemon_.prepare();
        world_.settle(3);
        check();
        for (int count = 0; count < 12 && !bytes_.atEnd(); ++count)
            happen();
        world_.settle(3);
        check();
        for (const QDBusPendingCall& call : calls_)
            require(call.isFinished(), "every call is answered");
        require(clicks_ == wantedClicks_, "what was clicked is done, and nothing else");
        require(hasOddSignals_ || closed_ == wantedClosed_, "every notification that closes is heard of");
        require(hasOddSignals_ || invoked_ == wantedInvoked_, "every button that is pressed is heard of");
        require(wrongAnswers_ == 0, "an answer comes once");
    }

private:
    Bytes& bytes_;
    World& world_ = World::get();

    PortalModel portalModel_;
    Appearance appearance_;
    AppearanceWatch portalSettings_{world_.own, [this](const Appearance& changed) { appearance_ = changed; }};

    std::map<QString, QString> profilesModel_;
    PowerProfiles profiles_{world_.systemBus, "/there is no such folder"};
    LogindSleep sleep_{world_.systemBus};

    std::optional<NotificationServer> serverModel_;
    NotificationDaemon daemon_{world_.own, {}};
    QMetaObject::Connection closedWatch_ =
        QObject::connect(&daemon_, &NotificationDaemon::closed, [this] { ++closed_; });
    QMetaObject::Connection invokedWatch_ =
        QObject::connect(&daemon_, &NotificationDaemon::actionInvoked, [this] { ++invoked_; });
    int closed_ = 0;
    int wantedClosed_ = 0;
    int invoked_ = 0;
    int wantedInvoked_ = 0;
    bool hasOddSignals_ = false;
    int wrongAnswers_ = 0;

    int clicks_ = 0;
    int wantedClicks_ = 0;
    StatusNotifierItem item_{world_.own, world_.glyphs, [](bool) {}};
    DBusMenu menu_{world_.own}; // in place of the item's own menu, so that both are tested
    SessionApplication application_{world_.own};
    std::vector<QDBusPendingCall> calls_;

    std::vector<StatusItem::MenuEntry> entries() {
        std::vector<StatusItem::MenuEntry> all;
        for (const char* label : {"Settings…", "a_b", "Quit"})
            all.push_back({.label = label, .action = [this] { ++clicks_; }});
        return all;
    }

    void answerPortal() {
        QVariantList& answer = world_.others.answers[QStringLiteral("ReadAll")];
        if (bytes_.below(4) == 0) {
            answer = anyValues(bytes_);
            // By chance it may have the right type; then it is empty.
            return;
        }
        Spaces spaces;
        std::map<QString, std::map<QString, AnyValue>> sent;
        for (int count = bytes_.below(8); count > 0; --count) {
            const QString space = bytes_.flag() ? appearance : bytes_.flag() ? gnome : bytes_.text();
            const QString key = bytes_.text();
            const AnyValue value = AnyValue::of(bytes_);
            spaces[space][key] = value.value;
            sent[space].insert_or_assign(key, value);
        }
        for (const auto& [space, keys] : sent)
            for (const auto& [key, value] : keys)
                portalModel_.set(space, key, value);
        QDBusArgument argument;
        argument << spaces;
        answer = {QVariant::fromValue(argument)};
    }

    void answerProfiles() {
        for (const QString& name : {newProfiles, oldProfiles}) {
            QVariantList& answer = world_.others.answers[name];
            if (bytes_.below(4) == 0) {
                answer = {bytes_.text()}; // wrong: it belongs in a variant
                continue;
            }
            const QVariant profile = AnyValue::of(bytes_).value;
            answer = {variant(profile)};
            if (profile.typeId() == QMetaType::QString)
                profilesModel_[name] = profile.toString();
        }
    }

    void answerNotifications() {
        auto& answers = world_.others.answers;
        QString name;
        std::vector<std::string> capabilities;
        const bool tellsName = bytes_.below(4) != 0;
        if (tellsName) {
            name = bytes_.text();
            answers[QStringLiteral("GetServerInformation")] = {name, bytes_.text(), bytes_.text(), bytes_.text()};
        } else {
            answers[QStringLiteral("GetServerInformation")] = {AnyValue::of(bytes_).value};
        }
        if (bytes_.below(4) != 0) {
            QStringList list;
            for (int count = bytes_.below(4); count > 0; --count)
                list += bytes_.text();
            for (const QString& one : list)
                capabilities.push_back(one.toStdString());
            answers[QStringLiteral("GetCapabilities")] = {list};
        } else {
            answers[QStringLiteral("GetCapabilities")] = {bytes_.text()};
        }
        serverModel_ = notificationServer(name.toStdString(), capabilities);
        const QVariant quiet = AnyValue::of(bytes_).value;
        const QVariant answer = bytes_.flag() ? variant(quiet) : quiet;
        for (const char* asked : {"org.freedesktop.Notifications", "org.dunstproject.cmd0", "GetProperty", "ListModes"})
            answers[QString::fromLatin1(asked)] = {answer};
        answers[QStringLiteral("Notify")] = {AnyValue::of(bytes_).value};
    }

    void check() {
        require(appearance_ == portalModel_.expected(), "it looks as the portal says");
        PowerProfileChoice choice;
        for (const QString& name : {newProfiles, oldProfiles})
            if (const auto profile = profilesModel_.find(name); profile != profilesModel_.end())
                choice.daemons[name.toStdString()].profile = profile->second.toStdString();
        require(profiles_.isLowPowerModeEnabled() == choice.isLowPower(), "power is saved as the daemon says");
        require(daemon_.server() == serverModel_, "the daemon can do what it says");
    }

    void emitSignal(const QString& path, const QString& interface, const char* name, const QVariantList& arguments) {
        auto message = QDBusMessage::createSignal(path, interface, QString::fromLatin1(name));
        message.setArguments(arguments);
        world_.other.send(message);
    }

    void call(const char* path, const QString& interface, const QString& method, const QVariantList& arguments) {
        auto message =
            QDBusMessage::createMethodCall(world_.own.baseService(), QString::fromLatin1(path), interface, method);
        message.setArguments(arguments);
        calls_.push_back(world_.other.asyncCall(message));
    }

    void happen() {
        switch (bytes_.below(10)) {
        case 0:
            changeSetting();
            break;
        case 1:
        case 2:
            changeProfile();
            break;
        case 3:
            notificationEvent();
            break;
        case 4:
        case 5:
            menuEvent();
            break;
        case 6:
            itemCall();
            break;
        case 7:
            emitSignal(QStringLiteral("/org/freedesktop/login1"), QStringLiteral("org.freedesktop.login1.Manager"),
                       "PrepareForSleep", bytes_.flag() ? QVariantList{bytes_.flag()} : anyValues(bytes_));
            break;
        case 8:
            ask();
            break;
        default:
            emitSignal(QStringLiteral("/StatusNotifierWatcher"), watcher, "StatusNotifierHostRegistered",
                       anyValues(bytes_));
        }
    }

    void changeSetting() {
        const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
        const QString interface = QStringLiteral("org.freedesktop.portal.Settings");
        if (bytes_.below(4) == 0) {
            emitSignal(path, interface, "SettingChanged", {bytes_.text(), AnyValue::of(bytes_).value});
            return;
        }
        const QString space = bytes_.flag() ? appearance : gnome;
        const QString key = bytes_.text();
        const AnyValue value = AnyValue::of(bytes_);
        emitSignal(path, interface, "SettingChanged", {space, key, variant(value.value)});
        portalModel_.set(space, key, value);
    }

    void changeProfile() {
        const QString name = bytes_.flag() ? newProfiles : oldProfiles;
        const QString interface = bytes_.below(4) != 0 ? name : bytes_.text();
        const QString profileKey = QStringLiteral("ActiveProfile");
        QVariantMap changed;
        if (bytes_.flag())
            changed.insert(profileKey, AnyValue::of(bytes_).value);
        const QStringList invalidated = bytes_.flag() ? QStringList{profileKey} : QStringList{bytes_.text()};
        if (bytes_.below(4) == 0) {
            emitSignal(pathOf(name), properties, "PropertiesChanged", {interface, QVariantMap(changed), bytes_.text()});
            return;
        }
        emitSignal(pathOf(name), properties, "PropertiesChanged", {interface, changed, invalidated});
        const QVariant profile = changed.value(profileKey);
        if (profile.typeId() == QMetaType::QString) {
            profilesModel_[interface] = profile.toString();
        } else if (invalidated.contains(profileKey) && (interface == newProfiles || interface == oldProfiles)) {
            // The program asks again and gets the same answer.
            const QVariant answer = world_.others.answers[interface].value(0).value<QDBusVariant>().variant();
            if (answer.typeId() == QMetaType::QString)
                profilesModel_[interface] = answer.toString();
        }
        world_.settle(2); // so that the answer comes before the next change
    }

    void notificationEvent() {
        const QString path = QStringLiteral("/org/freedesktop/Notifications");
        const auto id = static_cast<uint>(bytes_.number());
        switch (bytes_.below(3)) {
        case 0:
            emitSignal(path, notifications, "NotificationClosed", {id, static_cast<uint>(bytes_.number())});
            ++wantedClosed_;
            break;
        case 1:
            emitSignal(path, notifications, "ActionInvoked", {id, bytes_.text()});
            ++wantedInvoked_;
            break;
        default:
            hasOddSignals_ = true;
            emitSignal(path, notifications, bytes_.flag() ? "NotificationClosed" : "ActionInvoked", anyValues(bytes_));
        }
    }

    void menuEvent() {
        const QString interface = QStringLiteral("com.canonical.dbusmenu");
        const auto id = static_cast<int>(bytes_.number());
        const auto isClick = [](const MenuEvent& event) {
            return event.id >= 1 && event.id <= 3 && event.eventId == QLatin1String("clicked");
        };
        const auto event = [this] {
            return SentEvent{.event = {.id = static_cast<int>(bytes_.number()), .eventId = bytes_.text()},
                             .data = QDBusVariant(AnyValue::of(bytes_).value),
                             .timestamp = static_cast<uint>(bytes_.number())};
        };
        const int which = bytes_.below(8);
        if (which == 0) {
            const auto [one, data, timestamp] = event();
            call(DBusMenu::path, interface, QStringLiteral("Event"),
                 {one.id, one.eventId, QVariant::fromValue(data), timestamp});
            wantedClicks_ += isClick(one) ? 1 : 0;
        } else if (which == 1) {
            QList<SentEvent> events;
            for (int count = bytes_.below(4); count > 0; --count) {
                events.append(event());
                wantedClicks_ += isClick(events.back().event) ? 1 : 0;
            }
            call(DBusMenu::path, interface, QStringLiteral("EventGroup"), {QVariant::fromValue(events)});
        } else if (which == 2) {
            call(DBusMenu::path, interface, QStringLiteral("GetLayout"),
                 {id, static_cast<int>(bytes_.number()), QStringList{bytes_.text()}});
        } else if (which == 3) {
            call(DBusMenu::path, interface, QStringLiteral("GetGroupProperties"),
                 {QVariant::fromValue(QList<int>{id, static_cast<int>(bytes_.number())}), QStringList{bytes_.text()}});
        } else if (which == 4) {
            call(DBusMenu::path, interface, QStringLiteral("GetProperty"), {id, bytes_.text()});
        } else if (which == 5) {
            call(DBusMenu::path, interface, QStringLiteral("AboutToShow"), {id});
        } else if (which == 6) {
            call(DBusMenu::path, interface, QStringLiteral("AboutToShowGroup"),
                 {QVariant::fromValue(QList<int>{id, static_cast<int>(bytes_.number())})});
        } else {
            call(DBusMenu::path, interface, bytes_.flag() ? QStringLiteral("GetLayout") : QStringLiteral("EventGroup"),
                 {AnyValue::of(bytes_).value}); // never the right types
        }
    }

    void itemCall() {
        const QString interface = QStringLiteral("org.kde.StatusNotifierItem");
        const char* const path = StatusNotifierItem::path;
        const QVariantList point{static_cast<int>(bytes_.number()), static_cast<int>(bytes_.number())};
        switch (bytes_.below(7)) {
        case 0:
            call(path, interface, QStringLiteral("Activate"), point);
            break;
        case 1:
            call(path, interface, QStringLiteral("Scroll"), {point[0], bytes_.text()});
            break;
        case 2:
            call(path, interface, QStringLiteral("ProvideXdgActivationToken"), {bytes_.text()});
            break;
        case 3:
            call(path, properties, QStringLiteral("Get"), {interface, bytes_.text()});
            break;
        case 4:
            call(path, properties, QStringLiteral("Set"),
                 {interface, bytes_.text(), variant(AnyValue::of(bytes_).value)});
            break;
        case 5:
            call(path, interface, QStringLiteral("Activate"), anyValues(bytes_));
            break;
        default: {
            QVariantMap data;
            data.insert(bytes_.text(), AnyValue::of(bytes_).value);
            call("/app/velmora/Velmora", QStringLiteral("org.freedesktop.Application"), QStringLiteral("Activate"),
                 {data});
        }
        }
    }

    void ask() {
        auto open = std::make_shared<bool>(true);
        const auto once = [this, open] {
            wrongAnswers_ += *open ? 0 : 1;
            *open = false;
        };
        if (bytes_.flag())
            daemon_.askDoNotDisturb([once](std::optional<bool>) { once(); });
        else
            daemon_.notify({.icon = {}, .summary = bytes_.text(), .body = bytes_.text(), .actions = {}, .hints = {}},
                           static_cast<uint>(bytes_.number()), [once](std::optional<uint>) { once(); });
    }
};

} // namespace

std::optional<bool> isTaken(const std::string& /*text*/) {
    return std::nullopt; // no input is refused as a whole
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Bytes bytes(data, size);
    Story(bytes).tell();
    qunsetenv("XDG_ACTIVATION_TOKEN");
    return 0;
}
