// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/popover/RingView.h"

#include <QImage>
#include <QPixmap>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <vector>

namespace {

const QColor arc(200, 0, 0);
const QColor track(0, 0, 200);

/// The picture of the ring for a charge.
class DrawnRing {
public:
    explicit DrawnRing(std::int64_t percent) {
        RingView ring;
        ring.setContent(percent, arc, track);
        image = ring.grab().toImage();
    }

    /// The colour at an angle clockwise from the top and a distance from the centre, by default in the middle of the
    /// line.
    QColor at(double degrees, double radius = 46) const {
        const double angle = degrees / 180 * 3.14159265358979;
        return image.pixelColor(static_cast<int>(52 + radius * std::sin(angle)),
                                static_cast<int>(52 - radius * std::cos(angle)));
    }

    QImage image;
};

} // namespace

TEST(RingView, FillsClockwiseFromTheTop) {
    const DrawnRing quarter(25);
    for (const double degrees : {0, 5, 45, 85, 90})
        EXPECT_EQ(quarter.at(degrees), arc) << degrees;
    for (const double degrees : {102, 135, 180, 270, 315, 348})
        EXPECT_EQ(quarter.at(degrees), track) << degrees;
    const DrawnRing most(75);
    for (const double degrees : {45, 180, 265})
        EXPECT_EQ(most.at(degrees), arc) << degrees;
    EXPECT_EQ(most.at(315), track);
}

TEST(RingView, HasRoundEnds) {
    const DrawnRing quarter(25);
    for (const double degrees : {-5, 95}) {
        EXPECT_EQ(quarter.at(degrees), arc) << degrees;
        EXPECT_NE(quarter.at(degrees, 50), arc) << degrees;
        EXPECT_NE(quarter.at(degrees, 42), arc) << degrees;
    }
}

TEST(RingView, IsAllTrackWhenEmptyAndAllArcWhenFull) {
    const DrawnRing empty(0);
    const DrawnRing full(100);
    for (int degrees = 0; degrees < 360; degrees += 15) {
        EXPECT_EQ(empty.at(degrees), track) << degrees;
        EXPECT_EQ(full.at(degrees), arc) << degrees;
    }
}

TEST(RingView, IsAsWideAsItsLineInTheMiddleOfItsFrame) {
    const DrawnRing empty(0);
    ASSERT_EQ(empty.image.size(), QSize(104, 104));
    const QColor outside = empty.image.pixelColor(0, 0);
    for (const double degrees : {90, 180, 270, 360}) {
        for (const double radius : {42, 46, 50})
            EXPECT_EQ(empty.at(degrees, radius), track) << degrees << ' ' << radius;
        EXPECT_EQ(empty.at(degrees, 38), outside) << degrees;
    }
}

TEST(RingView, SaysThePercentage) {
    EXPECT_NE(DrawnRing(100).image, DrawnRing(120).image) << "the same line, and other digits";
    EXPECT_EQ(DrawnRing(100).image, DrawnRing(100).image);
}
