// SPDX-License-Identifier: GPL-3.0-or-later
// The windows as screen readers are told of them.
#include "views/style/Accessibility.h"

#include "support/PopoverScene.h"
#include "views/popover/Popover.h"
#include "views/popover/PopoverView.h"
#include "views/settings/TimeBox.h"

#include <QAbstractButton>
#include <QApplication>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

class AccessibilityTest : public testing::Test {
protected:
    PopoverScene scene;
    Popover popover;
    PopoverView* content = nullptr;

    void SetUp() override {
        content = new PopoverView(
            scene.started(), scene.fake.platform(), [] {}, [] {});
        popover.setContent(content);
        content->rebuild();
        popover.showAt(std::nullopt);
    }
    QAccessibleInterface& told(const char* name) {
        return *QAccessible::queryAccessibleInterface(content->findChild<QWidget*>(QLatin1String(name)));
    }
    /// Everything that is read as one, from the top: role and name.
    std::vector<std::string> read() {
        std::vector<std::string> found;
        collect(*QAccessible::queryAccessibleInterface(content), found);
        return found;
    }

private:
    static void collect(QAccessibleInterface& from, std::vector<std::string>& found) {
        for (int i = 0; i < from.childCount(); ++i) {
            QAccessibleInterface& child = *from.child(i);
            if (child.state().invisible)
                continue;
            if (child.childCount() > 0)
                collect(child, found);
            else if (const QString name = child.text(QAccessible::Name); !name.isEmpty())
                found.push_back(name.toStdString());
        }
    }
};

} // namespace

TEST_F(AccessibilityTest, ReadsEveryRowOnce) {
    const std::vector<std::string> all = read();
    const auto count = [&](const char* part) {
        return std::count_if(all.begin(), all.end(), [&](const std::string& name) { return name.find(part) == 0; });
    };
    for (const char* row : {"Cycle count", "Battery health", "Temperature", "Power out", "Adapter"})
        EXPECT_EQ(count(row), 1) << row;
    EXPECT_EQ(count("Cycle count: 312 of 1000"), 1);
    EXPECT_EQ(count("Battery health: 92% · Good"), 1);
    EXPECT_EQ(count("312 of 1000"), 0);
    EXPECT_EQ(told("cycles").role(), QAccessible::StaticText);
}

TEST_F(AccessibilityTest, TheRingAndTheChartArePicturesWithWhatTheyShow) {
    EXPECT_EQ(told("ring").role(), QAccessible::Graphic);
    EXPECT_EQ(told("ring").text(QAccessible::Value), QStringLiteral("80 %"));
    EXPECT_FALSE(told("ring").text(QAccessible::Description).isEmpty());
    EXPECT_EQ(told("historyChart").role(), QAccessible::Graphic);
    EXPECT_TRUE(told("historyChart").text(QAccessible::Name).startsWith(QStringLiteral("Charge of the last 24 hours")));
    EXPECT_EQ(told("historyChart").childCount(), 0);
    EXPECT_TRUE(told("historyChart").state().focusable);
    EXPECT_NE(content->findChild<QWidget*>(QStringLiteral("historyChart"))->focusPolicy() & Qt::TabFocus, 0);
}

TEST_F(AccessibilityTest, TheRangeIsAGroupOfRadioButtons) {
    QAccessibleInterface& group = told("rangePicker");
    EXPECT_EQ(group.role(), QAccessible::Grouping);
    EXPECT_EQ(group.text(QAccessible::Name), QStringLiteral("Range of the chart"));
    ASSERT_EQ(group.childCount(), 2);
    EXPECT_EQ(group.child(0)->role(), QAccessible::RadioButton);
    EXPECT_EQ(group.child(0)->text(QAccessible::Name), QStringLiteral("24 hours"));
    EXPECT_TRUE(group.child(0)->state().checked);
    group.child(1)->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_TRUE(group.child(1)->state().checked);
    EXPECT_FALSE(group.child(0)->state().checked);
}

TEST_F(AccessibilityTest, TheSummaryIsAButtonThatUnfolds) {
    QAccessibleInterface& disclosure = told("dailySummaryDisclosure");
    EXPECT_EQ(disclosure.role(), QAccessible::Button);
    EXPECT_EQ(disclosure.text(QAccessible::Name), QStringLiteral("Daily summary"));
    EXPECT_TRUE(disclosure.state().expandable);
    EXPECT_TRUE(disclosure.state().collapsed);
    EXPECT_FALSE(disclosure.state().checkable);
    disclosure.actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_TRUE(disclosure.state().expanded);
    EXPECT_FALSE(disclosure.state().collapsed);
}

TEST_F(AccessibilityTest, ThePopoverIsAWindowOfTheProgramAlsoAsAPopup) {
    popover.setWindowFlags(Qt::Popup);
    popover.showAt(std::nullopt);
    QAccessibleInterface* program = QAccessible::queryAccessibleInterface(qApp);
    ASSERT_EQ(program->role(), QAccessible::Application);
    QAccessibleInterface* window = QAccessible::queryAccessibleInterface(&popover);
    const int place = program->indexOfChild(window);
    ASSERT_GE(place, 0);
    EXPECT_EQ(program->child(place)->object(), &popover);
    EXPECT_EQ(window->parent()->object(), qApp);
    EXPECT_EQ(window->text(QAccessible::Name), QStringLiteral("Velmora"));
    EXPECT_EQ(program->child(program->childCount()), nullptr);
}

TEST(Accessibility, TheValueOfATimeIsTheTime) {
    TimeBox box;
    QAccessibleInterface* told = QAccessible::queryAccessibleInterface(&box);
    EXPECT_EQ(told->text(QAccessible::Value), box.text());
    box.setStored(22 * 60 + 30, {});
    EXPECT_EQ(told->text(QAccessible::Value), box.text());
    EXPECT_TRUE(box.text().contains(QStringLiteral("22:30")) || box.text().contains(QStringLiteral("10:30")));
    EXPECT_EQ(told->role(), QAccessible::SpinBox);
    EXPECT_EQ(told->valueInterface(), nullptr) << "a number of a time would be read as such";
    ASSERT_NE(told->textInterface(), nullptr);
    EXPECT_EQ(told->textInterface()->text(0, 100), box.text());
}
