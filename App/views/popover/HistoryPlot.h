// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "views/popover/HistoryChart.h"

#include <QWidget>

/// Draws the line of the history chart. What does it is a module that is loaded when the first line is to be drawn: the
/// chart library, and the printing library that it needs, are a part of what a start costs, and most starts never open
/// the popover.
class HistoryPlot : public QWidget {
public:
    using QWidget::QWidget;

    /// There are at least two points.
    virtual void setContent(const HistoryChart::Content& content) = 0;
};

/// How the module is entered.
extern "C" Q_DECL_EXPORT HistoryPlot* makeHistoryPlot(QWidget* parent);
