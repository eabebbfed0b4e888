// SPDX-License-Identifier: GPL-3.0-or-later
#include "Target.h"
#include "platform/linux/session/AutostartEntry.h"
#include "platform/linux/session/DesktopEntry.h"
#include "support/GLibKeyFile.h"

#include <filesystem>
#include <utility>
#include <vector>

// An input is a desktop entry as somebody may have put it into the folder "autostart"; and, beside that, any text that
// is to become a part of one. The second opinion is GLib's, which most desktops read such files with.

namespace {

/// The words of a command line by GLib, without what starts with a percent sign in them.
std::optional<std::vector<std::string>> slowlyCut(const std::string& line) {
    const auto words = glibShellWords(line);
    if (!words)
        return std::nullopt;
    std::vector<std::string> all;
    for (std::string word : *words) {
        const bool wasEmpty = word.empty();
        for (std::size_t at = word.find('%'); at != std::string::npos; at = word.find('%', at)) {
            const std::string stands = word.substr(at, 2) == "%%" ? "%" : "";
            word.replace(at, 2, stands);
            at += stands.size();
        }
        if (wasEmpty || !word.empty())
            all.push_back(word);
    }
    return all;
}

void checkReading(const std::string& text) {
    const auto entry = DesktopEntry::parse(text);
    if (!entry) {
        require(!AutostartEntry::parse(text), "what is no entry starts nothing");
        return;
    }
    const GLibKeyFile glib(text);
    require(glib.isLoaded(), "what we read, others read");
    for (const char* key : {"Type", "Exec", "TryExec", "Name", "Name[de]"}) {
        const auto value = entry->string(key);
        require(!value || value == glib.string(key), "others read the same text");
    }
    for (const char* key : {"Hidden", "X-GNOME-Autostart-enabled"})
        require(entry->boolean(key) == glib.boolean(key), "others read the same switch");
    const auto command = entry->command("Exec");
    if (!command.empty())
        require(command == slowlyCut(entry->string("Exec").value_or("")), "others cut the same words");
    if (const auto autostart = AutostartEntry::parse(text))
        require(!autostart->program.empty(), "what is started has a name");
}

void checkWriting(const std::string& text) {
    if (!canBeDesktopEntryValue(text)) {
        for (const auto& [program, icon] :
             {std::pair(text, std::string("icon")), std::pair(std::string("AppRun"), text)})
            require(!AutostartEntry::text(program, icon, AutostartEntry::Switch::on), "what cannot be written is not");
        return;
    }
    const std::string file = "[Desktop Entry]\nName=" + desktopEntryValue(text) +
                             "\nExec=" + desktopEntryValue(desktopEntryArgument(text) + " second") + "\n";
    const auto entry = DesktopEntry::parse(file);
    require(entry && entry->string("Name") == text, "a value reads back the same");
    require(GLibKeyFile(file).string("Name") == text, "others read back the same value");
    require(entry->command("Exec") == std::vector<std::string>{text, "second"}, "a word reads back the same");

    const auto program = std::filesystem::path(text) / "AppRun";
    for (const auto state : {AutostartEntry::Switch::on, AutostartEntry::Switch::off}) {
        const auto written = AutostartEntry::text(program, std::filesystem::path(text) / "icon.svg", state);
        require(written.has_value(), "an entry can be written for every such folder");
        const auto read = AutostartEntry::parse(*written);
        require(read && read->program == program, "it starts what is in the folder");
        require(read->isOn == (state == AutostartEntry::Switch::on), "it is on or off as it was asked");
        checkReading(*written);
    }
}

} // namespace

std::optional<bool> isTaken(const std::string& text) {
    return AutostartEntry::parse(text).has_value();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(data, data + size);
    checkReading(text);
    checkWriting(text);
    return 0;
}
