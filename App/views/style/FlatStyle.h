// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QProxyStyle>

/// Draws push buttons, number and time fields and lists of choices as one family: a filling without an edge, which is
/// darker below the pointer and darker again when pressed, and a ring for the keyboard. A field has a minus and a plus
/// at its ends instead of arrows. To be set for single widgets; all else is Qt's own.
class FlatStyle final : public QProxyStyle {
    Q_OBJECT

public:
    /// Becomes a child of `owner`.
    explicit FlatStyle(QObject* owner);

    /// Sets this style and its weight of letters for a widget.
    void dress(QWidget& widget);

    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                            const QWidget* widget) const override;
    QRect subControlRect(ComplexControl control, const QStyleOptionComplex* option, SubControl part,
                         const QWidget* widget) const override;
    QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& contents,
                           const QWidget* widget) const override;
};
