// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/StatusBar.h"

#include <QElapsedTimer>
#include <QWidget>

#include <optional>

class QLabel;

/// The window that opens from the status item and closes by itself when the user turns elsewhere. For now it shows the
/// lines of the tooltip.
class Popover final : public QWidget {
    Q_OBJECT

public:
    Popover();

    /// What it says, one or more lines.
    void setText(const QString& text);

    /// Shows it beside the point, or where it was last, or in the top right corner, and takes the keyboard.
    void showAt(std::optional<ScreenPoint> point);

    /// Whether it was closed so lately that the click which closed it may be the one that now asks for it.
    bool wasJustClosed() const;

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    QLabel* text_;
    std::optional<ScreenPoint> point_;
    QElapsedTimer sinceClosed_;

    void place();
};
