// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/StatusBar.h"

#include <QElapsedTimer>
#include <QMargins>
#include <QPoint>
#include <QTimer>
#include <QWidget>

#include <optional>

class DesktopWindows;
class KeyboardFocus;
class QScrollArea;
class ThinScrollBar;

/// The window that opens from the status item. It closes by itself when the user turns to something else or leaves.
class Popover final : public QWidget {
    Q_OBJECT

public:
    /// `desktop` may be null; it outlives this.
    explicit Popover(DesktopWindows* desktop = nullptr);
    ~Popover() override;

    /// Sets the content and takes ownership of it. It is as wide as the popover, whose border and scroll bar lie on its
    /// margin, and as high as it asks to be; it scrolls if the screen is too low for that.
    void setContent(QWidget* content);

    /// It will be shown soon, when its content is up to date.
    void prepare();

    /// Shows it beside the point, else where it was last, else in the corner where items usually are, and takes the
    /// keyboard focus.
    void showAt(std::optional<ScreenPoint> point);

    /// Fits its size and position to the content, whose height has changed.
    void place();

    /// Whether it was closed so recently that the click which closed it may be the one that now asks for it.
    bool wasJustClosed() const;

Q_SIGNALS:
    void closed();

protected:
    bool event(QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    class Border;

    DesktopWindows* desktop_;
    QScrollArea* area_;
    ThinScrollBar* scrollBar_;
    Border* border_;
    KeyboardFocus* keyboardFocus_;
    int shadow_ = 0;          ///< how far the window reaches beyond the card, on each side
    bool hasSettled_ = false; ///< has settled since it was shown
    std::optional<ScreenPoint> point_;
    QElapsedTimer sinceClosed_;
    QTimer untilNobodyLooks_{this};
    QPoint pointer_; ///< where it was when that was last looked at

    /// Whatever has to wait for the display server; for a popup, once it has been painted.
    void settle();
    void tellOfPlace();
    void closeUnlessPointerMoves();
    /// Moves and resizes it in one step: after the first of two it would hang over the panel or the screen's edge.
    void setFixedGeometry(const QRect& geometry);
    QMargins shadowMargins() const { return {shadow_, shadow_, shadow_, shadow_}; }
    QRect card() const { return rect().marginsRemoved(shadowMargins()); }
    void useShadow(bool has);
    void useCardColor();
};
