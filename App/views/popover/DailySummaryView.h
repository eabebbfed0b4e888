// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "history/HistoryStore.h"

#include <QColor>
#include <QWidget>

#include <functional>
#include <vector>

class QAbstractButton;
class QGridLayout;

/// A collapsible table of the last days; collapsed at first, and hidden without rows. Its cells are made when it is
/// first expanded: there are more of them than of all other labels of the popover.
class DailySummaryView final : public QWidget {
    Q_OBJECT

public:
    explicit DailySummaryView(QWidget* parent = nullptr);

    /// Shows it if there are rows, which it asks for, from the top, whenever it is expanded; `secondary` is the colour
    /// of the header.
    void setContent(bool hasRows, std::function<std::vector<HistoryStore::DaySummary>()> rows, const QColor& secondary);

Q_SIGNALS:
    /// Its height has changed.
    void resized();

private:
    QAbstractButton* disclosure_;
    QWidget* table_;
    QGridLayout* grid_;
    std::function<std::vector<HistoryStore::DaySummary>()> rows_;
    QColor secondary_;

    void setCell(int row, int column, const QString& text, const QString& spoken, const QPalette& palette);
    void setExpanded(bool expanded);
    void fillTable();
};
