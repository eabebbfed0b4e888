// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/style/ViewStyle.h"

#include <QApplication>
#include <gtest/gtest.h>

TEST(TabularFont, IsTheDesktopsOwnWhereItsDigitsAreAllAsWide) {
    const QFont font = textFont(TextStyle::caption);
    const QFont found = tabularFont(font);
    for (const char digit : {'1', '2', '3', '4', '5', '6', '7', '8', '9'})
        EXPECT_NEAR(digitWidth(found, digit), digitWidth(found, '0'), 0.01) << digit;
    EXPECT_EQ(tabularFont(found), found);
}

TEST(TabularFont, IsAnotherWhereTheyAreNot) {
    QFont font = QApplication::font();
    font.setFamilies({QStringLiteral("Proportional")});
    font.setPixelSize(28);
    font.setWeight(QFont::DemiBold);
    const auto uneven = [](const QStringList& families) {
        return [families](const QFont& each, char digit) {
            return families.contains(each.families().value(0)) && digit == '1' ? 6.0 : 9.0;
        };
    };
    const QFont other = tabularFont(font, uneven({QStringLiteral("Proportional")}));
    EXPECT_EQ(other.families(), QStringList{QStringLiteral("sans-serif")});
    EXPECT_EQ(other.pixelSize(), 28);
    EXPECT_EQ(other.weight(), QFont::DemiBold);
    const QFont last = tabularFont(font, uneven({QStringLiteral("Proportional"), QStringLiteral("sans-serif")}));
    for (const char digit : {'1', '2', '3', '4', '5', '6', '7', '8', '9'})
        EXPECT_NEAR(digitWidth(last, digit), digitWidth(last, '0'), 0.01) << "what is left is of one width";
    EXPECT_EQ(last.pixelSize(), 28);
}
