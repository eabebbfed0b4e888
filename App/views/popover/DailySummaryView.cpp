// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/popover/DailySummaryView.h"

#include "views/style/Accessibility.h"
#include "views/style/KeyboardFocus.h"
#include "views/style/ViewStyle.h"
#include "views/text/PopoverText.h"
#include "views/text/TimeText.h"

#include <QAbstractButton>
#include <QGridLayout>
#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace {

struct Column {
    const char* title;
    int width;           ///< minimum; the first column also takes the remaining space
    const char* longest; ///< the widest text to expect
};

constexpr std::array columns{Column{"Day", 0, "Wed 30"}, Column{"Avg", 38, "100%"}, Column{"Range", 68, "100–100%"},
                             Column{"Charging", 62, "23 h 59 min"}};

int columnWidth(const Column& column, const QFontMetrics& metrics) {
    const int gap = metrics.horizontalAdvance(QLatin1Char(' '));
    const int needed = std::max(metrics.horizontalAdvance(QString::fromUtf8(column.longest)),
                                metrics.horizontalAdvance(QLatin1String(column.title)));
    return std::max(column.width, needed + gap);
}

/// The caption font; smaller where the desktop's font is so large that the table would not fit.
QFont tableFont() {
    constexpr int room = popoverWidth - 2 * popoverPadding;
    QFont font = textFont(TextStyle::caption);
    const auto width = [&font] {
        const QFontMetrics metrics(font);
        int sum = 0;
        for (const Column& column : columns)
            sum += columnWidth(column, metrics);
        return sum;
    };
    while (width() > room && QFontInfo(font).pixelSize() > 8)
        font.setPixelSize(QFontInfo(font).pixelSize() - 1);
    return font;
}

/// A chevron that turns down when expanded, and a text.
class Disclosure final : public QAbstractButton {
public:
    explicit Disclosure(const QString& text, QWidget* parent) : QAbstractButton(parent) {
        setAccessibleRole(*this, QAccessible::Button);
        setText(text);
        setCheckable(true);
        setAttribute(Qt::WA_Hover);
        setFocusPolicy(Qt::StrongFocus);
        setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    }
    QSize sizeHint() const override {
        const QSize text = fontMetrics().size(Qt::TextSingleLine, this->text());
        return {indent() + text.width() + 2, text.height() + 2};
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        QColor color = palette().color(QPalette::WindowText);
        color.setAlphaF(isDown() || underMouse() ? 1.0F : 0.6F);
        painter.setPen(QPen(color, stroke, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter.save();
        // Its ink begins at the edge, whichever way it points.
        const qreal size = std::round(fontMetrics().ascent() * 0.3);
        if (isRightToLeft()) {
            painter.translate(width(), 0);
            painter.scale(-1, 1);
        }
        painter.translate(stroke / 2, height() / 2.0);
        if (isChecked())
            painter.drawPolyline(QPolygonF{{0, -size / 2}, {size, size / 2}, {2 * size, -size / 2}});
        else
            painter.drawPolyline(QPolygonF{{0, -size}, {size, 0}, {0, size}});
        painter.restore();
        painter.setPen(palette().color(QPalette::WindowText));
        const QRect room = rect().adjusted(isRightToLeft() ? 0 : indent(), 0, isRightToLeft() ? -indent() : 0, 0);
        painter.setLayoutDirection(textDirection);
        painter.drawText(room, (isRightToLeft() ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter, text());
        if (showsFocus(*this)) {
            painter.setBrush(Qt::NoBrush);
            painter.setPen(QPen(palette().color(QPalette::Highlight), 1.5));
            painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), 3, 3);
        }
    }

private:
    static constexpr qreal stroke = 1.75;

    int indent() const { return fontMetrics().ascent() + 4; }
    bool isRightToLeft() const { return layoutDirection() == Qt::RightToLeft; }
};

} // namespace

DailySummaryView::DailySummaryView(QWidget* parent)
    : QWidget(parent)
    , disclosure_(new Disclosure(QStringLiteral("Daily summary"), this))
    , table_(new QWidget(this))
    , grid_(new QGridLayout(table_)) {
    setObjectName(QStringLiteral("dailySummary"));
    disclosure_->setObjectName(QStringLiteral("dailySummaryDisclosure"));
    table_->setObjectName(QStringLiteral("dailySummaryTable"));
    grid_->setContentsMargins(0, 4, 0, 0);
    grid_->setHorizontalSpacing(0);
    grid_->setVerticalSpacing(4);
    grid_->setColumnStretch(0, 1);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(disclosure_, 0, Qt::AlignLeft);
    layout->addWidget(table_);
    setExpanded(false);
    connect(disclosure_, &QAbstractButton::toggled, this, [this](bool expanded) {
        setExpanded(expanded);
        Q_EMIT resized();
    });
}

void DailySummaryView::setExpanded(bool expanded) {
    if (expanded)
        fillTable();
    table_->setVisible(expanded);
    setAccessibleExpanded(*disclosure_, expanded);
}

void DailySummaryView::setCell(int row, int column, const QString& text, const QString& spoken,
                               const QPalette& palette) {
    const QString name = QStringLiteral("dailySummary.%1.%2")
                             .arg(row)
                             .arg(QLatin1String(columns[static_cast<std::size_t>(column)].title));
    QLayoutItem* item = grid_->itemAtPosition(row, column);
    auto* label = item != nullptr ? qobject_cast<QLabel*>(item->widget()) : nullptr;
    if (label == nullptr) {
        label = new QLabel(table_);
        label->setObjectName(name);
        label->setTextFormat(Qt::PlainText);
        label->setAlignment((column == 0 ? Qt::AlignLeading : Qt::AlignTrailing) | Qt::AlignVCenter);
        grid_->addWidget(label, row, column);
    }
    // QLabel redoes its layout for each of these, even if the value is the same.
    if (label->font() != table_->font())
        label->setFont(table_->font());
    if (label->palette().color(QPalette::WindowText) != palette.color(QPalette::WindowText))
        label->setPalette(palette);
    if (label->text() != text)
        label->setText(text);
    if (label->accessibleName() != spoken)
        label->setAccessibleName(spoken);
    label->setVisible(true);
}

void DailySummaryView::setContent(bool hasRows, std::function<std::vector<HistoryStore::DaySummary>()> rows,
                                  const QColor& secondary) {
    setVisible(hasRows);
    disclosure_->setFont(textFont(TextStyle::callout));
    rows_ = std::move(rows);
    secondary_ = secondary;
    if (disclosure_->isChecked())
        fillTable();
}

void DailySummaryView::fillTable() {
    table_->setFont(tableFont());
    const QFontMetrics metrics(table_->font());
    QPalette header = palette();
    header.setColor(QPalette::WindowText, secondary_);
    for (int column = 0; column < static_cast<int>(columns.size()); ++column) {
        const Column& each = columns[static_cast<std::size_t>(column)];
        grid_->setColumnMinimumWidth(column, columnWidth(each, metrics));
        setCell(0, column, QLatin1String(each.title), QLatin1String(each.title), header);
    }
    const std::vector<HistoryStore::DaySummary> rows = rows_ ? rows_() : std::vector<HistoryStore::DaySummary>();
    const int count = static_cast<int>(rows.size());
    for (int i = 0; i < count; ++i) {
        const HistoryStore::DaySummary& row = rows[static_cast<std::size_t>(i)];
        const SummaryCells cells = summaryCells(row);
        const QString day = dayText(row.day);
        const std::array texts{day, QString::fromStdString(cells.average), QString::fromStdString(cells.range),
                               QString::fromStdString(cells.charging)};
        for (int column = 0; column < static_cast<int>(columns.size()); ++column) {
            // Screen readers get the day and column too: a number alone says little.
            const QString& text = texts[static_cast<std::size_t>(column)];
            const QString title = QLatin1String(columns[static_cast<std::size_t>(column)].title);
            setCell(i + 1, column, text,
                    column == 0 ? day : day + QLatin1String(", ") + title + QLatin1String(": ") + text, palette());
        }
    }
    for (int row = count + 1; row < grid_->rowCount(); ++row) {
        for (int column = 0; column < static_cast<int>(columns.size()); ++column)
            if (QLayoutItem* item = grid_->itemAtPosition(row, column))
                item->widget()->setVisible(false);
    }
}
