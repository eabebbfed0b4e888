// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/settings/SettingsView.h"

#include "alerts/Prefs.h"
#include "shell/AppModel.h"
#include "support/FakePlatform.h"
#include "views/settings/SettingsWindow.h"
#include "views/settings/SoundPicker.h"
#include "views/settings/StepperBox.h"
#include "views/settings/ToggleSwitch.h"
#include "views/style/KeyboardFocus.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTimeEdit>
#include <QTimer>
#include <QWindow>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace {

struct SettingsViewTest : ::testing::Test {
    FakePlatform fake;
    AppModel model{fake.platform()};
    std::unique_ptr<SettingsWindow> window;
    SettingsView* view = nullptr;

    SettingsViewTest() { fake.defaults.registerDefaults(Prefs::defaults()); }

    SettingsView& shown() {
        if (!window) {
            view = new SettingsView(model, fake.platform());
            window = std::make_unique<SettingsWindow>(view);
            window->present();
        }
        return *view;
    }
    template <class Widget = QWidget>
    Widget& find(const std::string& name) {
        auto* widget = shown().findChild<Widget*>(QString::fromStdString(name));
        EXPECT_NE(widget, nullptr) << name;
        return *widget;
    }
    std::string label(const std::string& key) { return find<QLabel>(key + "Label").text().toStdString(); }
    /// The user types this into a field that has the keyboard.
    void type(QWidget& field, const char* text) {
        field.setFocus();
        QTest::keyClick(&field, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClicks(&field, QLatin1String(text));
        QTest::keyClick(&field, Qt::Key_Return);
    }
    void settle() {
        QCoreApplication::processEvents();
        fake.mainLoop.runDue();
        QCoreApplication::processEvents();
    }
    QMessageBox* question() { return shown().findChild<QMessageBox*>(QStringLiteral("confirmReset")); }
};

} // namespace

TEST_F(SettingsViewTest, HasTheProgramsIconInTitleBarsAndTaskLists) {
    shown();
    EXPECT_EQ(window->windowIcon().availableSizes(), (QList<QSize>{{16, 16}, {24, 24}, {32, 32}, {48, 48}}));
}

TEST_F(SettingsViewTest, HasItsSectionsLabelsAndKeysFromTopToBottom) {
    std::vector<std::string> found;
    for (const QObject* child : shown().children()) {
        if (const auto* header = qobject_cast<const QLabel*>(child); header != nullptr && !header->text().isEmpty())
            found.push_back("# " + header->text().toStdString());
        if (child->objectName() != QStringLiteral("section") || !qobject_cast<const QWidget*>(child)->isVisible())
            continue;
        found.emplace_back("--");
        for (const QObject* row : child->children()) {
            if (const auto* note = qobject_cast<const QLabel*>(row); note != nullptr && note->isVisible())
                found.push_back(note->text().toStdString());
            for (const QObject* each : row->children()) {
                if (const auto* button = qobject_cast<const QPushButton*>(each))
                    found.push_back("[" + button->text().toStdString() + "]");
                if (const auto* rowLabel = qobject_cast<const QLabel*>(each))
                    found.push_back(rowLabel->text().toStdString() + " | " +
                                    rowLabel->buddy()->objectName().toStdString());
            }
        }
    }
    EXPECT_EQ(found,
              (std::vector<std::string>{
                  "# Alerts",
                  "--",
                  "Charge limit | limitEnabled",
                  "Alert when charging reaches 80% | limit",
                  "Repeat every 5 minutes, up to 3 times | repeatReminder",
                  "Sound | limitSound",
                  "--",
                  "Low battery | lowEnabled",
                  "Alert on battery at 20% or less | low",
                  "Sound | lowSound",
                  "--",
                  "Suggest Low Power Mode | lowPowerEnabled",
                  "When on battery below 30% | lowPowerAt",
                  "Sound | lowPowerSound",
                  "--",
                  "Plugged in too long | longEnabled",
                  "Alert after 8 h plugged in above the charge limit | longHours",
                  "Sound | longSound",
                  "--",
                  "Battery health below 80% (once) | healthEnabled",
                  "Sound | healthSound",
                  "# Quiet hours",
                  "--",
                  "Hold alerts during quiet hours | quietEnabled",
                  "From | quietStart",
                  "Until | quietEnd",
                  "# Menu bar",
                  "--",
                  "Show percentage in the menu bar | showPercent",
                  "Show time remaining | showTime",
                  "# General",
                  "--",
                  "Launch at Login | launchAtLogin",
                  "[Export History as CSV…]",
                  "[Reset History…]",
                  "--",
                  ("macOS may also hold charging at 80% itself (Optimized Battery Charging, System Settings, Battery). "
                   "Velmora can only remind you; it cannot control charging.")}));
}

TEST_F(SettingsViewTest, AsksInLinesThatCanBeRead) {
    find<QPushButton>("resetHistory").click();
    const auto* text = question()->findChild<QLabel*>(QStringLiteral("qt_msgbox_informativelabel"));
    ASSERT_NE(text, nullptr);
    EXPECT_GE(text->width(), 40 * text->fontMetrics().averageCharWidth());
}

TEST_F(SettingsViewTest, StandsInAWindowOfFixedSizeThatIsKept) {
    shown();
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Velmora Settings"));
    EXPECT_EQ(window->size(), QSize(480, 720));
    EXPECT_EQ(window->minimumSize(), window->maximumSize());
    EXPECT_LE(view->width(), 480);
    QTest::keyClick(window.get(), Qt::Key_Escape);
    EXPECT_FALSE(window->isVisible());
    window->present();
    EXPECT_TRUE(view->isVisible());
}

TEST_F(SettingsViewTest, ComesBackFromWhereverItWasPut) {
    shown();
    window->showMinimized();
    window->present();
    EXPECT_FALSE(window->isMinimized());
    EXPECT_TRUE(window->isVisible());
}

TEST_F(SettingsViewTest, ASwitchIsStoredAtOnceAndRulesWhatHangsOnIt) {
    auto& limit = find<ToggleSwitch>("limitEnabled");
    EXPECT_TRUE(limit.isChecked());
    QTest::mouseClick(&limit, Qt::LeftButton);
    EXPECT_FALSE(fake.defaults.boolForKey("limitEnabled"));
    for (const char* name : {"limit", "repeatReminder", "limitSound"})
        EXPECT_FALSE(find(name).isEnabled()) << name;
    for (const char* name : {"low", "lowSound", "lowPowerAt", "longHours", "healthSound", "lowEnabled"})
        EXPECT_TRUE(find(name).isEnabled()) << name;
    for (const char* name : {"quietStart", "quietEnd"})
        EXPECT_FALSE(find(name).isEnabled()) << name;
    QTest::keyClick(&limit, Qt::Key_Space);
    EXPECT_TRUE(fake.defaults.boolForKey("limitEnabled"));
    EXPECT_TRUE(find("limitSound").isEnabled());
}

TEST_F(SettingsViewTest, ADisabledControlKeepsItsValue) {
    fake.defaults.setObject("limit", 77);
    fake.defaults.setObject("limitEnabled", false);
    EXPECT_EQ(label("limit"), "Alert when charging reaches 77%");
    EXPECT_EQ(fake.defaults.integerForKey("limit"), 77);
}

TEST_F(SettingsViewTest, StepsWithinTheirRanges) {
    for (const auto& [key, least, most] : std::vector<std::tuple<const char*, int, int>>{
             {"limit", 50, 100}, {"low", 5, 50}, {"lowPowerAt", 10, 60}, {"longHours", 1, 48}}) {
        auto& box = find<StepperBox>(key);
        for (int i = 0; i < 120; ++i)
            box.stepUp();
        EXPECT_EQ(fake.defaults.integerForKey(key), most) << key;
        for (int i = 0; i < 120; ++i)
            QTest::keyClick(&box, Qt::Key_Down);
        EXPECT_EQ(fake.defaults.integerForKey(key), least) << key;
        EXPECT_EQ(box.value(), least);
    }
    EXPECT_EQ(label("longHours"), "Alert after 1 h plugged in above the charge limit");
}

TEST_F(SettingsViewTest, ANumberCanBeTyped) {
    type(find<StepperBox>("limit"), "65");
    EXPECT_EQ(fake.defaults.integerForKey("limit"), 65);
    EXPECT_EQ(label("limit"), "Alert when charging reaches 65%");
    type(find<StepperBox>("limit"), "7");
    EXPECT_GE(fake.defaults.integerForKey("limit"), 50);
}

TEST_F(SettingsViewTest, ANumberBeyondTheRangeIsItsEnd) {
    const QSignalSpy chosen(&find<StepperBox>("low"), &StepperBox::chosen);
    type(find<StepperBox>("low"), "99");
    EXPECT_EQ(fake.defaults.integerForKey("low"), 50);
    EXPECT_EQ(chosen.size(), 1) << "and nothing in between";
    type(find<StepperBox>("low"), "2");
    EXPECT_EQ(fake.defaults.integerForKey("low"), 5);
    EXPECT_EQ(find<StepperBox>("low").value(), 5);
}

TEST_F(SettingsViewTest, MinusAndPlusStepAndAllFieldsAreOfOneWidth) {
    auto& box = find<StepperBox>("limit");
    QTest::mouseClick(&box, Qt::LeftButton, {}, {10, box.height() / 2});
    EXPECT_EQ(fake.defaults.integerForKey("limit"), 79);
    QTest::mouseClick(&box, Qt::LeftButton, {}, {box.width() - 10, box.height() / 2});
    EXPECT_EQ(fake.defaults.integerForKey("limit"), 80);
    settle();
    for (const char* name : {"limitSound", "low", "quietStart", "healthSound"})
        EXPECT_EQ(find(name).width(), box.width()) << name;
}

TEST_F(SettingsViewTest, AnArrowThatIsHeldGoesOn) {
    auto& box = find<StepperBox>("limit");
    const QPoint up(box.width() - 7, 6);
    QTest::mousePress(&box, Qt::LeftButton, {}, up);
    EXPECT_TRUE(QTest::qWaitFor([&] { return fake.defaults.integerForKey("limit") >= 84; }));
    QTest::mouseRelease(&box, Qt::LeftButton, {}, up);
    EXPECT_EQ(fake.defaults.integerForKey("limit"), box.value());
}

TEST_F(SettingsViewTest, WhatIsBeingTypedStaysWhenSomethingElseIsStored) {
    auto& box = find<StepperBox>("limit");
    box.setFocus();
    QTest::keyClick(&box, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(&box, QStringLiteral("6"));
    fake.defaults.setObject("showTime", true);
    settle();
    QTest::keyClicks(&box, QStringLiteral("5"));
    EXPECT_EQ(fake.defaults.integerForKey("limit"), 80) << "not meant yet";
    QTest::keyClick(window.get(), Qt::Key_Escape);
    EXPECT_EQ(fake.defaults.integerForKey("limit"), 65) << "closing the window means it";
}

TEST_F(SettingsViewTest, AStoredValueBeyondTheRangeIsShownUntilTheUserTouchesIt) {
    for (const auto& [stored, up, down] :
         std::vector<std::tuple<std::int64_t, int, int>>{{150, 100, 100}, {-5, 50, 50}}) {
        fake.defaults.setObject("limit", stored);
        shown();
        settle();
        auto& box = find<StepperBox>("limit");
        EXPECT_EQ(label("limit"), "Alert when charging reaches " + std::to_string(stored) + "%");
        EXPECT_EQ(box.value(), stored);
        EXPECT_EQ(fake.defaults.integerForKey("limit"), stored) << "not rewritten";
        box.stepUp();
        EXPECT_EQ(fake.defaults.integerForKey("limit"), up);
        fake.defaults.setObject("limit", stored);
        settle();
        box.stepDown();
        EXPECT_EQ(fake.defaults.integerForKey("limit"), down);
    }
}

TEST_F(SettingsViewTest, ShowsWhatOthersStoreWhileItIsOpen) {
    shown();
    fake.defaults.setObject("low", 33);
    fake.defaults.setObject("showTime", true);
    fake.defaults.setObject("quietEnd", 480);
    settle();
    EXPECT_EQ(label("low"), "Alert on battery at 33% or less");
    EXPECT_TRUE(find<ToggleSwitch>("showTime").isChecked());
    EXPECT_EQ(find<QTimeEdit>("quietEnd").time(), QTime(8, 0));
}

TEST_F(SettingsViewTest, TimesAreStoredAsMinutes) {
    EXPECT_EQ(find<QTimeEdit>("quietEnd").time(), QTime(7, 0));
    EXPECT_EQ(find<QTimeEdit>("quietStart").time(), QTime(22, 0));
    find<QTimeEdit>("quietStart").setTime(QTime(22, 30));
    EXPECT_EQ(fake.defaults.integerForKey("quietStart"), 1350);
}

TEST_F(SettingsViewTest, HoursAndMinutesAreClickedAndTypedOver) {
    fake.defaults.setObject("quietEnabled", true);
    auto& box = find<QTimeEdit>("quietStart");
    auto& field = *box.findChild<QLineEdit*>();
    const auto clickAt = [&](int character) {
        const int x = field.fontMetrics().horizontalAdvance(field.text().left(character));
        QTest::mouseClick(&field, Qt::LeftButton, {}, {x + 4, field.height() / 2});
        settle();
    };
    clickAt(0);
    QTest::keyClicks(&box, QStringLiteral("0915"));
    EXPECT_EQ(box.text(), QStringLiteral("09:15"));
    clickAt(3);
    QTest::keyClicks(&box, QStringLiteral("45"));
    QTest::keyClick(&box, Qt::Key_Return);
    EXPECT_EQ(fake.defaults.integerForKey("quietStart"), 9 * 60 + 45);
    box.setTime(QTime(23, 0));
    clickAt(0);
    QTest::keyClick(&box, Qt::Key_Up);
    EXPECT_EQ(fake.defaults.integerForKey("quietStart"), 0) << "after 23 comes 0";
}

TEST_F(SettingsViewTest, MinutesThatNoDayHasAreLeftAloneAndShownAsThePresentTime) {
    // By the program's clock, not the machine's.
    const auto now = fake.calendar.timeOfDay(fake.clock.now());
    for (const std::int64_t minutes : {1440, 1500, -1}) {
        fake.defaults.setObject("quietStart", minutes);
        shown();
        settle();
        EXPECT_EQ(find<QTimeEdit>("quietStart").time(), QTime(now.hour, now.minute)) << minutes;
        EXPECT_EQ(fake.defaults.integerForKey("quietStart"), minutes);
    }
}

TEST_F(SettingsViewTest, OffersTheSoundsInOrderAndLetsThemBeHeardOnce) {
    auto& picker = find<SoundPicker>("lowSound");
    QStringList offered;
    for (int i = 0; i < picker.count(); ++i)
        offered.append(picker.itemText(i));
    EXPECT_EQ(offered.join(QLatin1Char(' ')),
              QStringLiteral(
                  "Default None  Glass Ping Hero Submarine Funk Basso Blow Bottle Frog Morse Pop Purr Sosumi Tink"));
    EXPECT_EQ(picker.currentText(), QStringLiteral("Default"));
    const auto pick = [&](const char* name) {
        const int index = picker.findText(QLatin1String(name));
        picker.setCurrentIndex(index);
        Q_EMIT picker.activated(index);
        settle();
    };
    pick("Frog");
    EXPECT_EQ(fake.defaults.stringForKey("lowSound"), "Frog");
    EXPECT_EQ(fake.sounds.played, std::vector<std::string>{"Frog"});
    pick("None");
    EXPECT_EQ(fake.defaults.stringForKey("lowSound"), "none");
    pick("Default");
    EXPECT_EQ(fake.defaults.stringForKey("lowSound"), "default");
    EXPECT_EQ(fake.sounds.played.size(), 1U);
    EXPECT_EQ(find<SoundPicker>("limitSound").currentText(), QStringLiteral("Default"));
}

TEST_F(SettingsViewTest, LetsASoundBeHeardThatAnotherProgramChose) {
    shown();
    fake.defaults.setObject("lowSound", "Frog");
    settle();
    EXPECT_EQ(fake.sounds.played, std::vector<std::string>{"Frog"});
    fake.defaults.setObject("limit", 70);
    fake.defaults.setObject("lowSound", "none");
    settle();
    EXPECT_EQ(fake.sounds.played.size(), 1U);
    window->close();
    fake.defaults.setObject("lowSound", "Glass");
    settle();
    window->present();
    settle();
    EXPECT_EQ(fake.sounds.played.size(), 1U) << "nobody was there";
    EXPECT_EQ(find<SoundPicker>("lowSound").currentText(), QStringLiteral("Glass"));
}

TEST_F(SettingsViewTest, ASoundThatIsNotOfferedIsNotRewritten) {
    fake.defaults.setObject("lowSound", "Quack");
    EXPECT_EQ(find<SoundPicker>("lowSound").currentIndex(), -1);
    EXPECT_EQ(fake.defaults.stringForKey("lowSound"), "Quack");
    EXPECT_TRUE(fake.sounds.played.empty());
}

TEST_F(SettingsViewTest, AsksForThePermissionWhenAnAlertIsSwitchedOn) {
    for (const char* key :
         {"limitEnabled", "lowEnabled", "lowPowerEnabled", "longEnabled", "healthEnabled", "firmwareLimitEnabled"}) {
        fake.dialogs.alerts.clear();
        find<ToggleSwitch>(key).click();
        settle();
        EXPECT_TRUE(fake.dialogs.alerts.empty()) << key << " was switched off";
        find<ToggleSwitch>(key).click();
        settle();
        EXPECT_EQ(fake.dialogs.alerts.size(), 1U) << key;
    }
    fake.dialogs.alerts.clear();
    for (const char* key : {"quietEnabled", "repeatReminder", "showTime"}) {
        find<ToggleSwitch>(key).click();
        find<ToggleSwitch>(key).click();
    }
    settle();
    EXPECT_TRUE(fake.dialogs.alerts.empty());
    fake.notificationCenter.status = NotificationCenter::AuthorizationStatus::authorized;
    find<ToggleSwitch>("lowEnabled").click();
    find<ToggleSwitch>("lowEnabled").click();
    settle();
    EXPECT_TRUE(fake.dialogs.alerts.empty()) << "the user has decided";
}

TEST_F(SettingsViewTest, AsksForThePermissionWhenAnotherProgramSwitchesAnAlertOn) {
    fake.defaults.setObject("lowEnabled", false);
    shown();
    settle();
    EXPECT_TRUE(fake.dialogs.alerts.empty());
    fake.defaults.setObject("lowEnabled", true);
    settle();
    EXPECT_EQ(fake.dialogs.alerts.size(), 1U);
    fake.defaults.setObject("lowEnabled", true);
    fake.defaults.setObject("quietEnabled", true);
    settle();
    EXPECT_EQ(fake.dialogs.alerts.size(), 1U) << "nothing was switched on";
    window->close();
    fake.defaults.setObject("lowEnabled", false);
    settle();
    fake.defaults.setObject("lowEnabled", true);
    settle();
    window->present();
    settle();
    EXPECT_EQ(fake.dialogs.alerts.size(), 1U) << "nobody saw it";
}

TEST_F(SettingsViewTest, LaunchAtLoginShowsWhatReallyIs) {
    auto& launch = find<ToggleSwitch>("launchAtLogin");
    EXPECT_FALSE(launch.isChecked());
    launch.click();
    EXPECT_TRUE(fake.loginItem.enabled);
    fake.loginItem.failure = "Read-only file system";
    launch.click();
    EXPECT_TRUE(launch.isChecked());
    EXPECT_EQ(find<QLabel>("loginError").text(),
              QStringLiteral("Could not change Launch at Login: Read-only file system"));
    EXPECT_TRUE(find("loginError").isVisible());
    fake.loginItem.failure.reset();
    launch.click();
    EXPECT_FALSE(launch.isChecked());
    EXPECT_FALSE(find("loginError").isVisible());
    fake.loginItem.enabled = true; // in the desktop's own settings
    view->readAgain();
    EXPECT_TRUE(launch.isChecked());
}

TEST_F(SettingsViewTest, EveryAlertSwitchRulesItsOwnControlsAlone) {
    const std::vector<std::pair<std::string, std::vector<std::string>>> groups{
        {"limitEnabled", {"limit", "repeatReminder", "limitSound"}},
        {"lowEnabled", {"low", "lowSound"}},
        {"lowPowerEnabled", {"lowPowerAt", "lowPowerSound"}},
        {"longEnabled", {"longHours", "longSound"}},
        {"healthEnabled", {"healthSound"}},
        {"firmwareLimitEnabled", {"firmwareLimitSound"}},
        {"quietEnabled", {"quietStart", "quietEnd"}}};
    for (const auto& [off, ignored] : groups) {
        for (const auto& [key, ruled] : groups)
            fake.defaults.setObject(key, key != off);
        shown();
        settle();
        for (const auto& [key, ruled] : groups) {
            EXPECT_TRUE(find(key).isEnabled()) << key;
            for (const std::string& each : ruled)
                EXPECT_EQ(find(each).isEnabled(), key != off) << each << " without " << off;
        }
    }
    for (const char* key : {"showPercent", "showTime", "launchAtLogin", "exportHistory", "resetHistory"})
        EXPECT_TRUE(find(key).isEnabled()) << key;
}

TEST_F(SettingsViewTest, ShowsTheCardOfTheFirmwaresLimitOnlyWhereThereIsOne) {
    shown();
    EXPECT_FALSE(find("firmwareLimitEnabled").isVisible());
    settle();
    const int without = view->sizeHint().height();
    fake.powerSources.packLimits = {
        {.device = "BAT0", .model = "X", .design = 57000, .tellsLimit = true, .limit = 100}};
    model.refresh(AppModel::Reason::timer);
    EXPECT_TRUE(find("firmwareLimitEnabled").isVisible());
    EXPECT_TRUE(find("firmwareLimitSound").isVisible());
    settle();
    EXPECT_GT(find("firmwareLimitEnabled").mapTo(view, QPoint()).y(), find("healthEnabled").mapTo(view, QPoint()).y());
    EXPECT_LT(find("firmwareLimitEnabled").mapTo(view, QPoint()).y(), find("quietEnabled").mapTo(view, QPoint()).y());
    EXPECT_GT(view->sizeHint().height(), without);
    fake.powerSources.packLimits = {};
    model.refresh(AppModel::Reason::timer);
    EXPECT_FALSE(find("firmwareLimitEnabled").isVisible());
    settle();
    EXPECT_EQ(view->sizeHint().height(), without);
    const auto cardEnd = [&](const char* key) { return find(key).parentWidget()->parentWidget()->geometry().bottom(); };
    const auto headerTop = [&](const char* text) {
        const auto headers = shown().findChildren<QLabel*>(QStringLiteral("header"));
        const auto found = std::ranges::find(headers, QString::fromLatin1(text), &QLabel::text);
        return found == headers.end() ? 0 : (*found)->y();
    };
    EXPECT_EQ(headerTop("Quiet hours") - cardEnd("healthEnabled"), headerTop("Menu bar") - cardEnd("quietEnabled"))
        << "no gap is left";
}

TEST_F(SettingsViewTest, ResetsTheHistoryOnlyWhenThatIsConfirmed) {
    fake.powerSources.setBattery(64, false);
    model.refresh(AppModel::Reason::timer);
    const auto answer = [&](const char* name) {
        find<QPushButton>("resetHistory").click();
        ASSERT_NE(question(), nullptr);
        EXPECT_EQ(question()->text(), QStringLiteral("Reset history?"));
        EXPECT_EQ(question()->informativeText(),
                  QStringLiteral("This deletes all saved battery samples used for the chart."));
        for (QAbstractButton* button : question()->buttons()) {
            if (button->text() == QLatin1String(name)) {
                button->click();
                break;
            }
        }
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        EXPECT_EQ(question(), nullptr);
    };
    answer("Cancel");
    EXPECT_EQ(model.history.samples.size(), 1U);
    answer("Reset");
    EXPECT_TRUE(model.history.samples.empty());
}

TEST_F(SettingsViewTest, TheProgramCanEndWhileTheQuestionIsOpen) {
    fake.powerSources.setBattery(64, false);
    model.refresh(AppModel::Reason::timer);
    find<QPushButton>("resetHistory").click();
    ASSERT_NE(question(), nullptr);
    QTimer tooLate;
    tooLate.callOnTimeout([] { QCoreApplication::exit(1); });
    tooLate.start(std::chrono::seconds(10));
    QTimer::singleShot(0, [] { QCoreApplication::quit(); });
    EXPECT_EQ(QApplication::exec(), 0);
    EXPECT_EQ(model.history.samples.size(), 1U) << "that was no answer";
}

TEST_F(SettingsViewTest, GoesAwayWithTheQuestionOpen) {
    fake.powerSources.setBattery(64, false);
    model.refresh(AppModel::Reason::timer);
    find<QPushButton>("resetHistory").click();
    const QPointer<QMessageBox> open = question();
    ASSERT_FALSE(open.isNull());
    window.reset(); // if the question still called the half-destroyed form, the sanitizers would report it
    EXPECT_TRUE(open.isNull());
    EXPECT_EQ(model.history.samples.size(), 1U) << "that was no answer";
}

TEST_F(SettingsViewTest, ExportsTheHistory) {
    find<QPushButton>("exportHistory").click();
    EXPECT_EQ(fake.dialogs.saveDialogs.size(), 1U);
}

TEST_F(SettingsViewTest, SaysWhyNothingCanBeDeliveredOutsideABundle) {
    fake.bundle.name.reset();
    EXPECT_TRUE(find("bundleNote").isVisible());
    EXPECT_EQ(
        find<QLabel>("bundleNote").text(),
        QStringLiteral("Notifications need Velmora to run as an app bundle (see make_app.sh). Run from the command "
                       "line, alerts cannot be delivered."));
}

TEST_F(SettingsViewTest, TheWheelChangesNothingThatIsNotChosen) {
    auto& box = find<StepperBox>("limit");
    QWheelEvent wheel(QPointF(5, 5), box.mapToGlobal(QPointF(5, 5)), {}, {0, 120}, Qt::NoButton, Qt::NoModifier,
                      Qt::NoScrollPhase, false);
    QApplication::sendEvent(&box, &wheel);
    EXPECT_EQ(fake.defaults.integerForKey("limit"), 80);
}

TEST_F(SettingsViewTest, EveryControlHasANameAndIsReachedByKeyboard) {
    int controls = 0;
    for (const auto* widget : shown().findChildren<QWidget*>()) {
        const bool isControl = qobject_cast<const QAbstractButton*>(widget) || qobject_cast<const QComboBox*>(widget) ||
                               qobject_cast<const QAbstractSpinBox*>(widget);
        if (!isControl)
            continue;
        ++controls;
        const auto* button = qobject_cast<const QPushButton*>(widget);
        EXPECT_FALSE(widget->accessibleName().isEmpty() && (button == nullptr || button->text().isEmpty()))
            << widget->objectName().toStdString();
        EXPECT_NE(widget->focusPolicy() & Qt::TabFocus, 0) << widget->objectName().toStdString();
    }
    EXPECT_EQ(controls, 25) << "22 preferences, login, export and reset";
}

TEST_F(SettingsViewTest, RingsWhatHasTheFocusForTheKeyboardAlone) {
    auto& limit = find<ToggleSwitch>("limitEnabled");
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    QWindow* frame = window->windowHandle();
    ASSERT_TRUE(limit.hasFocus());
    EXPECT_FALSE(showsFocus(limit)) << "it was opened by a click";
    QTest::keyClick(frame, Qt::Key_Tab);
    QTest::keyClick(frame, Qt::Key_Backtab);
    EXPECT_TRUE(showsFocus(limit));
    QTest::mouseClick(frame, Qt::LeftButton, {}, limit.mapTo(window.get(), limit.rect().center()));
    EXPECT_TRUE(limit.hasFocus());
    EXPECT_FALSE(showsFocus(limit));
    window->present(true);
    EXPECT_TRUE(showsFocus(limit)) << "it was opened by a key";
}

TEST_F(SettingsViewTest, WhatTheKeyboardComesToIsSeenAsAWhole) {
    fake.defaults.setObject("quietEnabled", true);
    QWidget* const first = &find("limitEnabled");
    QWidget* reached = first;
    reached->setFocus();
    do {
        QTest::keyClick(reached, Qt::Key_Tab);
        reached = window->focusWidget();
        const QRect place(reached->mapTo(window.get(), QPoint()), reached->size());
        EXPECT_TRUE(window->rect().contains(place)) << reached->objectName().toStdString();
    } while (reached != first);
    EXPECT_GT(view->height(), window->height()) << "else this shows nothing";
}

TEST_F(SettingsViewTest, CanBeLookedAt) {
    shown();
    view->adjustSize();
    EXPECT_TRUE(view->grab().save(QStringLiteral(VELMORA_PICTURES "/settings.png")));
    EXPECT_TRUE(window->grab().save(QStringLiteral(VELMORA_PICTURES "/settings-window.png")));
}
