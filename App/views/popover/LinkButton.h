// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAbstractButton>

/// A button that looks like a link in a text.
class LinkButton final : public QAbstractButton {
    Q_OBJECT

public:
    explicit LinkButton(const QString& text, QWidget* parent = nullptr);

    /// Sets the colour of the text.
    void setColor(const QColor& color);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QColor color_;
};
