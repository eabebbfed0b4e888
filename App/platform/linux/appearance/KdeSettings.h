// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Appearance.h"

#include <QDBusConnection>
#include <QObject>

#include <filesystem>
#include <functional>
#include <optional>

/// Follows the colours of Plasma's windows. Qt reads them when the program starts; Plasma tells of each change by a
/// signal on the session bus (org.kde.KGlobalSettings), after it has written the file "kdeglobals".
class KdeSettings final : public QObject {
    Q_OBJECT

public:
    /// `changed` is called when `colours` may have changed.
    KdeSettings(QDBusConnection bus, std::function<void()> changed);

    /// From now on follows changes; they are read from this file.
    void start(std::filesystem::path file);

    /// The colours since the first change; empty before that and where the file tells none.
    const std::optional<Appearance::Colours>& colours() const { return colours_; }

private Q_SLOTS:
    void settingsChanged(int kind, int detail);

private:
    QDBusConnection bus_;
    std::function<void()> changed_;
    std::filesystem::path file_;
    std::optional<Appearance::Colours> colours_;
};
