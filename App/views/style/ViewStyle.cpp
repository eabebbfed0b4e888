// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/style/ViewStyle.h"

#include <QFontMetrics>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QTextLayout>

#include <algorithm>
#include <array>
#include <cmath>

namespace {

/// Relative to the size of the desktop's font.
double relativeSize(TextStyle style) {
    switch (style) {
    case TextStyle::body:
    case TextStyle::headline:
        return 1;
    case TextStyle::callout:
        return 0.95;
    case TextStyle::caption:
        return 0.88;
    case TextStyle::caption2:
        return 0.8;
    }
    return 1;
}

double luminance(const QColor& color) {
    const auto linear = [](double channel) {
        return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

double leastContrast(const QPalette& palette, Use use) {
    if (hasHighContrast(palette))
        return use == Use::text ? 7 : 4.5;
    return use == Use::text ? 4.5 : 3;
}

/// The colour itself, or the closest one with that contrast to the background.
QColor readable(const QColor& color, const QColor& background, double leastContrast) {
    const QColor away = luminance(background) > 0.18 ? Qt::black : Qt::white;
    QColor found = color;
    for (double share = 0.97; contrast(found, background) < leastContrast && share >= 0; share -= 0.03)
        found = mixed(color, away, share);
    return QColor(found.rgb());
}

QColor wanted(Tint tint, const QPalette& palette) {
    switch (tint) {
    case Tint::primary:
        return palette.color(QPalette::WindowText);
    case Tint::secondary:
        return mixed(palette.color(QPalette::WindowText), palette.color(QPalette::Window), 0.65);
    case Tint::accent:
        return palette.color(QPalette::Highlight);
    case Tint::green:
        return {0x2e, 0xb8, 0x50};
    case Tint::orange:
        return {0xf5, 0x8a, 0x07};
    case Tint::red:
        return {0xf0, 0x3c, 0x32};
    case Tint::yellow:
        return {0xf2, 0xc0, 0x0c};
    }
    return {};
}

/// The shadow is a little lower than its card.
constexpr int shadowDrop = 4;

/// A shadow's darkness from `inside` pixels within its card's outline to where it ends: that of an edge which has been
/// blurred.
QGradientStops shadowStops(double inside) {
    constexpr double darkest = 0.34;
    constexpr double reach = cardShadow - shadowDrop;
    constexpr int count = 16;
    const double scale = std::sqrt(2.0) * reach / 2.5; // the darkness is below 1 % there
    QGradientStops stops;
    for (int i = 0; i <= count; ++i) {
        const double distance = (inside + reach) * i / count - inside;
        stops.append({static_cast<double>(i) / count,
                      QColor::fromRgbF(0, 0, 0, static_cast<float>(darkest * std::erfc(distance / scale) / 2))});
    }
    stops.back().second.setAlpha(0);
    return stops;
}

/// From the middle of each round corner and from the lines between them, outwards.
void drawShadowAround(QPainter& painter, const QRectF& card) {
    constexpr double length = cardRadius + cardShadow - shadowDrop;
    const QGradientStops stops = shadowStops(cardRadius);
    const QRectF inner = card.translated(0, shadowDrop).adjusted(cardRadius, cardRadius, -cardRadius, -cardRadius);
    const auto corner = [&](QPointF middle, double x, double y) {
        QRadialGradient gradient(middle, length);
        gradient.setStops(stops);
        painter.fillRect(QRectF(middle, QSizeF(x * length, y * length)).normalized(), gradient);
    };
    const auto side = [&](QPointF from, QPointF to, QPointF outwards) {
        QLinearGradient gradient(from, from + outwards * length);
        gradient.setStops(stops);
        painter.fillRect(QRectF(from, to + outwards * length).normalized(), gradient);
    };
    corner(inner.topLeft(), -1, -1);
    corner(inner.topRight(), 1, -1);
    corner(inner.bottomLeft(), -1, 1);
    corner(inner.bottomRight(), 1, 1);
    side(inner.topLeft(), inner.topRight(), {0, -1});
    side(inner.bottomLeft(), inner.bottomRight(), {0, 1});
    side(inner.topLeft(), inner.bottomLeft(), {-1, 0});
    side(inner.topRight(), inner.bottomRight(), {1, 0});
}

/// Qt paints a shape of more than about a hundred rows of pixels on several threads, and waking them takes longer than
/// the painting. Tall shapes are drawn in parts of so many rows, or stretched.
constexpr int rowsOfAPart = 64;

/// Calls `draw` twice, clipped to the upper and to the lower end of a shape.
template <class Draw>
void drawEnds(QPainter& painter, const QRectF& place, double height, Draw draw) {
    for (const double top : {place.top(), place.bottom() - height}) {
        painter.save();
        painter.setClipRect(QRectF(place.left(), top, place.width(), height), Qt::IntersectClip);
        draw();
        painter.restore();
    }
}

/// How high an end with round corners is: whole device pixels, of which `thickness` is one, but at most half the shape.
double heightOfEnd(const QRectF& place, double radius, double thickness) {
    return std::min(std::max(1.0, std::ceil(radius / thickness)) * thickness, place.height() / 2);
}

/// Draws the shadow of a small card and stretches its sides.
void drawShadow(QPainter& painter, const QRectF& card) {
    const QTransform toDevice = painter.deviceTransform();
    const double scale = toDevice.m22();
    const QRect place = toDevice.mapRect(onDevicePixels(painter, card)).toRect();
    const int outside = static_cast<int>(std::ceil(cardShadow * scale));
    const int inside = static_cast<int>(std::ceil((cardRadius + shadowDrop) * scale)); // until nothing changes any more
    const int edge = outside + inside;
    QImage small(2 * edge + 1, 2 * edge + 1, QImage::Format_ARGB32_Premultiplied);
    small.fill(Qt::transparent);
    QPainter smallPainter(&small);
    smallPainter.scale(scale, scale);
    drawShadowAround(smallPainter, smallPainter.deviceTransform().inverted().mapRect(
                                       QRectF(outside, outside, 2 * inside + 1, 2 * inside + 1)));
    smallPainter.end();
    struct Part {
        int from;
        int length;
        int place;
        int placeLength;
    };
    const auto parts = [&](int start, int length) {
        return std::array{Part{0, edge, start - outside, edge}, Part{edge, 1, start + inside, length - 2 * inside},
                          Part{edge + 1, edge, start + length - inside, edge}};
    };
    const QTransform fromDevice = toDevice.inverted();
    for (const Part& row : parts(place.top(), place.height())) {
        for (const Part& column : parts(place.left(), place.width())) {
            if (row.from == edge && column.from == edge)
                continue; // below the card
            painter.drawImage(fromDevice.mapRect(QRectF(column.place, row.place, column.placeLength, row.placeLength)),
                              small, QRectF(column.from, row.from, column.length, row.length));
        }
    }
}

/// Whether a line, but for the last one, ends with a word of one letter, as with "A", or with a number, whose unit is
/// in the next line then.
bool breaksBadly(const QString& text, const QFont& font, int width) {
    QTextLayout layout(text, font);
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(width);
        const qsizetype end = line.textStart() + line.textLength(); // with the space
        if (end < text.size() && end >= 3 && (text.at(end - 3).isSpace() || text.at(end - 2).isDigit()))
            return true;
    }
    return false;
}

} // namespace

bool hasHighContrast(const QPalette& palette) {
    constexpr double most = 20.9; // of 21, black and white exactly
    // On Qt's own palette a white card with black text is one, too, but its buttons are grey.
    const QColor window = palette.color(QPalette::Window);
    return palette.color(QPalette::Active, QPalette::Button) == window &&
           contrast(palette.color(QPalette::WindowText), window) > most;
}

QFont textFont(TextStyle style) {
    QFont font = QGuiApplication::font();
    const double size = relativeSize(style);
    if (font.pointSizeF() > 0)
        font.setPointSizeF(font.pointSizeF() * size);
    else
        font.setPixelSize(std::max(1, static_cast<int>(std::lround(font.pixelSize() * size))));
    if (style == TextStyle::headline)
        font.setBold(true);
    return font;
}

int balancedWidth(const QString& text, const QFont& font, int room) {
    const QFontMetrics metrics(font);
    const auto height = [&](int width) {
        constexpr int anyHeight = 1 << 20;
        return metrics.boundingRect(QRect(0, 0, width, anyHeight), Qt::TextWordWrap, text).height();
    };
    const int wanted = height(room);
    if (wanted <= metrics.height())
        return room;
    int tooNarrow = 0;
    int enough = room;
    while (enough - tooNarrow > 1) {
        const int middle = (tooNarrow + enough) / 2;
        (height(middle) <= wanted &&
                 metrics.boundingRect(QRect(0, 0, middle, 0), Qt::TextWordWrap, text).width() <= middle
             ? enough
             : tooNarrow) = middle;
    }
    constexpr int step = 4;
    while (enough < room && breaksBadly(text, font, enough))
        enough = std::min(room, enough + step);
    return enough;
}

QColor tintColor(Tint tint, const QPalette& palette, Use use) {
    return tintColorOn(palette.color(QPalette::Window), tint, palette, use);
}

QColor tintColorOn(const QColor& background, Tint tint, const QPalette& palette, Use use) {
    return readable(wanted(tint, palette), background, leastContrast(palette, use));
}

QColor shapeColorOn(const QColor& background, const QPalette& palette) {
    const QColor grey =
        mixed(palette.color(QPalette::Active, QPalette::WindowText), palette.color(QPalette::Window), 0.5);
    return readable(grey, background, leastContrast(palette, Use::graphics));
}

QColor cardColor(const QPalette& palette) {
    const QColor window = palette.color(QPalette::Window);
    const QColor base = palette.color(QPalette::Active, QPalette::Base);
    return luminance(base) > luminance(window) ? base : window;
}

void drawFloatingCard(QPainter& painter, const QRectF& card, const QPalette& palette) {
    drawShadow(painter, card);
    const QColor window = palette.color(QPalette::Window);
    const QRectF place = onDevicePixels(painter, card);
    const double end = heightOfEnd(place, cardRadius, 1 / painter.deviceTransform().m22());
    drawEnds(painter, place, end, [&] {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(window);
        painter.drawRoundedRect(place, cardRadius, cardRadius);
    });
    painter.fillRect(place.adjusted(0, end, 0, -end), window);
}

QColor hairlineColor(const QPalette& palette) {
    const double share = hasHighContrast(palette) ? 1 : 0.12;
    return mixed(palette.color(QPalette::Active, QPalette::WindowText), cardColor(palette), share);
}

QRectF onDevicePixels(const QPainter& painter, const QRectF& place) {
    const QTransform toDevice = painter.deviceTransform();
    const QRectF exact = toDevice.mapRect(place);
    const QPointF start(std::round(exact.left()), std::round(exact.top()));
    const QPointF end(std::round(exact.right()), std::round(exact.bottom()));
    return toDevice.inverted().mapRect(QRectF(start, end));
}

void drawOutline(QPainter& painter, const QRectF& shape, double radius, const QColor& color) {
    const double thickness = 1 / painter.deviceTransform().m22();
    const double half = thickness / 2; // a pen straddles its line
    const double inner = std::max(0.0, radius - half);
    const QRectF place = onDevicePixels(painter, shape);
    const double end = heightOfEnd(place, radius, thickness);
    drawEnds(painter, place, end, [&] {
        painter.setRenderHint(QPainter::Antialiasing, radius > 0);
        painter.setPen(QPen(color, thickness));
        painter.drawRoundedRect(place.adjusted(half, half, -half, -half), inner, inner);
    });
    const QRectF between = place.adjusted(0, end, 0, -end);
    painter.fillRect(between.adjusted(thickness, 0, -thickness, 0), painter.brush());
    const double most = rowsOfAPart * thickness;
    for (double top = between.top(); top < between.bottom(); top += most) {
        const QSizeF part(thickness, std::min(most, between.bottom() - top));
        painter.fillRect(QRectF({between.left(), top}, part), color);
        painter.fillRect(QRectF({between.right() - thickness, top}, part), color);
    }
}

void drawHairline(QPainter& painter, double left, double right, double y, const QPalette& palette) {
    const double thickness = 1 / painter.deviceTransform().m22();
    painter.fillRect(onDevicePixels(painter, {left, y, right - left, thickness}), hairlineColor(palette));
}

QColor fillColor(const QPalette& palette, Filling filling) {
    const double share = filling == Filling::rest ? 0.07 : filling == Filling::hover ? 0.12 : 0.18;
    return mixed(palette.color(QPalette::Active, QPalette::WindowText), cardColor(palette), share);
}

void drawFilling(QPainter& painter, const QRectF& place, const QPalette& palette, Filling filling, bool hasRing) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(fillColor(palette, filling));
    painter.drawRoundedRect(place, controlRadius, controlRadius);
    painter.setBrush(Qt::NoBrush);
    if (hasRing)
        painter.setPen(QPen(tintColorOn(cardColor(palette), Tint::accent, palette, Use::graphics), 2));
    else if (hasHighContrast(palette))
        painter.setPen(shapeColorOn(cardColor(palette), palette));
    const double inset = hasRing ? 1 : 0.5;
    painter.drawRoundedRect(place.adjusted(inset, inset, -inset, -inset), controlRadius - inset, controlRadius - inset);
    painter.restore();
}

QColor trackColor(const QPalette& palette) {
    return mixed(tintColor(Tint::secondary, palette), palette.color(QPalette::Window), 0.2);
}

QColor mixed(const QColor& one, const QColor& other, double share) {
    const auto mix = [share](double a, double b) { return static_cast<float>(a * share + b * (1 - share)); };
    const QColor color = QColor::fromRgbF(mix(one.redF(), other.redF()), mix(one.greenF(), other.greenF()),
                                          mix(one.blueF(), other.blueF()));
    return QColor(color.rgb()); // as it appears on the screen
}

double contrast(const QColor& one, const QColor& other) {
    const double first = luminance(one);
    const double second = luminance(other);
    return (std::max(first, second) + 0.05) / (std::min(first, second) + 0.05);
}
