// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/notifications/NotificationConsent.h"

#include "platform/Files.h"

#include <string>
#include <string_view>

using Status = NotificationCenter::AuthorizationStatus;

namespace {

constexpr std::string_view given = "authorized\n";

} // namespace

NotificationConsent::NotificationConsent(Files& files, const std::filesystem::path& folder)
    : files_(files)
    , file_(file(folder)) {}

Status NotificationConsent::status() const {
    if (!status_)
        status_ = files_.read(file_, given.size()) == given ? Status::authorized : Status::notDetermined;
    return *status_;
}

void NotificationConsent::give() {
    if (status() == Status::authorized)
        return;
    status_ = Status::authorized;
    // If this fails, we ask again at the next start.
    files_.replace(file_, std::string(given));
}
