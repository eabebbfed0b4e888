// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "views/popover/HistoryChart.h"

#include <QRectF>
#include <QWidget>

/// Draws the line of the history chart. The implementation is a plugin that is loaded when the first line is to be
/// drawn: QCustomPlot, and the QtPrintSupport that it needs, would add to the cost of every start, and most starts
/// never open the popover.
class HistoryPlot : public QWidget {
public:
    using QWidget::QWidget;

    /// Shows the content, which has at least two points.
    virtual void setContent(const HistoryChart::Content& content) = 0;

    /// Where the line is drawn, from the left edge of the window to now and from 100 % to 0.
    virtual QRectF area() const = 0;
};

/// The plugin's entry point.
extern "C" Q_DECL_EXPORT HistoryPlot* makeHistoryPlot(QWidget* parent);
