// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Panels.h"

#include <QPointer>
#include <QString>

class QDialog;

/// The toolkit's dialogs, or those of the desktop where the toolkit knows how to show them. One save panel or alert at
/// a time: while there is one, another request brings that to the front and gives nothing. An error is always told.
/// When the program ends while a panel is open, the panel gives nothing.
class QtPanels final : public Panels {
public:
    void bringToFront() override;
    std::optional<std::filesystem::path> runSavePanel(const SavePanel& panel) override;
    std::optional<std::size_t> runAlert(const Alert& alert) override;
    void runErrorAlert(const std::filesystem::path& file, std::error_code error) override;

private:
    QPointer<QDialog> open_;
    QString folder_; ///< where the last file went in this run

    /// Whether there is none yet; the one that is there comes to the front.
    bool mayOpen();
    QString startFolder() const;
};
