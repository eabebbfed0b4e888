// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Panels.h"
#include "platform/linux/dialogs/SavePortal.h"

#include <QDBusConnection>
#include <QString>

#include <chrono>
#include <optional>

class QDialog;

/// The toolkit's dialogs; for a file to save to the desktop's own where its portal shows that. One save panel or alert
/// at a time: while there is one, another request brings that to the front and gives nothing. An error is always told.
/// When the program ends while a panel is open, the panel gives nothing.
class QtPanels final : public Panels {
public:
    /// `portal` is the bus on which the desktop is asked for its save panel, if it is to be asked; it may take as long
    /// as `portalPatience` to say that it will ask the user.
    explicit QtPanels(std::optional<QDBusConnection> portal = std::nullopt,
                      std::chrono::milliseconds portalPatience = std::chrono::seconds(5));

    void bringToFront() override;
    std::optional<std::filesystem::path> runSavePanel(const SavePanel& panel) override;
    std::optional<std::size_t> runAlert(const Alert& alert) override;
    void runErrorAlert(const std::filesystem::path& file, std::error_code error) override;

private:
    std::optional<QDBusConnection> portal_;
    std::chrono::milliseconds portalPatience_;
    QDialog* open_ = nullptr; ///< lives in the call that shows it
    QString folder_;          ///< where the last file went in this run

    /// Whether there is none yet; the one that is there comes to the front.
    bool mayOpen();
    QString startFolder() const;
    SaveAnswer askPortal(const SavePanel& panel);
    std::optional<std::filesystem::path> askOurselves(const SavePanel& panel);
};
