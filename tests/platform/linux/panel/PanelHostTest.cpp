// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/panel/PanelHost.h"

#include <gtest/gtest.h>

TEST(PanelHost, IsToldByTheProcessOfItsWatcher) {
    struct Row {
        const char* process;
        bool showsLabel;
        bool recolours;
        bool premultiplied = false;
    };
    // The kernel cuts process names off after 15 characters.
    const Row rows[] = {
        {"gnome-shell", true, true},      {"ayatana-indicat", true, true}, {"mate-panel", true, false},
        {"notification-ar", true, false}, {"kded5", false, true},          {"kded6", false, true},
        {"plasmashell", false, true},     {"xfce4-panel", false, true},    {"panel-6-systray", false, true},
        {"panel-12-systra", false, true}, {"lxqt-panel", false, false},    {"xapp-sn-watcher", false, false},
        {"budgie-panel", false, false},   {"waybar", false, false},        {"swaybar", false, false, true},
        {"panel-6-clock", false, false},  {"wrapper-2.0", false, true},    {"something-new", false, false},
        {"wrapper-3.0", false, true},     {"wrapper", false, false},       {"", false, false},
    };
    for (const Row& row : rows)
        EXPECT_EQ(panelHost(row.process), (PanelHost{row.showsLabel, row.recolours, row.premultiplied})) << row.process;
}
