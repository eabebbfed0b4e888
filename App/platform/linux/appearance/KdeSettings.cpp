// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/appearance/KdeSettings.h"

#include "platform/Files.h"
#include "platform/linux/appearance/KdeColours.h"

#include <QTimer>

#include <chrono>
#include <cstddef>
#include <string>
#include <utility>

KdeSettings::KdeSettings(QDBusConnection bus, std::function<void()> changed)
    : bus_(std::move(bus))
    , changed_(std::move(changed)) {}

void KdeSettings::start(Files& files, std::filesystem::path kdeglobals) {
    files_ = &files;
    file_ = std::move(kdeglobals);
    // With the signature: libdbus aborts on arguments of other types.
    bus_.connect(QString(), QStringLiteral("/KGlobalSettings"), QStringLiteral("org.kde.KGlobalSettings"),
                 QStringLiteral("notifyChange"), {}, QStringLiteral("ii"), this, SLOT(settingsChanged(int, int)));
}

void KdeSettings::settingsChanged(int kind, int /*detail*/) {
    constexpr int palette = 0;
    constexpr std::chrono::milliseconds together(100); // anybody on the bus may send any number of them
    if (kind == palette && !std::exchange(isToBeRead_, true))
        QTimer::singleShot(together, this, &KdeSettings::read);
}

void KdeSettings::read() {
    constexpr std::size_t limit = 1 << 20; // bytes; usual are some ten thousand
    isToBeRead_ = false;
    auto take = lifetime_.guard([this](const std::optional<Appearance::Colours>& colours) {
        colours_ = colours;
        changed_();
    });
    files_->load(file_, limit, [take](const std::optional<std::string>& content) -> Files::Task {
        return [take, colours = content ? kdeColours(*content) : std::nullopt]() mutable { take(colours); };
    });
}
