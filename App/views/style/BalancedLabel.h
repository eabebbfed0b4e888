// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLabel>

/// A label for plain text that may take several lines, which are then about equally long.
class BalancedLabel : public QLabel {
public:
    explicit BalancedLabel(const QString& text, QWidget* parent = nullptr);

    int heightForWidth(int width) const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    /// What is known of the text in that font, so that it need not be laid out again.
    struct Known {
        QString text;
        QFont font;
        QSize unbroken;        ///< with line breaks nowhere but where the text has them
        int room = -1;         ///< that was balanced last; it is narrower than `unbroken`
        int balancedWidth = 0; ///< in this room
    };
    mutable Known known_;

    Known& known() const;
};
