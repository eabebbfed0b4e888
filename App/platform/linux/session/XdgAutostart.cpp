// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/session/XdgAutostart.h"

#include "platform/Bundle.h"
#include "platform/Files.h"
#include "platform/linux/session/AutostartEntry.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <system_error>
#include <utility>

namespace fs = std::filesystem;

namespace {

// Entries with all their translations are a few kilobytes.
constexpr std::size_t maxSize = 1 << 16;

constexpr const char* noBundle = "Velmora does not run from an application bundle";
constexpr const char* noName = "The name of its folder has characters that an autostart entry cannot hold";

bool isThere(const fs::path& file) {
    std::error_code error;
    return fs::exists(file, error);
}

bool isLink(const fs::path& file) {
    std::error_code error;
    return fs::is_symlink(file, error);
}

/// Why it cannot be started; no error when it can.
std::error_code cannotRun(const fs::path& program) {
    if (::faccessat(AT_FDCWD, program.c_str(), X_OK, AT_EACCESS) != 0)
        return {errno, std::system_category()};
    return {};
}

std::optional<std::string> reason(const std::error_code& error) {
    return error ? std::optional(error.message()) : std::nullopt;
}

std::optional<std::string> removeFile(const fs::path& file) {
    std::error_code error;
    fs::remove(file, error);
    return reason(error);
}

/// Follows a link, for users who keep their settings elsewhere and link to them.
std::optional<std::string> put(Files& files, const fs::path& file, const std::optional<std::string>& content) {
    std::error_code error;
    if (fs::exists(file, error) && !fs::is_regular_file(file, error))
        return reason(std::make_error_code(std::errc::file_exists)); // for instance a link to /dev/null
    return content ? reason(files.replaceNow(file, *content)) : noName;
}

} // namespace

fs::path XdgAutostart::file(const fs::path& configHome, std::string_view identifier) {
    return configHome / "autostart" / (std::string(identifier) + ".desktop");
}

XdgAutostart::XdgAutostart(const Bundle& bundle, Files& files, fs::path configHome, std::vector<fs::path> configFolders)
    : bundle_(bundle)
    , files_(files)
    , configHome_(std::move(configHome))
    , configFolders_(std::move(configFolders)) {}

std::optional<fs::path> XdgAutostart::systemFile(std::string_view identifier) const {
    for (const fs::path& folder : configFolders_) {
        if (const fs::path found = file(folder, identifier); isThere(found))
            return found;
    }
    return std::nullopt;
}

bool XdgAutostart::starts(const fs::path& file) const {
    const auto content = files_.read(file, maxSize);
    const auto entry = content ? AutostartEntry::parse(*content) : std::nullopt;
    if (!entry || !entry->isOn || !entry->program.is_absolute())
        return false;
    // A name without a folder is looked up in the session's PATH, which we do not know; the program below is checked.
    if (entry->tryExec && entry->tryExec->is_absolute() && cannotRun(*entry->tryExec))
        return false;
    std::error_code error;
    return fs::equivalent(entry->program, bundle_.program(), error) && !error;
}

bool XdgAutostart::isEnabled() const {
    const auto identifier = bundle_.identifier();
    if (!identifier)
        return false;
    if (const fs::path own = file(configHome_, *identifier); isThere(own))
        return starts(own);
    const auto system = systemFile(*identifier);
    return system && starts(*system);
}

std::optional<std::string> XdgAutostart::registerItem() {
    const auto identifier = bundle_.identifier();
    if (!identifier)
        return noBundle;
    if (isEnabled())
        return std::nullopt;
    if (const auto error = cannotRun(bundle_.program()))
        return error.message();
    const fs::path own = file(configHome_, *identifier);
    const auto system = systemFile(*identifier);
    if (system && starts(*system) && isThere(own) && !isLink(own))
        return removeFile(own); // it only hid the system's
    return put(files_, own, AutostartEntry::text(bundle_.program(), bundle_.icon(), AutostartEntry::Switch::on));
}

std::optional<std::string> XdgAutostart::unregisterItem() {
    const auto identifier = bundle_.identifier();
    if (!identifier)
        return noBundle;
    if (!isEnabled())
        return std::nullopt;
    const fs::path own = file(configHome_, *identifier);
    // Removing our entry would bring the system's back; removing a link, whatever tool made the link.
    if (!systemFile(*identifier) && !isLink(own))
        return removeFile(own);
    return put(files_, own, AutostartEntry::text(bundle_.program(), bundle_.icon(), AutostartEntry::Switch::off));
}
