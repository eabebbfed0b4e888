// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/popover/PopoverView.h"

#include "alerts/Prefs.h"
#include "platform/Clock.h"
#include "platform/GlyphName.h"
#include "platform/MainLoop.h"
#include "platform/UserDefaults.h"
#include "platform/qt/ProgramFiles.h"
#include "shell/AppModel.h"
#include "views/popover/DailySummaryView.h"
#include "views/popover/GaugeBar.h"
#include "views/popover/HistoryChart.h"
#include "views/popover/LinkButton.h"
#include "views/popover/RingView.h"
#include "views/popover/SegmentedPicker.h"
#include "views/style/Accessibility.h"
#include "views/style/BalancedLabel.h"
#include "views/style/FlatStyle.h"
#include "views/style/ViewStyle.h"
#include "views/text/TimeText.h"

#include <QEvent>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QSvgRenderer>
#include <QVBoxLayout>

#include <optional>
#include <string>
#include <utility>

namespace {

constexpr int spacing = 14;
constexpr int headerSpacing = 4; ///< between the texts beside the ring
constexpr int headerRoom = popoverWidth - 2 * popoverPadding - RingView::frame - spacing; ///< for each of them
constexpr int chartHeight = 110;
constexpr int noBatterySize = 44; ///< about that of a glyph in a font of 36; twice the grid that it is drawn on
constexpr std::size_t mostDetails = 4;

QLabel* makeLabel(const char* name, QWidget* parent) {
    auto* label = new QLabel(parent);
    label->setObjectName(QLatin1String(name));
    label->setTextFormat(Qt::PlainText); // text from the battery is not markup
    return label;
}

QLabel* makeWrappingLabel(const char* name, QWidget* parent) {
    auto* label = new BalancedLabel({}, parent);
    label->setObjectName(QLatin1String(name));
    return label;
}

/// A line across, one device pixel thick.
class Divider final : public QWidget {
public:
    explicit Divider(QWidget* parent) : QWidget(parent) {
        setObjectName(QStringLiteral("divider"));
        setFixedHeight(1);
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        drawHairline(painter, 0, width(), 0, palette());
    }
};

template <class Layout>
Layout* makeLayout(QWidget* widget, int gap) {
    auto* layout = new Layout(widget);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(gap);
    return layout;
}

/// The glyph in one colour; null when there is none.
QPixmap glyph(const char* symbol, int size, const QColor& color, qreal scale) {
    const auto file = programFile("share/velmora/icons/hicolor/scalable/status") / (glyphIconName(symbol) + ".svg");
    QSvgRenderer drawing(QString::fromStdString(file.string()));
    if (!drawing.isValid())
        return {};
    QPixmap pixmap((QSizeF(size, size) * scale).toSize());
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    drawing.render(&painter);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(pixmap.rect(), color);
    painter.end();
    pixmap.setDevicePixelRatio(scale);
    return pixmap;
}

} // namespace

PopoverView::PopoverView(AppModel& theModel, const Platform& platform, std::function<void()> settings,
                         std::function<void()> quit, QWidget* parent)
    : QWidget(parent)
    , model(theModel)
    , platform_(platform)
    , openSettings(std::move(settings))
    , flat_(new FlatStyle(this)) {
    setObjectName(QStringLiteral("popoverView"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(popoverPadding, popoverPadding, popoverPadding, popoverPadding);
    layout->setSpacing(spacing);
    layout->addWidget(makeNoBattery());
    layout->addWidget(makeBattery());
    layout->addWidget(makeFooter(std::move(quit)));
    const auto follow = [this](const auto&) { queueRebuild(); };
    observations_.push_back(model.state.subscribe(follow));
    observations_.push_back(model.pluggedSince.subscribe(follow));
    observations_.push_back(model.historyVersion.subscribe(follow));
    observations_.push_back(model.snoozeUntil.subscribe(follow));
    observations_.push_back(platform_.defaults.onChange([this] { queueRebuild(); }));
}

PopoverView::~PopoverView() = default;

QWidget* PopoverView::makeNoBattery() {
    noBattery_ = new QWidget(this);
    noBattery_->setObjectName(QStringLiteral("noBattery"));
    auto* column = makeLayout<QVBoxLayout>(noBattery_, 8);
    column->setContentsMargins(0, 20, 0, 20);
    noBatterySymbol_ = makeLabel("noBatterySymbol", noBattery_);
    noBatteryTitle_ = makeWrappingLabel("noBatteryTitle", noBattery_);
    noBatteryNote_ = makeWrappingLabel("noBatteryNote", noBattery_);
    for (QLabel* label : {noBatterySymbol_, noBatteryTitle_, noBatteryNote_}) {
        label->setAlignment(Qt::AlignCenter);
        column->addWidget(label);
    }
    return noBattery_;
}

QWidget* PopoverView::makeBattery() {
    battery_ = new QWidget(this);
    battery_->setObjectName(QStringLiteral("battery"));
    auto* column = makeLayout<QVBoxLayout>(battery_, spacing);
    column->addWidget(makeHeader());
    column->addWidget(makeCycles());
    for (std::size_t i = 0; i < mostDetails; ++i) {
        Row row = makeRow("detail", battery_);
        column->addWidget(row.widget);
        details_.push_back(row);
    }
    picker_ = new SegmentedPicker({QStringLiteral("24 hours"), QStringLiteral("7 days")}, battery_);
    picker_->setObjectName(QStringLiteral("rangePicker"));
    picker_->setAccessibleName(QStringLiteral("Range of the chart"));
    connect(picker_, &SegmentedPicker::chosen, this, [this](int index) {
        range = index == 0 ? 1 : 7;
        showChart(platform_.clock.now());
    });
    column->addWidget(picker_);
    chart_ = new HistoryChart(battery_);
    chart_->setFixedHeight(chartHeight);
    column->addWidget(chart_);
    summary_ = new DailySummaryView(battery_);
    connect(summary_, &DailySummaryView::resized, this, &PopoverView::resized);
    column->addWidget(summary_);
    return battery_;
}

PopoverView::Row PopoverView::makeRow(const char* name, QWidget* parent) {
    Row row;
    row.widget = new QWidget(parent);
    row.widget->setObjectName(QLatin1String(name) + QLatin1String("Row"));
    setAccessibleWhole(*row.widget, QAccessible::StaticText);
    row.label = makeWrappingLabel((std::string(name) + "Label").c_str(), row.widget);
    row.value = makeWrappingLabel((std::string(name) + "Value").c_str(), row.widget);
    row.value->setAlignment(Qt::AlignTrailing | Qt::AlignVCenter);
    auto* line = makeLayout<QHBoxLayout>(row.widget, 8);
    line->addWidget(row.label, 1);
    line->addWidget(row.value, 1);
    return row;
}

QWidget* PopoverView::makeHeader() {
    auto* header = new QWidget(battery_);
    auto* line = makeLayout<QHBoxLayout>(header, spacing);
    ring_ = new RingView(header);
    ring_->setObjectName(QStringLiteral("ring"));
    line->addWidget(ring_, 0, Qt::AlignCenter);
    auto* column = new QVBoxLayout;
    column->setSpacing(headerSpacing);
    state_ = makeWrappingLabel("stateText", header);
    pluggedIn_ = makeWrappingLabel("pluggedInText", header);
    snooze_ = new QWidget(header);
    snooze_->setObjectName(QStringLiteral("snooze"));
    snoozeText_ = makeWrappingLabel("snoozeText", snooze_);
    cancel_ = new LinkButton(QStringLiteral("Cancel"), snooze_);
    cancel_->setObjectName(QStringLiteral("cancelSnooze"));
    cancel_->setAccessibleName(QStringLiteral("Cancel the snooze"));
    connect(cancel_, &LinkButton::clicked, this, [this] { model.cancelSnooze(); });
    snoozeLine_ = makeLayout<QHBoxLayout>(snooze_, headerSpacing);
    snoozeLine_->addWidget(snoozeText_);
    snoozeLine_->addWidget(cancel_, 0, Qt::AlignLeading);
    snoozeLine_->addStretch(1);
    column->addStretch(1);
    column->addWidget(state_);
    column->addWidget(pluggedIn_);
    column->addWidget(snooze_);
    column->addStretch(1);
    line->addLayout(column, 1);
    return header;
}

QWidget* PopoverView::makeCycles() {
    cycles_ = new QWidget(battery_);
    cycles_->setObjectName(QStringLiteral("cycles"));
    setAccessibleWhole(*cycles_, QAccessible::StaticText);
    auto* column = makeLayout<QVBoxLayout>(cycles_, 4);
    cycleRow_ = makeRow("cycle", cycles_);
    column->addWidget(cycleRow_.widget);
    cycleBar_ = new GaugeBar(cycles_);
    cycleBar_->setObjectName(QStringLiteral("cycleBar"));
    cycleBar_->setRange(0, static_cast<int>(cyclesOfAGauge));
    column->addWidget(cycleBar_);
    return cycles_;
}

QWidget* PopoverView::makeFooter(std::function<void()> quit) {
    auto* footer = new QWidget(this);
    auto* column = makeLayout<QVBoxLayout>(footer, 8);
    column->addWidget(new Divider(footer));
    note_ = makeWrappingLabel("note", footer);
    column->addWidget(note_);
    auto* buttons = new QHBoxLayout;
    auto* settings = new QPushButton(QStringLiteral("Settings…"), footer);
    settings->setObjectName(QStringLiteral("settingsButton"));
    flat_->dress(*settings);
    connect(settings, &QPushButton::clicked, this, [this] { openSettings(); });
    buttons->addWidget(settings);
    buttons->addStretch(1);
    auto* quitButton = new QPushButton(QStringLiteral("Quit"), footer);
    quitButton->setObjectName(QStringLiteral("quitButton"));
    flat_->dress(*quitButton);
    connect(quitButton, &QPushButton::clicked, this, [quit = std::move(quit)] { quit(); });
    buttons->addWidget(quitButton);
    column->addLayout(buttons);
    return footer;
}

void PopoverView::queueRebuild() {
    // Several values change in one refresh, and each notifies its observers before it is stored.
    if (isQueued_ || !isVisible())
        return;
    isQueued_ = true;
    platform_.mainLoop.async(lifetime_.guard([this] {
        isQueued_ = false;
        if (isVisible()) {
            rebuild();
            Q_EMIT resized();
        }
    }));
}

void PopoverView::rebuild() {
    ++rebuilds_;
    const BatteryState& state = model.state.get();
    const Date now = platform_.clock.now();
    noBattery_->setVisible(!state.hasBattery);
    battery_->setVisible(state.hasBattery);
    setText(note_, QStringLiteral("Velmora can only remind you. A Mac app cannot stop the charger."),
            TextStyle::caption2, Tint::secondary);
    if (!state.hasBattery) {
        showNoBattery();
        return;
    }
    showHeader(state, now);
    showCycles(state);
    showDetails(state);
    showChart(now);
    constexpr std::int64_t days = 7;
    summary_->setContent(
        model.history.hasDailySummaries(days, now), [this, now] { return model.history.dailySummaries(days, now); },
        color(Tint::secondary));
}

void PopoverView::showNoBattery() {
    noBatterySymbol_->setPixmap(glyph("battery.0", noBatterySize, color(Tint::secondary), devicePixelRatioF()));
    setText(noBatteryTitle_, QStringLiteral("No battery found"), TextStyle::headline, Tint::primary);
    setText(noBatteryNote_, QStringLiteral("This Mac does not report a battery, so Velmora stays quiet."),
            TextStyle::caption, Tint::secondary);
    setAccessibleName(noBatteryTitle_->text());
}

void PopoverView::showHeader(const BatteryState& state, Date now) {
    ring_->setContent(state.percent, color(ringTint(state), Use::graphics), trackColor(palette()));
    ring_->setAccessibleName(QString::fromStdString(ringDescription(state)));
    setAccessibleName(ring_->accessibleName()); // it gets the focus first, so screen readers read this when it opens
    setText(state_, QString::fromStdString(state.stateText()), TextStyle::headline, Tint::primary);
    const std::optional<std::string> pluggedIn = pluggedInText(model.pluggedSince.get(), now);
    pluggedIn_->setVisible(pluggedIn.has_value());
    setText(pluggedIn_, QString::fromStdString(pluggedIn.value_or("")), TextStyle::caption, Tint::secondary);
    const std::optional<Date> snoozed = model.snoozeUntil.get();
    if (!snoozed && cancel_->hasFocus())
        leaveSnooze();
    snooze_->setVisible(snoozed.has_value());
    if (!snoozed)
        return;
    const QString time = shortTime(*snoozed); // empty beyond any calendar
    setText(snoozeText_,
            time.isEmpty() ? QStringLiteral("Alerts snoozed") : QStringLiteral("Alerts snoozed until ") + time,
            TextStyle::caption, Tint::secondary);
    cancel_->setFont(textFont(TextStyle::caption));
    cancel_->setColor(color(Tint::accent));
    // On one line with its button, else above it: a line broken before the time would read badly.
    const int width = snoozeText_->fontMetrics().horizontalAdvance(snoozeText_->text());
    const bool isOneLine = width + headerSpacing + cancel_->sizeHint().width() <= headerRoom;
    snoozeText_->setWordWrap(width > headerRoom);
    snoozeLine_->setDirection(isOneLine ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom);
}

void PopoverView::leaveSnooze() {
    // What follows in reading order, so that a screen reader goes on from there. By itself Qt would skip all texts.
    QWidget* next = cycles_->isVisible() ? cycles_ : details_.front().widget;
    (next->isVisible() ? next : picker_)->setFocus();
}

void PopoverView::showCycles(const BatteryState& state) {
    const std::optional<CycleGauge> gauge = cycleGauge(state);
    cycles_->setVisible(gauge.has_value());
    if (!gauge)
        return;
    setRow(cycleRow_, QStringLiteral("Cycle count"), QString::fromStdString(gauge->value), Tint::secondary);
    cycles_->setAccessibleName(cycleRow_.widget->accessibleName());
    const QColor track = trackColor(palette());
    cycleBar_->setColors(tintColorOn(track, gauge->tint, palette(), Use::graphics), track);
    cycleBar_->setValue(static_cast<int>(gauge->filled));
}

void PopoverView::showDetails(const BatteryState& state) {
    const std::vector<DetailRow> rows = detailRows(state);
    for (std::size_t i = 0; i < details_.size(); ++i) {
        const bool isUsed = i < rows.size();
        details_[i].widget->setVisible(isUsed);
        if (isUsed)
            setRow(details_[i], QString::fromStdString(rows[i].label), QString::fromStdString(rows[i].value),
                   rows[i].tint);
    }
}

void PopoverView::showChart(Date now) {
    const Prefs prefs = Prefs::current(platform_.defaults);
    const Date since = now - Duration(range * 86400.0);
    chart_->setContent({.points = points(model.history, since),
                        .marks = timeMarks(since, now, platform_.calendar),
                        .since = since,
                        .now = now,
                        .days = range,
                        .limit = prefs.limitEnabled ? std::optional(prefs.limit) : std::nullopt,
                        .line = color(Tint::accent, Use::graphics),
                        .rule = color(Tint::yellow, Use::graphics),
                        .ruleText = color(Tint::yellow),
                        .secondary = color(Tint::secondary)});
}

QColor PopoverView::color(Tint tint, Use use) const {
    return tintColor(tint, palette(), use);
}

void PopoverView::setText(QLabel* label, const QString& text, TextStyle style, Tint tint) {
    // QLabel redoes its layout for each of these, even if the value is the same.
    if (const QColor wanted = color(tint); label->palette().color(QPalette::WindowText) != wanted) {
        QPalette colors = palette();
        colors.setColor(QPalette::WindowText, wanted);
        label->setPalette(colors);
    }
    if (const QFont wanted = textFont(style); label->font() != wanted)
        label->setFont(wanted);
    if (label->text() != text)
        label->setText(text);
}

void PopoverView::setRow(const Row& row, const QString& label, const QString& value, Tint tint) {
    setText(row.label, label, TextStyle::body, Tint::primary);
    setText(row.value, value, TextStyle::body, tint);
    // Screen readers read the whole row at once: a value alone says little.
    if (const QString spoken = label + QLatin1String(": ") + value; row.widget->accessibleName() != spoken)
        row.widget->setAccessibleName(spoken);
}

void PopoverView::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange ||
        event->type() == QEvent::StyleChange)
        queueRebuild();
}
