// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QScrollBar>

/// A vertical scroll bar that is nothing but a thin handle, so that it fits into the margin beside what is scrolled. It
/// is there only while there is something to scroll.
class ThinScrollBar final : public QScrollBar {
    Q_OBJECT

public:
    static constexpr int thickness = 7;

    /// Moves and is moved by `other`, which lives as long and is not seen itself.
    ThinScrollBar(QScrollBar* other, QWidget* parent);

protected:
    void paintEvent(QPaintEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    QScrollBar* other_;

    void follow();
};
