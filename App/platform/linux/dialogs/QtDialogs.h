// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Dialogs.h"
#include "platform/linux/dialogs/SavePortal.h"

#include <QDBusConnection>
#include <QString>

#include <chrono>
#include <optional>

class QDialog;

/// Qt's dialogs, and the desktop's own save dialog if its portal has one. One save dialog or alert at a time: while one
/// is open, another request brings it to the front and gives nothing. An error is always shown. A dialog that is open
/// when the program ends gives nothing.
class QtDialogs final : public Dialogs {
public:
    /// `portal` is the bus on which to ask the desktop for its save dialog, if at all; within `portalTimeout` the
    /// portal has to accept the question.
    explicit QtDialogs(std::optional<QDBusConnection> portal = std::nullopt,
                       std::chrono::milliseconds portalTimeout = std::chrono::seconds(5));

    void bringToFront() override;
    std::optional<std::filesystem::path> runSaveDialog(const SaveDialog& asked) override;
    std::optional<std::size_t> runAlert(const Alert& alert) override;
    void runErrorAlert(const std::filesystem::path& file, std::error_code error) override;

private:
    std::optional<QDBusConnection> portal_;
    std::chrono::milliseconds portalTimeout_;
    QDialog* open_ = nullptr; ///< lives on the stack of the call that shows it
    QString folder_;          ///< where the last file went in this run

    /// Whether no dialog is open yet; one that is comes to the front.
    bool mayOpen();
    QString startFolder() const;
    SaveAnswer askPortal(const SaveDialog& asked);
    std::optional<std::filesystem::path> askOurselves(const SaveDialog& asked);
};
