// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/AppDirBundle.h"

#include <algorithm>
#include <system_error>

namespace fs = std::filesystem;

namespace {

constexpr std::string_view suffix = ".desktop";
// A bundle has four entries; the rest is for what its user may put there.
constexpr int maxEntries = 100;
// The longest name that can be on the message bus, where the identifier of an application is used as one.
constexpr std::size_t maxLength = 255;

/// Whether it can be an application's identifier: words of plain letters, digits, "_" and "-", joined by dots.
bool isIdentifier(std::string_view text) {
    const auto isAllowed = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '-' ||
               c == '.';
    };
    return !text.empty() && text.size() <= maxLength && std::all_of(text.begin(), text.end(), isAllowed) &&
           text.find("..") == std::string_view::npos && text.front() != '.' && text.back() != '.';
}

/// The name of the one desktop entry in the folder; empty when there is none or more than one.
std::optional<std::string> desktopEntry(const fs::path& folder) {
    std::optional<std::string> found;
    std::error_code error;
    int entries = 0;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        if (++entries > maxEntries)
            return std::nullopt;
        const std::string file = entry->path().filename().string();
        std::error_code unknown;
        if (!file.ends_with(suffix) || !entry->is_regular_file(unknown))
            continue;
        const std::string name = file.substr(0, file.size() - suffix.size());
        if (found || !isIdentifier(name))
            return std::nullopt;
        found = name;
    }
    return error ? std::nullopt : found;
}

} // namespace

AppDirBundle::AppDirBundle(const fs::path& executable) : location_(executable.parent_path()) {
    for (fs::path folder = location_; folder.has_relative_path(); folder = folder.parent_path()) {
        std::error_code error;
        if (!fs::equivalent(folder / "AppRun", executable, error) || error)
            continue;
        if (auto name = desktopEntry(folder)) {
            location_ = folder;
            identifier_ = std::move(name);
            return;
        }
    }
}

fs::path AppDirBundle::runningExecutable() {
    std::error_code error;
    return fs::read_symlink("/proc/self/exe", error);
}
