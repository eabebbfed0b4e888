// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/style/ViewStyle.h"

#include <QBrush>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

namespace {

/// The scale of a screen.
class TallShape : public testing::TestWithParam<double> {
protected:
    template <class Draw>
    static QImage picture(Draw draw) {
        QImage image(QSize(400, 640) * 2, QImage::Format_ARGB32_Premultiplied);
        image.fill(QColor(120, 160, 200));
        QPainter painter(&image);
        painter.scale(GetParam(), GetParam());
        painter.translate(24, 24);
        draw(painter);
        return image;
    }
    /// The largest difference of a pixel's colour, of 255.
    static int difference(const QImage& one, const QImage& other) {
        int most = 0;
        for (int y = 0; y < one.height(); ++y) {
            for (int x = 0; x < one.width(); ++x) {
                const QColor a = one.pixelColor(x, y);
                const QColor b = other.pixelColor(x, y);
                most = std::max({most, std::abs(a.red() - b.red()), std::abs(a.green() - b.green()),
                                 std::abs(a.blue() - b.blue())});
            }
        }
        return most;
    }
};

} // namespace

TEST_P(TallShape, HasTheOutlineOfOneThatIsDrawnAtOnce) {
    struct Case {
        double radius;
        QBrush filling;
        QColor line;
    };
    const double thickness = 1 / GetParam();
    for (const Case& of :
         {Case{0, Qt::NoBrush, QColor(0, 0, 0, 60)}, Case{cardRadius, Qt::NoBrush, QColor(0, 0, 0, 60)},
          Case{controlRadius, Qt::white, QColor(200, 200, 200)}}) {
        for (const int height : {20, 520}) {
            const QRectF shape(0, 0, 340, height);
            const QImage parts = picture([&](QPainter& painter) {
                painter.setBrush(of.filling);
                drawOutline(painter, shape, of.radius, of.line);
            });
            const QImage whole = picture([&](QPainter& painter) {
                const double half = thickness / 2;
                const double inner = std::max(0.0, of.radius - half);
                painter.setBrush(of.filling);
                painter.setPen(QPen(of.line, thickness));
                painter.setRenderHint(QPainter::Antialiasing, of.radius > 0);
                painter.drawRoundedRect(onDevicePixels(painter, shape).adjusted(half, half, -half, -half), inner,
                                        inner);
            });
            EXPECT_LE(difference(parts, whole), 2) << of.radius << ", " << height;
        }
    }
}

TEST_P(TallShape, HasAShadowThatIsTheSameOnBothSides) {
    const double scale = GetParam();
    const QRectF card(0, 0, 340, 520);
    QRect place;
    const QImage image = picture([&](QPainter& painter) {
        drawFloatingCard(painter, card, QGuiApplication::palette());
        place = painter.deviceTransform().mapRect(onDevicePixels(painter, card)).toRect();
    });
    const int middle = place.center().y();
    const int reach = static_cast<int>(cardShadow * scale);
    EXPECT_NE(image.pixelColor(place.left() - 1, middle), image.pixelColor(0, 0));
    for (int i = 1; i <= reach; ++i) {
        const QColor left = image.pixelColor(place.left() - i, middle);
        EXPECT_LE(std::abs(left.red() - image.pixelColor(place.right() + i, middle).red()), 1) << i;
        EXPECT_EQ(left, image.pixelColor(place.left() - i, middle + 100)) << i;
        EXPECT_LE(left.red(), image.pixelColor(place.left() - i - 1, middle).red()) << i << ", darker nearer to it";
    }
    EXPECT_EQ(image.pixelColor(place.left() - reach - 2, middle), image.pixelColor(0, 0));
}

INSTANTIATE_TEST_SUITE_P(Scales, TallShape, testing::Values(1, 1.1, 1.25, 1.5, 1.75, 2));
