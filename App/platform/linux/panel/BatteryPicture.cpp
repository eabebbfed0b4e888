// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/panel/BatteryPicture.h"

#include <QPainter>

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>
#include <vector>

namespace {

using Sign = BatteryPicture::Sign;

/// A battery on its own power that is emptier is low; the plain glyph is the empty battery then.
constexpr int lowPercent = 13;

// The contrast between the first two is 16 to 1, and each of the others has at least 4.5 to 1 to the tile.
constexpr QRgb tile = 0xFFF6F6F6;
constexpr QRgb ink = 0xFF1A1A1A;
constexpr QRgb grey = 0xFF555555;
constexpr QRgb red = 0xFFC01C1C;
constexpr QRgb green = 0xFF1F7A33;

constexpr std::array<std::pair<std::string_view, Sign>, 4> meanings{
    {{"level", Sign::None}, {"bolt", Sign::Bolt}, {"plug", Sign::Plug}, {"full", Sign::Tick}}};

struct Plain {
    std::string_view symbol;
    std::optional<int> percent;
    Sign sign;
};

constexpr std::array plain{
    Plain{"battery.0", 0, Sign::Low},      Plain{"battery.25", 25, Sign::None},
    Plain{"battery.50", 50, Sign::None},   Plain{"battery.75", 75, Sign::None},
    Plain{"battery.100", 100, Sign::None}, Plain{"battery.100.bolt", {}, Sign::Bolt},
    Plain{"bolt.fill", {}, Sign::Bolt},    Plain{"powerplug.fill", {}, Sign::Plug},
    Plain{"powerplug", {}, Sign::Plug},    Plain{"battery.100percent", 100, Sign::Tick},
};

std::vector<std::string_view> parts(std::string_view symbol) {
    std::vector<std::string_view> result;
    for (std::size_t dot = 0; dot != std::string_view::npos;) {
        dot = symbol.find('.');
        result.push_back(symbol.substr(0, dot));
        symbol.remove_prefix(dot == std::string_view::npos ? symbol.size() : dot + 1);
    }
    return result;
}

std::optional<int> percentage(std::string_view text) {
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool isOne = error == std::errc() && end == text.data() + text.size() && value >= 0 && value <= 100;
    return isOne ? std::optional(value) : std::nullopt;
}

QRgb levelColour(Sign sign) {
    switch (sign) {
    case Sign::None:
    case Sign::Plug:
        return grey;
    case Sign::Low:
        return red;
    case Sign::Bolt:
    case Sign::Tick:
        return green;
    }
    return grey;
}

/// An exclamation mark, in a square box.
void drawMark(QPainter& painter, const QRect& box) {
    const int width = std::max(2, box.width() / 4);
    const int dot = std::max(1, box.height() / 4);
    const int x = box.x() + (box.width() - width) / 2;
    painter.fillRect(x, box.y(), width, box.height() - dot - (dot + 1) / 2, QColor(red));
    painter.fillRect(x, box.bottom() + 1 - dot, width, dot, QColor(red));
}

/// Two pins, a body that gets narrower, and a cable, in a square box.
void drawPlug(QPainter& painter, const QRect& box) {
    const int size = box.width();
    const int fifth = size / 5;
    const int third = (size + 2) / 3;
    const int pins = size / 3;
    const int cable = std::max(1, size / 8) + (size + std::max(1, size / 8)) % 2; // in the middle
    const auto fill = [&](int x, int y, int width, int height) {
        painter.fillRect(box.x() + x, box.y() + y, width, height, QColor(ink));
    };
    fill(fifth, 0, fifth, pins);
    fill(size - 2 * fifth, 0, fifth, pins);
    fill(0, pins, size, third);
    fill(fifth, pins + third, size - 2 * fifth, fifth);
    fill((size - cable) / 2, pins, cable, size - pins);
}

void drawShape(QPainter& painter, const QPolygonF& shape, const QRect& box, QRgb colour) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, box.width() >= 12); // would only blur a smaller one
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(colour));
    painter.translate(box.topLeft());
    painter.scale(box.width() / 6.0, box.height() / 6.0);
    painter.drawPolygon(shape);
    painter.restore();
}

void drawSign(QPainter& painter, Sign sign, const QRect& box, QRgb colour) {
    switch (sign) {
    case Sign::None:
        break;
    case Sign::Low:
        drawMark(painter, box);
        break;
    case Sign::Bolt:
        drawShape(painter, {{{2.5, 0}, {5.1, 0}, {3.8, 2.1}, {5.6, 2.1}, {1.5, 6}, {1.3, 6}, {2.4, 3.5}, {0.7, 3.5}}},
                  box, colour);
        break;
    case Sign::Plug:
        drawPlug(painter, box);
        break;
    case Sign::Tick:
        drawShape(painter, {{{0, 3.4}, {1.1, 2.2}, {2.3, 3.4}, {4.9, 0.4}, {6, 1.5}, {2.3, 5.7}}}, box, colour);
        break;
    }
}

/// A battery with its contact at the right end and the level inside.
void drawBattery(QPainter& painter, const QRect& box, int wall, const BatteryPicture& picture) {
    const QRect body = box.adjusted(0, 0, -wall, 0);
    const int third = box.height() / 3;
    painter.fillRect(QRect(body.right() + 1, box.y() + third, wall, box.height() - 2 * third), QColor(ink));
    painter.fillRect(body, QColor(ink));
    QRect inside = body.adjusted(wall, wall, -wall, -wall);
    painter.fillRect(inside, QColor(tile));
    const int percent = picture.percent.value_or(0);
    if (percent <= 0)
        return;
    // Only 100 leaves no gap, and only 0 is empty.
    const int room = inside.width();
    const int filled = percent >= 100 ? room : std::clamp((percent * room + 50) / 100, 1, room - 1);
    inside.setWidth(filled);
    painter.fillRect(inside, QColor(levelColour(picture.sign)));
}

/// Digits of straight strokes on whole pixels, which are sharp in every size. `stroke` is how wide the upright ones
/// are, and how high the others.
void drawCharacter(QPainter& painter, char character, const QRect& cell, QSize stroke) {
    const auto fill = [&](int x, int y, int width, int height) {
        painter.fillRect(cell.x() + x, cell.y() + y, width, height, QColor(ink));
    };
    const int middle = (cell.height() - stroke.height()) / 2;
    if (character == ':') {
        fill(0, middle / 2, cell.width(), cell.width());
        fill(0, cell.height() - middle / 2 - cell.width(), cell.width(), cell.width());
        return;
    }
    if (character == '1') { // in the middle of its cell, with a flag
        const int stem = std::min(stroke.width(), cell.width());
        const int left = (cell.width() - stem) / 2;
        fill(left, 0, stem, cell.height());
        fill(left - std::min(left, stem), stroke.height(), std::min(left, stem), stroke.height());
        return;
    }
    // As on a clock, a bit each for: top, upper right, lower right, bottom, lower left, upper left, middle.
    constexpr std::array<unsigned, 10> digits{0x3F, 0x06, 0x5B, 0x4F, 0x66, 0x6D, 0x7D, 0x07, 0x7F, 0x6F};
    constexpr unsigned letterH = 0x74;
    const bool isDigit = character >= '0' && character <= '9';
    const unsigned drawn = isDigit ? digits[static_cast<std::size_t>(character - '0')] : letterH;
    const int right = cell.width() - stroke.width();
    const int upper = middle + stroke.height();
    const int lower = cell.height() - middle;
    const std::array<QRect, 7> places{
        QRect(0, 0, cell.width(), stroke.height()),
        QRect(right, 0, stroke.width(), upper),
        QRect(right, middle, stroke.width(), lower),
        QRect(0, cell.height() - stroke.height(), cell.width(), stroke.height()),
        QRect(0, middle, stroke.width(), lower),
        QRect(0, 0, stroke.width(), upper),
        QRect(0, middle, cell.width(), stroke.height()),
    };
    for (std::size_t place = 0; place < places.size(); ++place) {
        if ((drawn >> place & 1U) != 0)
            fill(places[place].x(), places[place].y(), places[place].width(), places[place].height());
    }
    // Between so narrow strokes the middle one is a single pixel; without corners, 0 cannot be taken for 8.
    if (character == '0' && cell.width() == 3) {
        for (const QPoint corner : {cell.topLeft(), cell.topRight(), cell.bottomLeft(), cell.bottomRight()})
            painter.fillRect(QRect(corner, QSize(1, 1)), QColor(tile));
    }
}

/// The text as digits; without the minutes where the digits would be too narrow to read: "12h" for "12:05".
void drawText(QPainter& painter, const std::string& text, const QRect& box) {
    const int count = static_cast<int>(text.size());
    const int space = std::max(1, box.width() / (count > 2 ? 20 : 10));
    const int thin = std::max(1, box.width() / 9);
    // There is no room for a whole cell for the 1 of 100.
    const auto isThin = [&](std::size_t i) { return text[i] == ':' || (i == 0 && count == 3 && text[i] == '1'); };
    int thinOnes = 0;
    for (std::size_t i = 0; i < text.size(); ++i)
        thinOnes += isThin(i) ? 1 : 0;
    // A single digit is as wide as one of two.
    const int digit =
        (box.width() - thinOnes * thin - (std::max(2, count) - 1) * space) / std::max(2, count - thinOnes);
    constexpr int narrowest = 3;
    if (const std::size_t colon = text.find(':'); digit < narrowest && colon != std::string::npos) {
        drawText(painter, text.substr(0, colon) + "h", box);
        return;
    }
    const QSize stroke(std::max(1, digit / 3), std::max(1, box.height() / 5));
    const int width = thinOnes * thin + (count - thinOnes) * digit + (count - 1) * space;
    int x = box.x() + (box.width() - width) / 2;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const int cell = isThin(i) ? thin : digit;
        drawCharacter(painter, text[i], {x, box.y(), cell, box.height()}, stroke);
        x += cell + space;
    }
}

void drawTile(QPainter& painter, const QRect& box, int corner) {
    painter.fillRect(box.adjusted(corner, 0, -corner, 0), QColor(tile));
    painter.fillRect(box.adjusted(0, corner, 0, -corner), QColor(tile));
}

} // namespace

std::optional<BatteryPicture> batteryPicture(std::string_view symbol) {
    for (const Plain& one : plain) {
        if (one.symbol == symbol)
            return BatteryPicture{.text = "", .percent = one.percent, .sign = one.sign};
    }
    std::vector<std::string_view> names = parts(symbol);
    const bool isTime = names.size() == 4 && names[0] == "time" && !names[1].empty() &&
                        names[1].find_first_not_of("0123456789:h") == std::string_view::npos;
    if (!isTime && !(names.size() == 3 && names[0] == "percent"))
        return std::nullopt;
    const std::optional<int> percent = percentage(names[names.size() - 2]);
    const auto* meaning =
        std::find_if(meanings.begin(), meanings.end(), [&](const auto& known) { return known.first == names.back(); });
    if (!percent || meaning == meanings.end())
        return std::nullopt;
    const bool isLow = meaning->second == Sign::None && *percent < lowPercent;
    return BatteryPicture{
        .text = std::string(names[1]), .percent = percent, .sign = isLow ? Sign::Low : meaning->second};
}

QImage draw(const BatteryPicture& picture, int size) {
    // With most other formats Qt starts threads to fill paths, even in so small an image.
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    const int wall = std::max(1, size / 22);
    const QRect whole(0, 0, size, size);
    const QRect room = whole.adjusted(wall, wall, -wall, -wall);
    if (picture.text.empty()) {
        const int height = room.width() * 3 / 4 | 1;
        const QRect battery(room.x(), (size - height) / 2, room.width(), height);
        drawTile(painter, battery.adjusted(-wall, -wall, wall, wall), wall);
        drawBattery(painter, battery, wall, picture);
        const int inside = height - 4 * wall;
        const QRect sign(battery.x() + (battery.width() - wall - inside) / 2, battery.y() + 2 * wall, inside, inside);
        drawSign(painter, picture.sign, sign, picture.sign == Sign::Tick ? tile : ink);
        return image;
    }
    drawTile(painter, whole, wall);
    const int lower = (2 * room.height() + 2) / 5;
    QRect battery(room.x(), room.bottom() + 1 - lower, room.width(), lower);
    drawText(painter, picture.text, {room.x(), room.y(), room.width(), room.height() - lower - wall});
    if (picture.sign != Sign::None) {
        drawSign(painter, picture.sign, {battery.right() + 1 - lower, battery.y(), lower, lower}, ink);
        battery.setWidth(battery.width() - lower - wall);
    }
    drawBattery(painter, battery, wall, picture);
    return image;
}
