// SPDX-License-Identifier: GPL-3.0-or-later
// Shows notifications through the program's own adapter, so that the adapter can be tried with any daemon:
//   velmora_notifications_driver DESCRIPTOR ICON
// reads lines from the file descriptor, "show IDENTIFIER SOUND TITLE" (the sound "-" means none) and "withdraw
// IDENTIFIER", and writes the answers: "pressed ACTION", "played SOUND". It ends at the end of its input.
#include "platform/SystemSounds.h"
#include "platform/linux/files/PosixFiles.h"
#include "platform/linux/files/XdgFolders.h"
#include "platform/linux/notifications/FreedesktopNotifications.h"
#include "platform/linux/session/QtMainLoop.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QSocketNotifier>

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <sstream>
#include <string>

namespace {

void tell(const char* what, std::string_view name) {
    std::cout << what << ' ' << name << std::endl;
}

class ToldSounds final : public SystemSounds {
public:
    void play(std::string_view name) override { tell("played", name); }
    void playDefault() override { tell("played", "default"); }
};

class TellingDelegate final : public NotificationCenter::Delegate {
public:
    NotificationCenter::Options willPresent(const NotificationCenter::Request& /*request*/) override { return {}; }
    void didReceive(const std::string& action, std::function<void()> completion) override {
        tell("pressed", action);
        completion();
    }
};

void obey(NotificationCenter& center, const std::string& line) {
    std::istringstream words(line);
    std::string command, identifier, sound, title;
    words >> command >> identifier;
    if (command == "withdraw") {
        center.removeDelivered({identifier});
        return;
    }
    words >> sound >> std::ws;
    std::getline(words, title);
    center.add({.identifier = identifier,
                .title = title,
                .body = "The battery is at 80 % & <charging>.",
                .categoryIdentifier = "VL_ALERT",
                .sound = sound == "-" ? std::nullopt : std::optional(sound)});
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3)
        return EXIT_FAILURE;
    const int commands = std::atoi(argv[1]);
    const QCoreApplication application(argc, argv);
    QtMainLoop loop;
    ToldSounds sounds;
    TellingDelegate delegate;
    PosixFiles files(xdgDataHome());
    FreedesktopNotifications center(
        QDBusConnection::sessionBus(), loop, sounds,
        [](std::string_view name) { return std::optional(std::filesystem::path("/sounds") / name); },
        NotificationConsent(files, xdgStateHome() / "Velmora"), argv[2]);
    center.setNotificationCategories({{"VL_ALERT", {{"SNOOZE", "Snooze 1 hour"}}}});
    center.setDelegate(&delegate);
    center.start();

    std::string pending;
    QSocketNotifier input(commands, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &application, [&] {
        char buffer[4096];
        const ssize_t size = ::read(commands, buffer, sizeof buffer);
        if (size <= 0) {
            QCoreApplication::quit();
            return;
        }
        pending.append(buffer, static_cast<std::size_t>(size));
        for (std::size_t end = pending.find('\n'); end != std::string::npos; end = pending.find('\n')) {
            obey(center, pending.substr(0, end));
            pending.erase(0, end + 1);
        }
    });
    return QCoreApplication::exec();
}
