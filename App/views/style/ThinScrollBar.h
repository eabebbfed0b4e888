// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QScrollBar>

/// A vertical scroll bar that is just a thin handle, so that it fits into the margin beside the scrolled content. It is
/// visible only while there is something to scroll.
class ThinScrollBar final : public QScrollBar {
    Q_OBJECT

public:
    static constexpr int thickness = 7; ///< where it can be grabbed; the handle is thinner, but below the pointer

    /// Stays in step with `other`, in both directions; `other` lives as long and is not visible itself.
    ThinScrollBar(QScrollBar* other, QWidget* parent);

protected:
    void paintEvent(QPaintEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    QScrollBar* other_;

    void follow();
};
