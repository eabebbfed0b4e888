// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/session/ExecutableBundle.h"

#include "platform/ApplicationId.h"
#include "platform/GlyphName.h"
#include "platform/qt/ProgramFiles.h"

#include <algorithm>
#include <array>
#include <system_error>

namespace fs = std::filesystem;

namespace {

constexpr std::string_view suffix = ".desktop";
// Ours has four entries; its user may add some.
constexpr int maxEntries = 100;
// The longest name on D-Bus, where an application's identifier is used as one.
constexpr std::size_t maxLength = 255;

/// Whether it can be an application's identifier: words of ASCII letters, digits, "_" and "-", joined by dots.
bool isIdentifier(std::string_view text) {
    const auto isAllowed = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '-' ||
               c == '.';
    };
    return !text.empty() && text.size() <= maxLength && std::all_of(text.begin(), text.end(), isAllowed) &&
           text.find("..") == std::string_view::npos && text.front() != '.' && text.back() != '.';
}

/// The name of the folder's only desktop entry; empty if there is none or more than one.
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

fs::path programBelow(const fs::path& prefix) {
    return prefix / "bin/velmora";
}

fs::path iconBelow(const fs::path& prefix) {
    return prefix / "share/icons/hicolor/scalable/apps" / std::string(applicationId).append(".svg");
}

/// Whether everything that is installed with the program is below the prefix; one file of each kind is looked for.
bool isInstalledBelow(const fs::path& prefix) {
    const std::array files = {
        programBelow(prefix),
        prefix / "share/applications" / (std::string(applicationId) + std::string(suffix)),
        iconBelow(prefix),
        prefix / "share/velmora/icons/hicolor/scalable/status" / (glyphIconName("battery.100") + ".svg"),
        prefix / "share/sounds/velmora/Glass.wav",
        prefix / "lib/velmora/velmora-sound.so",
    };
    return std::all_of(files.begin(), files.end(), [](const fs::path& file) {
        std::error_code error;
        return fs::is_regular_file(file, error);
    });
}

} // namespace

ExecutableBundle::ExecutableBundle(const fs::path& executable) : location_(executable.parent_path()) {
    bool isInAppDir = false;
    for (fs::path folder = location_; folder.has_relative_path(); folder = folder.parent_path()) {
        std::error_code error;
        const fs::path appRun = folder / "AppRun";
        isInAppDir = isInAppDir || fs::exists(appRun, error);
        if (!fs::equivalent(appRun, executable, error) || error)
            continue;
        if (auto name = desktopEntry(folder)) {
            location_ = folder;
            identifier_ = std::move(name);
            return;
        }
    }
    // A prefix inside an AppDir does not count. An AppDir that something other than its AppRun started may be gone at
    // the next login, as an AppImage's is when it ends.
    if (isInAppDir || location_.filename() != "bin")
        return;
    if (const fs::path prefix = prefixOf(executable); isInstalledBelow(prefix)) {
        location_ = prefix;
        identifier_ = applicationId;
        isInstalled_ = true;
    }
}

fs::path ExecutableBundle::program() const {
    return isInstalled_ ? programBelow(location_) : location_ / "AppRun";
}

fs::path ExecutableBundle::icon() const {
    return isInstalled_ ? iconBelow(location_) : location_ / (identifier_.value_or("") + ".svg");
}
