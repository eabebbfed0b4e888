// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/notifications/DoNotDisturb.h"

#include <gtest/gtest.h>

TEST(DoNotDisturb, IsAskedWhereTheDaemonKeepsIt) {
    struct {
        const char* name;
        DoNotDisturbSource source;
        const char *service, *interface, *lastArgument;
    } const rows[] = {
        {"dunst", DoNotDisturbSource::dunst, "", "org.freedesktop.DBus.Properties", "paused"},
        {"Xfce Notify Daemon", DoNotDisturbSource::xfconf, "org.xfce.Xfconf", "org.xfce.Xfconf", "/do-not-disturb"},
        {"mako", DoNotDisturbSource::mako, "", "fr.emersion.Mako", nullptr},
        {"Plasma", DoNotDisturbSource::inhibited, "", "org.freedesktop.DBus.Properties", "Inhibited"},
        {"", DoNotDisturbSource::inhibited, "", "org.freedesktop.DBus.Properties", "Inhibited"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(doNotDisturbSource(row.name), row.source) << row.name;
        const DoNotDisturbQuestion question = doNotDisturbQuestion(row.source);
        EXPECT_EQ(question.service, row.service) << row.name;
        EXPECT_EQ(question.interface, row.interface) << row.name;
        if (row.lastArgument == nullptr)
            EXPECT_TRUE(question.arguments.empty()) << row.name;
        else
            EXPECT_EQ(question.arguments.back(), row.lastArgument) << row.name;
    }
}
