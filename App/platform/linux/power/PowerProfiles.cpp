// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/power/PowerProfiles.h"

#include "platform/linux/files/ReadDescriptor.h"
#include "platform/qt/Text.h"

#include <QTimer>

#include <fcntl.h>

#include <utility>

PowerProfiles::PowerProfiles(SystemBus& bus, const std::filesystem::path& sysfs, std::chrono::milliseconds keep)
    : daemons_(
          bus, QStringLiteral("ActiveProfile"),
          [this](const QString& name, const QVariant& value) {
              if (const auto profile = asText(value))
                  take(name.toStdString(), *profile);
          },
          [this](const QString& name) { forgetLater(name.toStdString()); })
    , firmwareFile_(sysfs / "firmware/acpi/platform_profile")
    , keep_(keep) {}

void PowerProfiles::start() {
    firmware_ = FileDescriptor(::open(firmwareFile_.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (firmware_) {
        // sysfs signals changes as urgent data (POLLPRI).
        firmwareEvents_ = std::make_unique<QSocketNotifier>(firmware_.get(), QSocketNotifier::Exception);
        connect(firmwareEvents_.get(), &QSocketNotifier::activated, this, [this] { readFirmware(); });
        readFirmware();
    }
    daemons_.start();
}

Subscription PowerProfiles::onPowerStateChanged(std::function<void()> callback) {
    return observers_.add(std::move(callback));
}

void PowerProfiles::take(const std::string& name, const std::string& profile) {
    choice_.daemons[name] = {.profile = profile, .hasLeft = false};
    update();
}

void PowerProfiles::forgetLater(const std::string& name) {
    const int absence = ++absences_[name];
    const auto daemon = choice_.daemons.find(name);
    if (daemon == choice_.daemons.end())
        return;
    daemon->second.hasLeft = true;
    update();
    QTimer::singleShot(keep_, this, [this, name, absence] {
        const auto found = choice_.daemons.find(name);
        if (absence != absences_[name] || found == choice_.daemons.end() || !found->second.hasLeft)
            return;
        choice_.daemons.erase(found);
        update();
    });
}

void PowerProfiles::readFirmware() {
    const bool isThere = ::lseek(firmware_.get(), 0, SEEK_SET) == 0;
    choice_.firmware = isThere ? readDescriptor(firmware_.get(), 4096) : std::nullopt;
    // The file of a driver that has gone away signals for ever.
    if (!choice_.firmware)
        firmwareEvents_->setEnabled(false);
    update();
}

void PowerProfiles::update() {
    if (std::exchange(isLowPower_, choice_.isLowPower()) != isLowPower_)
        observers_.notify();
}
