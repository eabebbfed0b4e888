// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <glib.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

/// A desktop entry as GLib reads it, which most desktops read them with.
class GLibKeyFile {
public:
    explicit GLibKeyFile(const std::string& text)
        : isLoaded_(g_key_file_load_from_data(file_.get(), text.data(), text.size(), G_KEY_FILE_KEEP_TRANSLATIONS,
                                              nullptr) != 0) {}

    /// Whether it is one at all.
    bool isLoaded() const { return isLoaded_; }

    /// What stands under a key; empty where nothing does, or something that cannot be read.
    std::optional<std::string> string(const char* key) const {
        GError* failure = nullptr; // there may be a value beside it, with the escape that it could not resolve
        const std::unique_ptr<char, void (*)(void*)> value(
            g_key_file_get_string(file_.get(), "Desktop Entry", key, &failure), g_free);
        if (failure == nullptr)
            return std::string(value.get());
        g_error_free(failure);
        return std::nullopt;
    }

    /// The same for a switch.
    std::optional<bool> boolean(const char* key) const {
        GError* failure = nullptr;
        const bool value = g_key_file_get_boolean(file_.get(), "Desktop Entry", key, &failure) != 0;
        if (failure == nullptr)
            return value;
        g_error_free(failure);
        return std::nullopt;
    }

private:
    std::unique_ptr<GKeyFile, void (*)(GKeyFile*)> file_{g_key_file_new(), g_key_file_unref};
    bool isLoaded_ = false;
};

/// The words of a command line as GLib cuts it; empty where it cannot.
inline std::optional<std::vector<std::string>> glibShellWords(const std::string& line) {
    int count = 0;
    char** words = nullptr;
    if (g_shell_parse_argv(line.c_str(), &count, &words, nullptr) == 0)
        return std::nullopt;
    std::vector<std::string> all(words, words + count);
    g_strfreev(words);
    return all;
}
