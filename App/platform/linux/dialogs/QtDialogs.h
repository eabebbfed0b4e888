// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Dialogs.h"
#include "platform/linux/dialogs/SavePortal.h"

#include <QDBusConnection>
#include <QString>

#include <chrono>
#include <optional>

class QDialog;

/// Qt's dialogs; for a file to save to the desktop's own where its portal shows that. One save dialog or alert
/// at a time: while there is one, another request brings that to the front and gives nothing. An error is always told.
/// One that is open when the program ends gives nothing.
class QtDialogs final : public Dialogs {
public:
    /// `portal` is the bus on which the desktop is asked for its save dialog, if it is to be asked; it may take as long
    /// as `portalTimeout` to say that it will ask the user.
    explicit QtDialogs(std::optional<QDBusConnection> portal = std::nullopt,
                       std::chrono::milliseconds portalTimeout = std::chrono::seconds(5));

    void bringToFront() override;
    std::optional<std::filesystem::path> runSaveDialog(const SaveDialog& asked) override;
    std::optional<std::size_t> runAlert(const Alert& alert) override;
    void runErrorAlert(const std::filesystem::path& file, std::error_code error) override;

private:
    std::optional<QDBusConnection> portal_;
    std::chrono::milliseconds portalTimeout_;
    QDialog* open_ = nullptr; ///< lives in the call that shows it
    QString folder_;          ///< where the last file went in this run

    /// Whether there is none yet; the one that is there comes to the front.
    bool mayOpen();
    QString startFolder() const;
    SaveAnswer askPortal(const SaveDialog& asked);
    std::optional<std::filesystem::path> askOurselves(const SaveDialog& asked);
};
