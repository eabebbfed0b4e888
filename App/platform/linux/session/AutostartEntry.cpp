// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/session/AutostartEntry.h"

#include <glib.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr const char* group = G_KEY_FILE_DESKTOP_GROUP;
// Desktops of the GNOME family have this switch beside "Hidden".
constexpr const char* gnomeSwitch = "X-GNOME-Autostart-enabled";

const std::vector<std::string> shell = {"/bin/sh", "-c", "exec \"$0\""};

template <auto release>
struct Release {
    template <class Type>
    void operator()(Type* memory) const {
        release(memory);
    }
};
using KeyFile = std::unique_ptr<GKeyFile, Release<g_key_file_free>>;
using Text = std::unique_ptr<char, Release<g_free>>;
using Words = std::unique_ptr<char*, Release<g_strfreev>>;

/// Empty when there is no such key, or its value has escapes that do not exist: GLib returns such a value all the same,
/// with an error, but systemd starts nothing for it.
std::optional<std::string> string(GKeyFile* file, const char* key) {
    GError* error = nullptr;
    const Text value(g_key_file_get_string(file, group, key, &error));
    const bool isValid = error == nullptr;
    g_clear_error(&error);
    return isValid ? std::optional<std::string>(value.get()) : std::nullopt;
}

/// `absent` also when the value is neither true nor false.
bool boolean(GKeyFile* file, const char* key, bool absent) {
    GError* error = nullptr;
    const bool value = g_key_file_get_boolean(file, group, key, &error) != FALSE;
    const bool isThere = error == nullptr;
    g_clear_error(&error);
    return isThere ? value : absent;
}

/// Without "%f", "%U" and the other field codes, which stand for nothing when a program is started at login. Empty when
/// a single percent sign ends the word.
std::optional<std::string> withoutFieldCodes(std::string_view word) {
    std::string text;
    for (std::size_t i = 0; i < word.size(); ++i) {
        if (word[i] != '%')
            text += word[i];
        else if (++i == word.size())
            return std::nullopt;
        else if (word[i] == '%')
            text += '%';
    }
    return text;
}

/// The words of a command line; none when it is malformed.
std::vector<std::string> commandWords(const std::string& line) {
    int count = 0;
    char** cut = nullptr;
    if (!g_shell_parse_argv(line.c_str(), &count, &cut, nullptr))
        return {};
    const Words owner(cut);
    std::vector<std::string> words;
    for (const std::string_view word : std::vector<std::string_view>(cut, cut + count)) {
        auto text = withoutFieldCodes(word);
        if (!text)
            return {};
        if (!text->empty() || word.empty()) // a word that was only a field code is dropped
            words.push_back(std::move(*text));
    }
    return words;
}

/// Whether an entry can hold the text: UTF-8, and no control characters but those that have an escape.
bool canHold(const std::string& text) {
    return g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr) &&
           std::none_of(text.begin(), text.end(),
                        [](char c) { return g_ascii_iscntrl(c) && c != '\n' && c != '\t' && c != '\r'; });
}

/// A word of a command line, quoted so that it stays one word whatever is in it.
std::string quotedWord(std::string_view word) {
    std::string text = "\"";
    for (const char c : word) {
        if (std::string_view("\"`$\\").find(c) != std::string_view::npos)
            text += '\\';
        text += c;
        if (c == '%')
            text += c;
    }
    return text + '"';
}

/// QUIRK: GLib and systemd look for the program before they turn "%%" into "%", and start nothing when they do not find
/// it. And a program's name must not contain an equals sign, which some take for the assignment of a variable. As an
/// argument of a shell it may contain both.
std::string commandLine(const std::string& program) {
    const bool needsShell = program.find_first_of("%=") != std::string::npos;
    return (needsShell ? shell[0] + ' ' + shell[1] + ' ' + quotedWord(shell[2]) + ' ' : "") + quotedWord(program);
}

} // namespace

std::optional<AutostartEntry> AutostartEntry::parse(std::string_view text) {
    const KeyFile file(g_key_file_new());
    // Desktops do not agree on what to do with a file that is only partly well-formed, so it counts as none.
    if (!g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr) ||
        !g_key_file_load_from_data(file.get(), text.data(), text.size(), G_KEY_FILE_NONE, nullptr))
        return std::nullopt;
    const Text first(g_key_file_get_start_group(file.get()));
    if (!first || std::string_view(first.get()) != group || string(file.get(), "Type") != "Application")
        return std::nullopt;
    std::vector<std::string> command = commandWords(string(file.get(), "Exec").value_or(""));
    if (command.size() > shell.size() && std::equal(shell.begin(), shell.end(), command.begin()))
        command.erase(command.begin(), command.begin() + static_cast<std::ptrdiff_t>(shell.size()));
    if (command.empty() || command.front().empty())
        return std::nullopt;
    return AutostartEntry{.program = command.front(),
                          .tryExec = string(file.get(), "TryExec"),
                          .isOn = !boolean(file.get(), "Hidden", false) && boolean(file.get(), gnomeSwitch, true)};
}

std::optional<std::string> AutostartEntry::text(const std::filesystem::path& program, const std::filesystem::path& icon,
                                                Switch state) {
    if (!canHold(program.string()) || !canHold(icon.string()))
        return std::nullopt;
    const KeyFile file(g_key_file_new());
    const auto set = [&](const char* key, const std::string& value) {
        g_key_file_set_string(file.get(), group, key, value.c_str());
    };
    set("Type", "Application");
    set("Name", "Velmora");
    set("Exec", commandLine(program.string()));
    set("TryExec", program.string());
    set("Icon", icon.string());
    set(gnomeSwitch, "true");
    if (state == Switch::off)
        set("Hidden", "true");
    gsize size = 0;
    const Text data(g_key_file_to_data(file.get(), &size, nullptr));
    // GLib escapes a tab only where a value begins; elsewhere desktop-file-validate refuses it.
    std::string text;
    for (const char c : std::string_view(data.get(), size))
        text += c == '\t' ? std::string("\\t") : std::string(1, c);
    return text;
}
