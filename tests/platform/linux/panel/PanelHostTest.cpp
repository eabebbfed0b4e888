// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/panel/PanelHost.h"

#include <gtest/gtest.h>

TEST(PanelHost, IsToldByTheProcessOfItsWatcher) {
    using enum PanelHost::ToolTip;
    constexpr PanelHost unknown{};
    constexpr PanelHost labelled{.showsLabel = true, .recolours = true};
    constexpr PanelHost mate{.showsLabel = true, .pointsAreLocal = true, .toolTip = titleAndText};
    constexpr PanelHost plasma{.recolours = true, .toolTip = titleAndText};
    constexpr PanelHost xfce{.recolours = true, .toolTip = titleAndText, .describesLoneTitle = true};
    const struct {
        const char* process; // the kernel cuts its name off after 15 characters
        PanelHost host;
    } rows[] = {
        {"gnome-shell", labelled},
        {"ayatana-indicat", labelled},
        {"indicator-appl", labelled},
        {"mate-panel", mate},
        {"notification-ar", mate},
        {"kded5", plasma},
        {"kded6", plasma},
        {"plasmashell", plasma},
        {"xfce4-panel", xfce},
        {"panel-6-systray", xfce},
        {"panel-12-systra", xfce},
        {"wrapper-2.0", xfce},
        {"wrapper-3.0", xfce},
        {"swaybar", {.premultiplied = true}},
        {"waybar", {.toolTip = titleAndText}},
        {"xapp-sn-watcher", {.toolTip = titleAndText}},
        {"budgie-panel", {.toolTip = text}},
        {"lxqt-panel", unknown},
        {"panel-6-clock", unknown},
        {"wrapper", unknown},
        {"something-new", unknown},
        {"", unknown},
    };
    for (const auto& row : rows)
        EXPECT_EQ(panelHost(row.process), row.host) << row.process;
}
