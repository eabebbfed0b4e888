// SPDX-License-Identifier: GPL-3.0-or-later
#include "gallery/Geometry.h"

#include "gallery/Pictures.h"
#include "support/Contrast.h"
#include "views/style/ViewStyle.h"

#include <QAbstractButton>
#include <QAbstractSpinBox>
#include <QComboBox>
#include <QHash>
#include <QLabel>
#include <QLayout>
#include <QWidget>

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace {

/// The window, with what is seen in it.
struct Scene {
    const QWidget& window;
    const QImage& picture;
    const QString& file;

    QRect box(const QWidget& widget) const { return {widget.mapTo(&window, QPoint()), widget.size()}; }
    [[noreturn]] void failAt(const QString& why, const QWidget& widget) const {
        const auto* label = qobject_cast<const QLabel*>(&widget);
        const auto* button = qobject_cast<const QAbstractButton*>(&widget);
        const QString text = label != nullptr ? label->text() : button != nullptr ? button->text() : QString();
        fail(qPrintable(why + QStringLiteral(": %1 \"%2\"").arg(widget.objectName(), text)), file);
    }
};

bool isNamed(const QWidget& widget, std::initializer_list<const char*> names) {
    return std::any_of(names.begin(), names.end(),
                       [&](const char* name) { return widget.objectName() == QLatin1String(name); });
}

/// What is drawn as one and touches nothing else: every text, every control, every picture.
std::vector<const QWidget*> pieces(const QWidget& content) {
    std::vector<const QWidget*> found;
    for (const QObject* each : content.children()) {
        const auto* widget = qobject_cast<const QWidget*>(each);
        if (widget == nullptr || !widget->isVisible())
            continue;
        const auto* label = qobject_cast<const QLabel*>(widget);
        const bool isPiece = label != nullptr ? !label->text().isEmpty() || !label->pixmap().isNull()
                                              : qobject_cast<const QAbstractButton*>(widget) != nullptr ||
                                                    qobject_cast<const QAbstractSpinBox*>(widget) != nullptr ||
                                                    qobject_cast<const QComboBox*>(widget) != nullptr ||
                                                    isNamed(*widget, {"ring", "cycleBar", "historyChart"});
        if (isPiece) {
            found.push_back(widget);
        } else if (label == nullptr) {
            const auto inside = pieces(*widget);
            found.insert(found.end(), inside.begin(), inside.end());
        }
    }
    return found;
}

void checkThatNothingIsCutOff(const Scene& scene, const QWidget& piece) {
    if (const auto* label = qobject_cast<const QLabel*>(&piece)) {
        const int needed = label->wordWrap() ? label->heightForWidth(label->width()) : label->sizeHint().height();
        const int width = label->wordWrap() ? label->minimumSizeHint().width() : label->sizeHint().width();
        if (label->height() < needed || label->width() < width)
            scene.failAt(QStringLiteral("it is cut off"), piece);
    } else if (const auto* button = qobject_cast<const QAbstractButton*>(&piece);
               button != nullptr && !button->text().isEmpty()) {
        const QSize text = button->fontMetrics().size(Qt::TextSingleLine, button->text());
        if (button->width() < text.width() || button->height() < text.height())
            scene.failAt(QStringLiteral("it is cut off"), piece);
    } else if (piece.width() < piece.minimumSizeHint().width() || piece.height() < piece.minimumSizeHint().height()) {
        scene.failAt(QStringLiteral("it is cut off"), piece);
    }
}

void checkThatNothingOverlaps(const Scene& scene, const std::vector<const QWidget*>& all) {
    for (std::size_t i = 0; i < all.size(); ++i) {
        for (std::size_t k = i + 1; k < all.size(); ++k) {
            if (scene.box(*all[i]).intersects(scene.box(*all[k])))
                scene.failAt(QStringLiteral("it overlaps ") + all[k]->objectName(), *all[i]);
        }
    }
}

/// The contrast of a text: of the colour of most pixels, and of the one that differs most from it. Thin strokes of
/// small letters do not reach their full colour.
double textContrast(const Scene& scene, const QWidget& piece) {
    const qreal scale = scene.picture.devicePixelRatio();
    const QRect place = QRectF(QPointF(scene.box(piece).topLeft()) * scale, QSizeF(piece.size()) * scale).toRect() &
                        scene.picture.rect();
    QHash<QRgb, int> counts;
    for (int y = place.top(); y <= place.bottom(); ++y)
        forEachRun(scene.picture, y, place.left(), place.right() + 1,
                   [&](QRgb colour, int length) { counts[colour] += length; });
    QRgb background = 0;
    int most = 0;
    for (auto each = counts.cbegin(); each != counts.cend(); ++each) {
        if (each.value() > most) {
            background = each.key();
            most = each.value();
        }
    }
    double best = 1;
    for (auto each = counts.cbegin(); each != counts.cend(); ++each)
        best = std::max(best, contrast(each.key(), background));
    return best;
}

void checkThatItCanBeRead(const Scene& scene, const QWidget& piece) {
    constexpr double least = 4.5 * 0.95; // of the guidelines, and what thin strokes lose
    const auto* button = qobject_cast<const QAbstractButton*>(&piece);
    const bool isText =
        qobject_cast<const QLabel*>(&piece) != nullptr || (button != nullptr && !button->text().isEmpty());
    const bool isInSight = scene.window.rect().contains(scene.box(piece));
    if (!isText || !piece.isEnabled() || !isInSight)
        return;
    if (const double found = textContrast(scene, piece); found < least)
        scene.failAt(QStringLiteral("its contrast is ") + QString::number(found), piece);
}

/// A hairline is one row of device pixels of its own colour, whatever the scale.
void checkHairline(const Scene& scene, const QWidget& line) {
    const qreal scale = scene.picture.devicePixelRatio();
    const QRectF place(QPointF(scene.box(line).topLeft()) * scale, QSizeF(line.size()) * scale);
    const int x = static_cast<int>(place.center().x());
    const QRgb background = scene.picture.pixel(x, static_cast<int>(place.top()) - 4);
    int rows = 0;
    for (int y = static_cast<int>(place.top()) - 3; y < place.bottom() + 3; ++y)
        rows += scene.picture.pixel(x, y) == hairlineColor(line.palette()).rgb() ? 1 : 0;
    if (rows != 1 || background == hairlineColor(line.palette()).rgb())
        scene.failAt(QStringLiteral("it is drawn in %1 rows").arg(rows), line);
}

/// Where the text of a label that takes one line stands; -1 for more lines.
int baseline(const Scene& scene, const QLabel& label) {
    const QFontMetrics metrics = label.fontMetrics();
    const int height = label.heightForWidth(label.width());
    if (height > metrics.height() * 3 / 2)
        return -1;
    return scene.box(label).top() + (label.height() - metrics.height()) / 2 + metrics.ascent();
}

void checkBaselines(const Scene& scene, const QWidget& content, const char* row, const char* label, const char* value) {
    for (const auto* each : content.findChildren<QWidget*>(QLatin1String(row))) {
        const auto* one = each->findChild<QLabel*>(QLatin1String(label));
        const auto* other = each->findChild<QLabel*>(QLatin1String(value));
        if (!each->isVisible() || one == nullptr || other == nullptr)
            continue;
        const int first = baseline(scene, *one);
        const int second = baseline(scene, *other);
        if (first >= 0 && second >= 0 && first != second)
            scene.failAt(QStringLiteral("its baseline is not the label's"), *other);
    }
}

void checkSize(const Scene& scene, const char* name, QSize wanted) {
    const auto* widget = scene.window.findChild<QWidget*>(QLatin1String(name));
    if (widget != nullptr && widget->isVisible() && widget->size() != wanted)
        scene.failAt(QStringLiteral("it is not of its size"), *widget);
}

} // namespace

void checkPopover(const QWidget& popover, const QWidget& content, const QImage& picture, const QString& file) {
    const Scene scene{popover, picture, file};
    const auto all = pieces(content);
    const QRect column =
        scene.box(content).marginsRemoved({popoverPadding, popoverPadding, popoverPadding, popoverPadding});
    if (content.width() != popoverWidth)
        scene.failAt(QStringLiteral("it is not as wide as it is to be"), content);
    checkThatNothingOverlaps(scene, all);
    for (const QWidget* piece : all) {
        const QRect box = scene.box(*piece);
        if (!column.contains(box))
            scene.failAt(QStringLiteral("it reaches into the padding"), *piece);
        if (box.left() != column.left() &&
            isNamed(*piece, {"cycleLabel", "cycleBar", "detailLabel", "historyChart", "dailySummaryDisclosure", "note",
                             "settingsButton", "ring"}))
            scene.failAt(QStringLiteral("it does not begin at the left edge"), *piece);
        if (box.right() != column.right() &&
            isNamed(*piece, {"cycleValue", "cycleBar", "detailValue", "historyChart", "note", "quitButton"}))
            scene.failAt(QStringLiteral("it does not end at the right edge"), *piece);
        checkThatNothingIsCutOff(scene, *piece);
        checkThatItCanBeRead(scene, *piece);
    }
    checkBaselines(scene, content, "detailRow", "detailLabel", "detailValue");
    checkBaselines(scene, content, "cycleRow", "cycleLabel", "cycleValue");
    checkBaselines(scene, content, "dailySummaryTable", "dailySummary.0.Day", "dailySummary.0.Charging");
    checkHairline(scene, *content.findChild<QWidget*>(QStringLiteral("divider")));
    checkSize(scene, "ring", {104, 104});
    checkSize(scene, "historyChart", {column.width(), 110});
    checkSize(scene, "rangePicker",
              {column.width(), content.findChild<QWidget*>(QStringLiteral("rangePicker"))->height()});
    for (const auto& [name, width] : {std::pair("Avg", 38), std::pair("Range", 68), std::pair("Charging", 62)}) {
        const auto* cell = content.findChild<QWidget*>(QStringLiteral("dailySummary.0.") + QLatin1String(name));
        if (cell != nullptr && cell->isVisible() && cell->width() < width)
            scene.failAt(QStringLiteral("its column is too narrow"), *cell);
    }
    constexpr int spacing = 14;
    int above = -1;
    const QWidget& battery = *content.findChild<QWidget*>(QStringLiteral("battery"));
    for (int i = 0; battery.isVisible() && i < battery.layout()->count(); ++i) {
        const QWidget* row = battery.layout()->itemAt(i)->widget();
        if (row == nullptr || !row->isVisible())
            continue;
        if (above >= 0 && row->y() - above != spacing)
            scene.failAt(QStringLiteral("it stands %1 below what is above").arg(row->y() - above), *row);
        above = row->y() + row->height();
    }
}

void checkSettings(const QWidget& window, const QWidget& form, const QImage& picture, const QString& file) {
    const Scene scene{window, picture, file};
    const auto all = pieces(form);
    checkThatNothingOverlaps(scene, all);
    for (const QWidget* piece : all) {
        const QRect box(piece->mapTo(&form, QPoint()), piece->size());
        if (!form.rect().contains(box))
            scene.failAt(QStringLiteral("it leaves the form"), *piece);
        checkThatNothingIsCutOff(scene, *piece);
        checkThatItCanBeRead(scene, *piece);
    }
    int rightEdge = -1;
    for (const auto* row : form.findChildren<QWidget*>(QStringLiteral("row"))) {
        if (!row->isVisible())
            continue; // a card that only some machines need
        const QLayout* line = row->layout();
        const QWidget* label = line->itemAt(0)->widget();
        const QWidget* control = line->itemAt(1)->widget();
        if (std::abs(label->geometry().center().y() - control->geometry().center().y()) > 1)
            scene.failAt(QStringLiteral("it is not level with its label"), *control);
        // Switches draw a ring around themselves, for which they have room.
        const int right =
            control->mapTo(&form, QPoint(control->width() - control->property("roomAround").toInt(), 0)).x();
        if (rightEdge >= 0 && right != rightEdge)
            scene.failAt(QStringLiteral("it does not end at the right edge"), *control);
        rightEdge = right;
    }
}
