// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/session/AutostartEntry.h"

#include "platform/linux/session/DesktopEntry.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace {

// Desktops of the GNOME family have this switch beside "Hidden".
constexpr std::string_view gnomeSwitch = "X-GNOME-Autostart-enabled";

const std::vector<std::string> shell = {"/bin/sh", "-c", "exec \"$0\""};

/// QUIRK: GLib and systemd look for the program before they make one percent sign of two, and start nothing when they
/// do not find it. And a program's name must not have an equals sign, where some take it for a variable. As an argument
/// of a shell it may have both.
bool needsShell(std::string_view program) {
    return program.find_first_of("%=") != std::string_view::npos;
}

std::string commandLine(const std::string& program) {
    std::string line;
    if (needsShell(program)) {
        line += shell[0] + ' ' + shell[1] + ' ';
        line += desktopEntryArgument(shell[2]) + ' ';
    }
    return line + desktopEntryArgument(program);
}

} // namespace

std::optional<AutostartEntry> AutostartEntry::parse(std::string_view text) {
    const auto entry = DesktopEntry::parse(text);
    if (!entry || entry->string("Type") != "Application")
        return std::nullopt;
    std::vector<std::string> command = entry->command("Exec");
    if (command.size() > shell.size() && std::equal(shell.begin(), shell.end(), command.begin()))
        command.erase(command.begin(), command.begin() + static_cast<std::ptrdiff_t>(shell.size()));
    if (command.empty() || command.front().empty())
        return std::nullopt;
    return AutostartEntry{.program = command.front(),
                          .tryExec = entry->string("TryExec"),
                          .isOn =
                              !entry->boolean("Hidden").value_or(false) && entry->boolean(gnomeSwitch).value_or(true)};
}

std::optional<std::string> AutostartEntry::text(const std::filesystem::path& program, const std::filesystem::path& icon,
                                                Switch state) {
    if (!canBeDesktopEntryValue(program.string()) || !canBeDesktopEntryValue(icon.string()))
        return std::nullopt;
    std::string text = "[Desktop Entry]\nType=Application\nName=Velmora\n";
    text += "Exec=" + desktopEntryValue(commandLine(program.string())) + '\n';
    text += "TryExec=" + desktopEntryValue(program.string()) + '\n';
    text += "Icon=" + desktopEntryValue(icon.string()) + '\n';
    text += std::string(gnomeSwitch) + "=true\n";
    if (state == Switch::off)
        text += "Hidden=true\n";
    return text;
}
