// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/notifications/FreedesktopNotifications.h"

#include "platform/ApplicationId.h"
#include "platform/MainLoop.h"
#include "platform/SystemSounds.h"

#include <QGuiApplication>

#include <algorithm>
#include <utility>

namespace {

QVariantMap hintsOf(const NotificationPlan& plan, const NotificationCenter::Request& request) {
    QVariantMap hints{
        // A byte; some daemons ignore any other type.
        {QStringLiteral("urgency"), QVariant::fromValue(static_cast<uchar>(plan.urgency))},
        {QStringLiteral("category"), QString::fromStdString(request.categoryIdentifier)},
        {QStringLiteral("desktop-entry"), QLatin1String(applicationId)},
        {QStringLiteral("x-velmora-identifier"), QString::fromStdString(request.identifier)},
    };
    if (plan.suppressSound)
        hints.insert(QStringLiteral("suppress-sound"), true);
    if (plan.soundName)
        hints.insert(QStringLiteral("sound-name"), QString::fromStdString(*plan.soundName));
    if (plan.soundFile)
        hints.insert(QStringLiteral("sound-file"), QString::fromStdString(*plan.soundFile));
    return hints;
}

} // namespace

FreedesktopNotifications::FreedesktopNotifications(QDBusConnection bus, MainLoop& loop, SystemSounds& sounds,
                                                   SoundFile soundFile, NotificationConsent consent,
                                                   const std::filesystem::path& icon,
                                                   NotificationDaemon::Timeouts timeouts)
    : loop_(loop)
    , sounds_(sounds)
    , soundFile_(std::move(soundFile))
    , consent_(std::move(consent))
    , icon_(icon.is_absolute() ? QString::fromStdString(icon.string()) : QLatin1String(applicationId))
    , daemon_(std::move(bus), timeouts) {
    connect(&daemon_, &NotificationDaemon::prepared, this, &FreedesktopNotifications::sendWaiting);
    connect(&daemon_, &NotificationDaemon::absent, this, &FreedesktopNotifications::dropAll);
    connect(&daemon_, &NotificationDaemon::replaced, this, &FreedesktopNotifications::forgetIds);
    connect(&daemon_, &NotificationDaemon::closed, this, &FreedesktopNotifications::closed);
    connect(&daemon_, &NotificationDaemon::actionInvoked, this, &FreedesktopNotifications::actionInvoked);
}

void FreedesktopNotifications::getAuthorizationStatus(std::function<void(AuthorizationStatus)> answer) {
    loop_.async([answer = std::move(answer), status = consent_.status()] { answer(status); });
}

void FreedesktopNotifications::requestAuthorization(Options /*options*/) {
    consent_.give();
}

void FreedesktopNotifications::add(Request request) {
    if (delegate_ != nullptr && QGuiApplication::focusWindow() != nullptr) {
        const Options options = delegate_->willPresent(request);
        if (!options.alert && !options.list)
            return;
        if (!options.sound)
            request.sound.reset();
    }
    Entry& entry = entries_[request.identifier];
    if (!entry.next)
        entry.order = nextOrder();
    entry.next = std::move(request);
    sendWaiting();
}

void FreedesktopNotifications::removeDelivered(const std::vector<std::string>& identifiers) {
    for (const std::string& identifier : identifiers) {
        const auto found = entries_.find(identifier);
        if (found == entries_.end())
            continue;
        Entry& entry = found->second;
        entry.next.reset();
        entry.isWithdrawn = entry.isBusy;
        if (const uint id = std::exchange(entry.id, 0); id != 0)
            daemon_.close(id);
        tidy(identifier);
    }
}

void FreedesktopNotifications::sendWaiting() {
    const bool isAnyWaiting = std::any_of(entries_.begin(), entries_.end(),
                                          [](const auto& entry) { return entry.second.next && !entry.second.isBusy; });
    if (isAsking_ || !isAnyWaiting || !daemon_.prepare())
        return;
    isAsking_ = true;
    // Once for all that wait, because answers to several questions may come in another order.
    daemon_.askDoNotDisturb([this](std::optional<bool> doNotDisturb) {
        isAsking_ = false;
        if (!daemon_.prepare()) // there is another daemon by now
            return;
        std::map<RequestOrder, std::string> waiting;
        for (const auto& [identifier, entry] : entries_) {
            if (entry.next && !entry.isBusy)
                waiting.emplace(entry.order, identifier);
        }
        for (const auto& [order, identifier] : waiting)
            send(identifier, doNotDisturb);
    });
}

void FreedesktopNotifications::dropAll() {
    for (auto& [identifier, entry] : entries_)
        entry.next.reset();
    std::erase_if(entries_, [](const auto& entry) { return !entry.second.isBusy; });
}

void FreedesktopNotifications::forgetIds() {
    for (auto& [identifier, entry] : entries_)
        entry.id = 0;
    std::erase_if(entries_, [](const auto& entry) { return !entry.second.isBusy && !entry.second.next; });
}

void FreedesktopNotifications::send(const std::string& identifier, std::optional<bool> doNotDisturb) {
    Entry& entry = entries_[identifier];
    const Request request = *std::exchange(entry.next, std::nullopt);
    entry.isBusy = true;
    entry.isWithdrawn = false;
    entry.coming = actionsOf(request.categoryIdentifier);
    const NotificationPlan plan = planNotification(daemon_.server(), doNotDisturb, request, entry.coming, soundFile_);
    QStringList actions;
    for (const std::string& text : plan.actions)
        actions.append(QString::fromStdString(text));
    QVariantMap hints = hintsOf(plan, request);
    if (daemon_.server().wantsImage)
        hints.insert(QStringLiteral("image-path"), icon_);
    daemon_.notify({.icon = icon_,
                    .summary = QString::fromStdString(request.title),
                    .body = QString::fromStdString(plan.body),
                    .actions = actions,
                    .hints = hints},
                   entry.id,
                   [this, identifier, order = entry.order, sound = plan.playsSound ? request.sound : std::nullopt,
                    hasButtons = daemon_.server().drawsButtons](std::optional<uint> id) {
                       sent(identifier, order, id, sound, hasButtons);
                   });
}

void FreedesktopNotifications::sent(const std::string& identifier, const RequestOrder& order, std::optional<uint> id,
                                    const std::optional<std::string>& ownSound, bool hasButtons) {
    Entry& entry = entries_[identifier];
    entry.isBusy = false;
    const bool isWithdrawn = std::exchange(entry.isWithdrawn, false) && !entry.next;
    if (id && isWithdrawn) {
        daemon_.close(*id);
    } else if (id) {
        entry.id = *id;
        entry.actions = entry.coming;
        // Only what is shown is heard; the next one brings its own sound.
        if (ownSound && !entry.next)
            play(order, *ownSound);
        if (delegate_ != nullptr && !hasButtons)
            delegate_->didPresentWithoutButtons(identifier);
    }
    tidy(identifier);
    sendWaiting();
}

void FreedesktopNotifications::tidy(const std::string& identifier) {
    const auto found = entries_.find(identifier);
    if (found != entries_.end() && !found->second.isBusy && !found->second.next && found->second.id == 0)
        entries_.erase(found);
}

RequestOrder FreedesktopNotifications::nextOrder() {
    if (std::exchange(isTogether_, true))
        return {.turn = last_.turn, .number = ++last_.number};
    // Until the main loop takes its next turn.
    QMetaObject::invokeMethod(
        this, [this] { isTogether_ = false; }, Qt::QueuedConnection);
    return last_ = {.turn = last_.turn + 1, .number = 0};
}

void FreedesktopNotifications::play(const RequestOrder& order, const std::string& sound) {
    if (sound != "default" && !soundFile_(sound)) // there is nothing to hear
        return;
    if (!mayCutOff(order, sounding_))
        return;
    sounding_ = order;
    if (sound == "default")
        sounds_.playDefault();
    else
        sounds_.play(sound);
}

void FreedesktopNotifications::closed(uint id) {
    if (const auto found = find(id); found != entries_.end()) {
        found->second.id = 0;
        tidy(std::string(found->first));
    }
}

void FreedesktopNotifications::actionInvoked(uint id, const QString& key) {
    const auto found = find(id);
    if (found == entries_.end())
        return;
    const std::string identifier = key.toStdString();
    std::vector<Action>& actions = found->second.actions;
    if (std::none_of(actions.begin(), actions.end(), [&](const Action& one) { return one.identifier == identifier; }))
        return;
    actions.clear();
    // QUIRK: mako leaves it on the screen. One that is about to replace it has the same id and must stay.
    if (!found->second.isBusy) {
        daemon_.close(std::exchange(found->second.id, 0));
        tidy(std::string(found->first));
    }
    if (delegate_ != nullptr)
        delegate_->didReceive(identifier, [] {});
}

std::vector<NotificationCenter::Action> FreedesktopNotifications::actionsOf(const std::string& category) const {
    const auto found = std::find_if(categories_.begin(), categories_.end(),
                                    [&](const Category& one) { return one.identifier == category; });
    return found == categories_.end() ? std::vector<Action>() : found->actions;
}

std::map<std::string, FreedesktopNotifications::Entry>::iterator FreedesktopNotifications::find(uint id) {
    return id == 0 ? entries_.end() : std::find_if(entries_.begin(), entries_.end(), [id](const auto& entry) {
        return entry.second.id == id;
    });
}
