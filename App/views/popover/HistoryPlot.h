// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "views/popover/HistoryChart.h"

#include <QFont>
#include <QPen>
#include <QPointF>
#include <QRectF>
#include <QString>
#include <QWidget>

#include <vector>

class QPainter;

/// Draws the line of the history chart, its rule and its marks.
class HistoryPlot final : public QWidget {
    Q_OBJECT

public:
    /// A word at the time axis.
    struct TimeName {
        Date middle;
        QString text;
    };

    explicit HistoryPlot(QWidget* parent);

    /// Shows the content.
    void setContent(const HistoryChart::Content& content);

    /// What is shown.
    const HistoryChart::Content& content() const { return content_; }

    /// Where the line is drawn, from the left edge of the window to now and from 100 % to 0.
    QRectF area() const { return area_; }

    /// Where the charge at a moment is drawn.
    QPointF place(Date date, double percent) const;

    /// Those that have room: a time at its mark, a day in its middle.
    const std::vector<TimeName>& timeNames() const { return timeNames_; }

    /// The dashes of the rule.
    QPen rulePen() const;

    /// Where the rule's text is drawn, on a plate; empty if there is no rule.
    QRectF ruleText() const;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    HistoryChart::Content content_;
    QFont caption_;        ///< of the desktop
    int dpi_ = 0;          ///< for which the fonts were made
    QFont axisFont_;       ///< the same, but limited in size
    QFont annotationFont_; ///< the same in a size of its own
    QRectF area_;
    std::vector<TimeName> timeNames_;

    double x(Date date) const;
    double y(double percent) const;
    bool hasRule() const;
    void useFonts();
    void layOut();
    void drawMarks(QPainter& painter) const;
    void drawLine(QPainter& painter) const;
    void drawRule(QPainter& painter) const;
};
