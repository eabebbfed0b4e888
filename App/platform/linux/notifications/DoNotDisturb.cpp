// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/notifications/DoNotDisturb.h"

namespace {

constexpr std::string_view daemonPath = "/org/freedesktop/Notifications";
constexpr std::string_view properties = "org.freedesktop.DBus.Properties";

} // namespace

DoNotDisturbSource doNotDisturbSource(std::string_view serverName) {
    if (serverName == "dunst")
        return DoNotDisturbSource::dunst;
    if (serverName == "Xfce Notify Daemon")
        return DoNotDisturbSource::xfconf;
    if (serverName == "mako")
        return DoNotDisturbSource::mako;
    return DoNotDisturbSource::inhibited;
}

DoNotDisturbQuestion doNotDisturbQuestion(DoNotDisturbSource source) {
    switch (source) {
    case DoNotDisturbSource::inhibited:
        return {.service = {},
                .path = daemonPath,
                .interface = properties,
                .method = "Get",
                .arguments = {"org.freedesktop.Notifications", "Inhibited"},
                .mode = {},
                .refusedOff = {}};
    case DoNotDisturbSource::dunst:
        return {.service = {},
                .path = daemonPath,
                .interface = properties,
                .method = "Get",
                .arguments = {"org.dunstproject.cmd0", "paused"},
                .mode = {},
                .refusedOff = {}};
    case DoNotDisturbSource::xfconf:
        return {.service = "org.xfce.Xfconf",
                .path = "/org/xfce/Xfconf",
                .interface = "org.xfce.Xfconf",
                .method = "GetProperty",
                .arguments = {"xfce4-notifyd", "/do-not-disturb"},
                .mode = {},
                // Xfce writes the setting when the user first changes it.
                .refusedOff = "org.xfce.Xfconf.Error.PropertyNotFound"};
    case DoNotDisturbSource::mako:
        return {.service = {},
                .path = "/fr/emersion/Mako",
                .interface = "fr.emersion.Mako",
                .method = "ListModes",
                .arguments = {},
                .mode = "do-not-disturb",
                .refusedOff = {}};
    }
    return {};
}
