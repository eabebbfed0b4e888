// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Lifetime.h"
#include "platform/Platform.h"
#include "platform/Subscription.h"
#include "views/style/ViewStyle.h"
#include "views/text/PopoverText.h"

#include <QWidget>

#include <functional>
#include <vector>

class AppModel;
class FlatStyle;
class DailySummaryView;
class GaugeBar;
class HistoryChart;
class LinkButton;
class QBoxLayout;
class QLabel;
class RingView;
class SegmentedPicker;

/// The content of the popover: the ring with its meaning, the details, the history as chart and table, and the buttons
/// for the settings and for quitting. It follows the model while it is on the screen, and does nothing while it is not.
class PopoverView final : public QWidget {
    Q_OBJECT

public:
    /// `openSettings` and `quit` are the actions of its two buttons.
    PopoverView(AppModel& model, const Platform& platform, std::function<void()> openSettings,
                std::function<void()> quit, QWidget* parent = nullptr);
    ~PopoverView() override;

    /// Updates everything, even while it is not on the screen; to be called before it is shown.
    void rebuild();

    /// The number of updates so far, so that a test can check that a closed popover does no work.
    int rebuilds() const { return rebuilds_; }

Q_SIGNALS:
    /// Its height may have changed.
    void resized();

protected:
    void changeEvent(QEvent* event) override;

private:
    /// A label with a value at the other end of the line.
    struct Row {
        QWidget* widget = nullptr;
        QLabel* label = nullptr;
        QLabel* value = nullptr;
    };

    AppModel& model;
    Platform platform_;
    std::function<void()> openSettings;
    int range = 1; ///< days in the chart, 1 or 7
    int rebuilds_ = 0;
    bool isQueued_ = false;

    FlatStyle* flat_;
    QWidget* noBattery_;
    QLabel* noBatterySymbol_;
    QLabel* noBatteryTitle_;
    QLabel* noBatteryNote_;
    QWidget* battery_;
    RingView* ring_;
    QLabel* state_;
    QLabel* pluggedIn_;
    QWidget* snooze_;
    QBoxLayout* snoozeLine_;
    QLabel* snoozeText_;
    LinkButton* cancel_;
    QWidget* cycles_;
    Row cycleRow_;
    GaugeBar* cycleBar_;
    std::vector<Row> details_;
    SegmentedPicker* picker_;
    HistoryChart* chart_;
    DailySummaryView* summary_;
    QLabel* note_;

    std::vector<Subscription> observations_;
    Lifetime lifetime_;

    static Row makeRow(const char* name, QWidget* parent);
    QWidget* makeNoBattery();
    QWidget* makeBattery();
    QWidget* makeHeader();
    QWidget* makeCycles();
    QWidget* makeFooter(std::function<void()> quit);
    void queueRebuild();
    void showNoBattery();
    void showHeader(const BatteryState& state, Date now);
    void leaveSnooze();
    void showCycles(const BatteryState& state);
    void showDetails(const BatteryState& state);
    void showChart(Date now);
    QColor color(Tint tint, Use use = Use::text) const;
    void setText(QLabel* label, const QString& text, TextStyle style, Tint tint);
    void setRow(const Row& row, const QString& label, const QString& value, Tint tint);
};
