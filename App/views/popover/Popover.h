// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/StatusBar.h"

#include <QElapsedTimer>
#include <QPoint>
#include <QTimer>
#include <QWidget>

#include <optional>

class QScrollArea;
class ThinScrollBar;

/// The window that opens from the status item and closes by itself when the user turns elsewhere, or away.
class Popover final : public QWidget {
    Q_OBJECT

public:
    Popover();

    /// What is in it; it is as wide as the popover, whose border and scroll bar lie on its margin, and as high as it
    /// wants to be, and scrolls where the screen is too low for that. Taken over.
    void setContent(QWidget* content);

    /// Shows it beside the point, or where it was last, or in the top right corner, and takes the keyboard.
    void showAt(std::optional<ScreenPoint> point);

    /// Fits it to its content, which has become higher or lower.
    void place();

    /// Whether it was closed so lately that the click which closed it may be the one that now asks for it.
    bool wasJustClosed() const;

Q_SIGNALS:
    void closed();

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    QScrollArea* area_;
    ThinScrollBar* scrollBar_;
    QWidget* border_;
    std::optional<ScreenPoint> point_;
    QElapsedTimer sinceClosed_;
    QTimer untilNobodyLooks_{this};
    QPoint pointer_; ///< when the timer was started

    void closeUnlessPointerMoves();
};
