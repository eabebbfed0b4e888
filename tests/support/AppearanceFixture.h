// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/appearance/AppearanceWatch.h"
#include "support/PrivateBus.h"
#include "support/WaitUntil.h"

#include <QDBusMessage>
#include <QDBusPendingCall>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

/// The watch of the desktop's look, on a bus of its own.
class AppearanceFixture : public testing::Test {
protected:
    PrivateBus bus;
    // A connection of its own beside the stand-in's, as in two programs.
    QDBusConnection own = QDBusConnection::connectToBus(bus.address(), QStringLiteral("desktop-look-test"));
    std::vector<Appearance> looks;
    std::unique_ptr<AppearanceWatch> watch =
        std::make_unique<AppearanceWatch>(own, [this](const Appearance& look) { looks.push_back(look); });

    ~AppearanceFixture() override {
        watch.reset();
        QDBusConnection::disconnectFromBus(own.name());
    }

    /// Whether the watch arrives at this look.
    bool shows(const Appearance& look) {
        return waitUntil([&] { return !looks.empty() && looks.back() == look; });
    }

    /// Whether the calls that `ask` makes on our connection cause the bus to start the service, which it could.
    template <class Ask>
    bool starts(const QString& service, Ask ask) {
        const QString other = QStringLiteral("test.Other");
        const auto mark = [this](const QString& name) { return bus.services() / (name.toStdString() + ".started"); };
        for (const QString& name : {service, other})
            write(bus.services() / (name.toStdString() + ".service"), "[D-BUS Service]\nName=" + name.toStdString() +
                                                                          "\nExec=/usr/bin/touch " +
                                                                          mark(name).string() + "\n");
        const QString daemon = QStringLiteral("org.freedesktop.DBus");
        const QString path = QStringLiteral("/org/freedesktop/DBus");
        bus.call(daemon, path, daemon, QStringLiteral("ReloadConfig"));
        ask();
        // The bus starts services in the order in which they are requested.
        auto start = QDBusMessage::createMethodCall(daemon, path, daemon, QStringLiteral("StartServiceByName"));
        start << other << 0U;
        own.asyncCall(start);
        EXPECT_TRUE(waitUntil([&] { return std::filesystem::exists(mark(other)); }));
        return std::filesystem::exists(mark(service));
    }
};
