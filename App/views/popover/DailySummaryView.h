// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "history/HistoryStore.h"

#include <QColor>
#include <QWidget>

#include <vector>

class QAbstractButton;
class QGridLayout;

/// A table of the last days that folds away; folded at first, and nothing at all without rows.
class DailySummaryView final : public QWidget {
    Q_OBJECT

public:
    explicit DailySummaryView(QWidget* parent = nullptr);

    /// The rows from the top, and the colour of the header.
    void setContent(const std::vector<HistoryStore::DaySummary>& rows, const QColor& secondary);

Q_SIGNALS:
    /// It has become higher or lower.
    void resized();

private:
    QAbstractButton* disclosure_;
    QWidget* table_;
    QGridLayout* grid_;

    void setCell(int row, int column, const QString& text, const QString& spoken, const QPalette& palette);
    void setExpanded(bool expanded);
};
