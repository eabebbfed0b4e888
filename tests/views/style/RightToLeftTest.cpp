// SPDX-License-Identifier: GPL-3.0-or-later
// Desktops of languages that are written from right to left: a mirrored layout of texts that are not.
#include "support/PopoverScene.h"
#include "views/popover/PopoverView.h"
#include "views/settings/TimeBox.h"

#include <QAbstractButton>
#include <QApplication>
#include <QLineEdit>
#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <vector>

namespace {

class RightToLeft : public testing::Test {
protected:
    PopoverScene scene;
    std::unique_ptr<PopoverView> view;

    ~RightToLeft() override { QApplication::setLayoutDirection(Qt::LeftToRight); }

    PopoverView& shown(Qt::LayoutDirection direction) {
        QApplication::setLayoutDirection(direction);
        view = std::make_unique<PopoverView>(
            scene.started(), scene.fake.platform(), [] {}, [] {});
        view->setFixedWidth(340);
        view->rebuild();
        view->show();
        return *view;
    }
    QAbstractButton& button(const char* name) { return *view->findChild<QAbstractButton*>(QLatin1String(name)); }
    static QImage picture(QWidget& widget) { return widget.grab().toImage(); }
};

} // namespace

TEST_F(RightToLeft, MirrorsTheLayout) {
    shown(Qt::RightToLeft);
    const auto left = [this](const char* name) {
        return view->findChild<QWidget*>(QLatin1String(name))->mapTo(view.get(), QPoint()).x();
    };
    EXPECT_GT(left("ring"), left("stateText"));
    EXPECT_GT(left("settingsButton"), left("quitButton"));
}

TEST_F(RightToLeft, LeavesTheTextsOfThePopoverAsTheyAre) {
    scene.started().snooze();
    const auto pictures = [&](Qt::LayoutDirection direction) {
        shown(direction);
        std::vector<QImage> all;
        for (const char* name : {"settingsButton", "quitButton", "cancelSnooze"})
            all.push_back(picture(button(name)));
        for (auto* segment : view->findChild<QWidget*>(QStringLiteral("rangePicker"))->findChildren<QAbstractButton*>())
            all.push_back(picture(*segment));
        return all;
    };
    const auto usual = pictures(Qt::LeftToRight);
    const auto mirrored = pictures(Qt::RightToLeft);
    ASSERT_EQ(usual.size(), 5U);
    for (std::size_t i = 0; i < usual.size(); ++i)
        EXPECT_TRUE(usual[i] == mirrored[i]) << i;
}

TEST_F(RightToLeft, LeavesATimeAsItIs) {
    const auto picture = [](Qt::LayoutDirection direction) {
        QApplication::setLayoutDirection(direction);
        TimeBox box;
        box.setStored(22 * 60, {});
        box.show();
        return box.findChild<QLineEdit*>()->grab().toImage();
    };
    EXPECT_TRUE(picture(Qt::LeftToRight) == picture(Qt::RightToLeft));
}
