// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Appearance.h"
#include "platform/Lifetime.h"

#include <QDBusConnection>
#include <QObject>

#include <filesystem>
#include <functional>
#include <optional>

class Files;

/// Follows the colours of Plasma's windows. Qt reads them when the program starts; Plasma tells of each change by a
/// signal on the session bus (org.kde.KGlobalSettings), after it has written the file "kdeglobals".
class KdeSettings final : public QObject {
    Q_OBJECT

public:
    /// `changed` is called when `colours` may have changed.
    KdeSettings(QDBusConnection bus, std::function<void()> changed);

    /// From now on follows changes. They are read from `kdeglobals`, without waiting for the disk.
    void start(Files& files, std::filesystem::path kdeglobals);

    /// The colours since the first change; empty before that and where the file tells none.
    const std::optional<Appearance::Colours>& colours() const { return colours_; }

private Q_SLOTS:
    void settingsChanged(int kind, int detail);

private:
    QDBusConnection bus_;
    std::function<void()> changed_;
    Files* files_ = nullptr;
    std::filesystem::path file_;
    bool isToBeRead_ = false;
    std::optional<Appearance::Colours> colours_;
    Lifetime lifetime_;

    void read();
};
