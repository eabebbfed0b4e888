// SPDX-License-Identifier: GPL-3.0-or-later
#include "alerts/RunningNotice.h"

#include "alerts/Notifier.h"
#include "platform/Files.h"

#include <optional>
#include <string>
#include <system_error>

namespace {

constexpr const char* told = "told\n";
constexpr std::size_t limit = 64;

} // namespace

RunningNotice::RunningNotice(Files& files, const std::filesystem::path& folder, NotificationCenter& center,
                             const Bundle& bundle)
    : files_(files)
    , file_(file(folder))
    , center_(center)
    , bundle_(bundle) {}

void RunningNotice::show() {
    if (!notificationsAvailable(bundle_))
        return;
    const auto remember = [](const std::optional<std::string>& present) {
        return present ? std::nullopt : std::optional<std::string>(told);
    };
    files_.update(file_, limit, remember, [&center = center_](std::error_code error) {
        if (!error)
            center.add({.identifier = "running",
                        .title = "Velmora is running",
                        .body = "This desktop shows no status items. On GNOME, install the AppIndicator extension. "
                                "Start Velmora again to see the details.",
                        .categoryIdentifier = "",
                        .sound = std::nullopt});
    });
}
