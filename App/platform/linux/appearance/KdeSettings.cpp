// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/appearance/KdeSettings.h"

#include "platform/linux/appearance/KdeColours.h"
#include "platform/linux/files/FileDescriptor.h"
#include "platform/linux/files/ReadDescriptor.h"

#include <fcntl.h>

#include <utility>

KdeSettings::KdeSettings(QDBusConnection bus, std::function<void()> changed)
    : bus_(std::move(bus))
    , changed_(std::move(changed)) {}

void KdeSettings::start(std::filesystem::path file) {
    file_ = std::move(file);
    // With the signature: libdbus aborts on arguments of other types.
    bus_.connect(QString(), QStringLiteral("/KGlobalSettings"), QStringLiteral("org.kde.KGlobalSettings"),
                 QStringLiteral("notifyChange"), {}, QStringLiteral("ii"), this, SLOT(settingsChanged(int, int)));
}

void KdeSettings::settingsChanged(int kind, int /*detail*/) {
    constexpr int palette = 0;
    constexpr std::size_t limit = 1 << 20;
    if (kind != palette)
        return;
    const FileDescriptor file(::open(file_.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    const auto content = file ? readDescriptor(file.get(), limit) : std::nullopt;
    colours_ = content ? kdeColours(*content) : std::nullopt;
    changed_();
}
