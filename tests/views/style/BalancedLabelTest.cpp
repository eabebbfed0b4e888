// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/style/BalancedLabel.h"

#include "views/style/ViewStyle.h"

#include <gtest/gtest.h>

TEST(BalancedLabel, IsAsHighAsAnyLabelThatWrapsItsText) {
    BalancedLabel label({});
    QLabel plain;
    plain.setTextFormat(Qt::PlainText);
    plain.setWordWrap(true);
    label.setContentsMargins(12, 0, 12, 0);
    plain.setContentsMargins(12, 0, 12, 0);
    for (const char* text : {"", "64%", "Charging, estimating time to full…", "two\nlines", "  spaced   out  ",
                             "Velmora can only remind you. A Mac app cannot stop the charger."}) {
        for (const TextStyle style : {TextStyle::caption2, TextStyle::headline}) {
            for (QLabel* each : {static_cast<QLabel*>(&label), &plain}) {
                each->setText(QString::fromUtf8(text));
                each->setFont(textFont(style));
            }
            for (int width = 1; width < 600; width += 7)
                ASSERT_EQ(label.heightForWidth(width), plain.heightForWidth(width)) << text << ", " << width;
        }
    }
}
