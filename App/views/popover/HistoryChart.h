// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "views/text/ChartPoints.h"

#include <QWidget>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

class HistoryPlot;
class QLabel;
class QStackedLayout;

/// The charge over the last days as a line, with a dashed rule at the charge limit; a sentence instead while there is
/// not enough to draw. Below the pointer, and by arrow keys, it tells the charge of one moment: "Thu 14:20 · 62%".
class HistoryChart final : public QWidget {
    Q_OBJECT

public:
    /// The content of the chart.
    struct Content {
        std::vector<Point> points;
        std::vector<Date> marks;           ///< on the time axis
        Date since;                        ///< the left edge
        Date now;                          ///< the right edge
        std::int64_t days = 1;             ///< in the window
        std::optional<std::int64_t> limit; ///< percent; empty for no rule
        QColor line;                       ///< of the charge
        QColor rule;                       ///< of the limit
        QColor ruleText;                   ///< of the label at the rule
        QColor secondary;                  ///< of the marks and of the sentence
    };

    explicit HistoryChart(QWidget* parent = nullptr);

    /// Shows this content; the sentence if there are fewer than two points.
    void setContent(const Content& content);

protected:
    void resizeEvent(QResizeEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    class Overlay;

    QStackedLayout* layers_;
    QLabel* empty_;
    HistoryPlot* plot_ = nullptr; ///< made when there is something to draw
    Overlay* overlay_;
    Content content_;
    std::optional<std::size_t> chosen_; ///< the point that is told

    bool hasLine() const;
    QPointF place(const Point& point) const;
    void choose(std::optional<std::size_t> index);
};
