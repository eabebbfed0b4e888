// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/session/SystemCalendar.h"
#include "shell/AppDelegate.h"
#include "support/Environment.h"
#include "support/FakePlatform.h"
#include "support/PlainProgram.h"
#include "views/popover/HistoryPlot.h"
#include "views/popover/LinkButton.h"
#include "views/popover/Popover.h"
#include "views/popover/RingView.h"
#include "views/settings/StepperBox.h"
#include "views/settings/ToggleSwitch.h"
#include "views/style/ViewStyle.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>
#include <QTimeEdit>
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

using namespace std::chrono_literals;

namespace {

/// Ten to seven on a Saturday morning in Central Europe. In the night after it, summer time ends.
constexpr double morning = 1'792'817'400;

/// A laptop, its user and the whole program but for the panel, for a day and a half. Whatever happens, as soon as the
/// main loop has nothing left to do all that the user can see must tell the same.
class Surfaces : public ::testing::Test {
protected:
    FakePlatform fakes;
    std::shared_ptr<FakeUserDefaults::Content> content = std::make_shared<FakeUserDefaults::Content>();
    FakeUserDefaults defaults{fakes.mainLoop, content};
    FakeUserDefaults otherProgram{fakes.mainLoop, content}; ///< that edits the same preferences
    SystemCalendar calendar;
    std::optional<AppDelegate> delegate;

    PlainLaptop laptop;
    PlainProgram expected;
    bool popoverIsOpen = false;
    bool settingsAreOpen = false;
    bool startsAtLogin = false;
    bool isTableOpen = false;
    int checks = 0;

    Surfaces() {
        fakes.clock.setNow(Date(Duration(morning)));
        laptop = {
            .percent = 71, .pluggedIn = true, .charges = true, .minutes = 58, .cycles = 312, .milliamperes = 2100};
        inheritHistory();
        tell();
        fakes.powerSources.whileReading = [this] { expected.read(laptop, now(), onSchedule_, follows_); };
    }

    double now() const { return fakes.clock.now().time_since_epoch().count(); }

    /// Something happens; then everything is looked at.
    void step(const std::string& what, const std::function<void()>& action) {
        if (HasFailure()) // what follows would fail for the same reason
            return;
        SCOPED_TRACE(what + ", " + plainTime(now()));
        action();
        settle();
        checkAll();
    }

    /// So many minutes go by, and with each the battery takes or gives a little.
    void live(int minutes, const std::string& what) {
        for (int i = 0; i < minutes && !HasFailure(); ++i) {
            step(what, [&] {
                fakes.mainLoop.advance(30s);
                ++readings_; // by the timer, within this minute
                if (const PlainLaptop before = laptop; passMinute() != before.percent)
                    report();
                fakes.mainLoop.advance(30s);
            });
        }
    }

    void launch() {
        as(true, true, [&] {
            delegate.emplace(fakes.with(calendar, defaults, fakes.files), [this] { ++quits_; });
            delegate->applicationDidFinishLaunching();
        });
    }

    /// The laptop changes, and the system reports it.
    void report() {
        tell();
        as(false, false, [&] { fakes.powerSources.change(); });
    }

    void plug(bool charges) {
        laptop.pluggedIn = true;
        laptop.charges = charges;
        laptop.minutes = charges ? std::optional(100 - laptop.percent) : std::nullopt;
        laptop.milliamperes = charges ? 2100 : 0;
        report();
    }
    void unplug() {
        laptop.pluggedIn = laptop.charges = laptop.isFull = false;
        laptop.minutes.reset(); // not known yet
        laptop.milliamperes = -640;
        report();
    }

    void tellAndSwitchLowPowerMode(bool on) {
        tell();
        as(false, false, [&] { fakes.powerSaving.switchLowPowerMode(on); });
    }

    void openPopover() {
        popoverIsOpen = true;
        as(false, false, [&] { delegate->showDetails(); });
    }
    void closePopover() {
        popoverIsOpen = false;
        item().action(ScreenPoint{100, 10});
    }
    void openSettings() {
        popoverIsOpen = false;
        settingsAreOpen = true;
        choose("Settings…");
    }
    void closeSettings() {
        settingsAreOpen = false;
        settings()->close();
    }

    /// A change of the preferences brings an open popover up to date.
    void wanted() { expected.drawn = expected.charted = now(); }
    void edit(const std::string& key, bool value) {
        otherProgram.setObject(key, value);
        expected.wants.switches[key] = value;
        wanted();
    }
    void edit(const std::string& key, int value) {
        otherProgram.setObject(key, value);
        expected.wants.numbers[key] = value;
        wanted();
    }
    void edit(const std::string& key, const char* value) {
        otherProgram.setObject(key, value);
        expected.wants.sounds[key] = value;
        wanted();
    }
    void flip(const std::string& key) {
        QTest::mouseClick(control<ToggleSwitch>(key), Qt::LeftButton);
        expected.wants.switches[key] = !expected.wants.switches[key];
        wanted();
    }

    void choose(const std::string& label) {
        for (const auto& entry : std::vector(item().menu)) {
            if (entry.label.starts_with(label))
                return entry.action();
        }
        ADD_FAILURE() << "the menu has no " << label;
    }
    void snoozes() {
        expected.snoozed = now() + 3600;
        wanted();
    }
    void cancels() {
        expected.snoozed.reset();
        wanted();
    }

    /// The machine sleeps, and wakes with what the laptop then says. A popover is closed by that, and opened again.
    void sleep(Duration time, const std::function<void()>& meanwhile) {
        const bool wasOpen = std::exchange(popoverIsOpen, false);
        wakings_ = 1;
        step("asleep", [&] {
            fakes.sessionEvents.prepareForSleep();
            fakes.clock.suspend(time);
            meanwhile();
            tell();
            fakes.sessionEvents.wake();
        }); // nothing is read yet, and everything agrees on what was known before
        wakings_ = 0;
        step("awake", [&] { as(true, true, [&] { fakes.mainLoop.advance(3s); }); });
        if (wasOpen)
            step("the popover again", [&] { openPopover(); });
    }

    FakeStatusBar::Record& item() { return *fakes.statusBar.items.at(0); }
    static QWidget* window(const char* name) {
        for (QWidget* each : QApplication::topLevelWidgets()) {
            if (each->objectName() == QLatin1String(name))
                return each;
        }
        return nullptr;
    }
    static QWidget* popover() { return window("popover"); }
    static QWidget* settings() { return window("settingsWindow"); }
    template <class Widget>
    static Widget* control(const std::string& name) {
        auto* found = settings()->findChild<Widget*>(QString::fromStdString(name));
        EXPECT_NE(found, nullptr) << name;
        return found;
    }
    template <class Widget>
    static Widget* part(const std::string& name) {
        return popover()->findChild<Widget*>(QString::fromStdString(name));
    }

    void settle() {
        QCoreApplication::processEvents();
        fakes.mainLoop.runDue();
        QCoreApplication::processEvents();
    }

    /// What happens in here makes the program read the battery, and this is why.
    void as(bool onSchedule, bool follows, const std::function<void()>& action) {
        ++readings_;
        onSchedule_ = onSchedule;
        follows_ = follows;
        action();
        onSchedule_ = true;
        follows_ = false;
    }

private:
    bool onSchedule_ = true;
    bool follows_ = false;
    int minute_ = 0;
    int readings_ = 0;        ///< so often the battery must have been read
    std::size_t wakings_ = 0; ///< of which the reading is still to come
    int quits_ = 0;

    /// Nine days, every ten minutes, plugged in for most of the last hour.
    void inheritHistory() {
        std::string text;
        for (double time = morning - 9 * 86400 - 300; time < morning; time += 600) {
            const bool pluggedIn = time >= morning - 3300;
            const int percent = 60 + static_cast<int>(30 * std::sin(time / 9000));
            expected.history.push_back({time, percent, pluggedIn, pluggedIn});
            text += (text.empty() ? "[" : ",") + std::string(R"({"t":)") + std::to_string(static_cast<long>(time)) +
                    R"(,"p":)" + std::to_string(percent) + R"(,"c":)" + (pluggedIn ? "true" : "false") + R"(,"a":)" +
                    (pluggedIn ? "true" : "false") + "}";
        }
        fakes.files.files[fakes.files.support / "Velmora/history.json"] = text + "]";
        expected.pluggedInSince(morning - 3300);
    }

    /// The laptop says what it is.
    void tell() {
        Dictionary description = internalBattery(laptop.percent, laptop.pluggedIn, laptop.charges);
        description.insert_or_assign("Is Charged", laptop.isFull);
        if (laptop.minutes)
            description.insert_or_assign(laptop.charges ? "Time to Full Charge" : "Time to Empty", *laptop.minutes);
        fakes.powerSources.sources.emplace();
        if (laptop.hasBattery)
            fakes.powerSources.sources->emplace_back(Value(description));
        Dictionary registry{{"CycleCount", laptop.cycles},        {"DesignCapacity", laptop.design},
                            {"AppleRawMaxCapacity", laptop.full}, {"Temperature", laptop.hundredthsOfDegree},
                            {"Voltage", laptop.millivolts},       {"Amperage", laptop.milliamperes}};
        if (laptop.adapterWatts > 0)
            registry.insert_or_assign("AdapterDetails", Dictionary{{"Watts", laptop.adapterWatts}});
        fakes.powerSources.registry = Value(registry);
    }

    /// Gives the percentage after it. What else changes is not reported and shows with the minute.
    int passMinute() {
        ++minute_;
        laptop.hundredthsOfDegree = 3000 + minute_ / 3 % 40 * 10; // some minutes bring nothing new
        if (laptop.charges && laptop.percent < 100)
            ++laptop.percent;
        else if (!laptop.pluggedIn && minute_ % 3 == 0 && laptop.percent > 1)
            --laptop.percent;
        if (laptop.charges && laptop.percent == 100) {
            laptop.charges = false;
            laptop.isFull = true;
            laptop.milliamperes = 0;
            ++laptop.cycles;
        }
        if (laptop.charges)
            laptop.minutes = 100 - laptop.percent;
        else
            laptop.minutes = laptop.pluggedIn ? std::nullopt : std::optional(laptop.percent * 3);
        tell();
        return laptop.percent;
    }

    void checkAll() {
        ++checks;
        EXPECT_EQ(fakes.powerSources.snapshots, readings_);
        checkItem();
        const QWidget* open = popover();
        EXPECT_EQ(open != nullptr && open->isVisible(), popoverIsOpen);
        if (popoverIsOpen && open != nullptr)
            checkPopover();
        const QWidget* form = settings();
        EXPECT_EQ(form != nullptr && form->isVisible(), settingsAreOpen);
        if (settingsAreOpen && form != nullptr)
            checkSettings();
        EXPECT_EQ(fakes.mainLoop.waiting(), 1U + wakings_) << "nothing but the timer, and what follows waking";
        EXPECT_EQ(quits_, 0);
    }

    void checkItem() {
        const StatusItem::Content& shown = item().shown.back();
        EXPECT_EQ(shown.symbol, expected.symbol());
        EXPECT_EQ(shown.numberSymbol, expected.numberSymbol());
        EXPECT_EQ(shown.accessibilityDescription, "Battery");
        EXPECT_EQ(shown.title, expected.title());
        EXPECT_EQ(shown.widestTitle, expected.widestTitle());
        EXPECT_EQ(shown.toolTip, expected.toolTip());
        std::vector<std::string> menu;
        for (const auto& entry : item().menu)
            menu.push_back(entry.label);
        EXPECT_EQ(menu, expected.menu());
    }

    /// The text of a label that is seen.
    static std::optional<std::string> text(const char* name) {
        const auto* label = part<QLabel>(name);
        return label != nullptr && label->isVisible() ? std::optional(label->text().toStdString()) : std::nullopt;
    }
    static bool sees(const char* name) {
        const auto* widget = part<QWidget>(name);
        return widget != nullptr && widget->isVisible();
    }

    void checkPopover() {
        const bool has = expected.hasBattery();
        EXPECT_EQ(text("noBatteryTitle"), has ? std::nullopt : std::optional<std::string>("No battery found"));
        EXPECT_EQ(sees("battery"), has);
        EXPECT_TRUE(sees("note"));
        if (!has)
            return;
        checkRing();
        EXPECT_EQ(text("stateText"), expected.stateText());
        EXPECT_EQ(text("pluggedInText"), expected.pluggedInText());
        EXPECT_EQ(text("snoozeText"), expected.snoozeText());
        EXPECT_EQ(sees("cancelSnooze"), expected.snoozed.has_value());
        EXPECT_EQ(text("cycleValue"), expected.cycles());
        EXPECT_EQ(part<QProgressBar>("cycleBar")->value(), laptop.cycles);
        std::vector<std::string> details;
        for (const auto* value : popover()->findChildren<QLabel*>(QStringLiteral("detailValue"))) {
            if (!value->isVisible())
                continue;
            const auto* label = value->parentWidget()->findChild<QLabel*>(QStringLiteral("detailLabel"));
            details.push_back((label->text() + QStringLiteral(": ") + value->text()).toStdString());
        }
        EXPECT_EQ(details, expected.details());
        checkChart();
        checkTable();
    }

    /// As it is drawn, beside one of the same size that is told what to say.
    void checkRing() {
        auto* ring = part<QWidget>("ring");
        EXPECT_EQ(ring->accessibleName().toStdString(), expected.ringWords());
        const std::string color = expected.ringColor();
        const Tint tint = color == "red" ? Tint::red : color == "green" ? Tint::green : Tint::accent;
        RingView plain;
        plain.setFont(ring->font());
        QPalette card; // inherited, which a copy of the ring's palette would not be
        card.setColor(QPalette::Window, ring->palette().color(QPalette::Window));
        plain.setPalette(card);
        plain.setContent(expected.percent(), tintColor(tint, ring->palette(), Use::graphics),
                         trackColor(ring->palette()));
        const auto drawn = [](QWidget& widget) {
            return widget.grab().toImage().convertToFormat(QImage::Format_RGB32);
        };
        EXPECT_TRUE(drawn(*ring) == drawn(plain));
    }

    void checkChart() {
        const std::vector<PlainProgram::ChartPoint> points = expected.chart();
        EXPECT_EQ(part<QWidget>("historyChart")->accessibleName().toStdString(), expected.chartWords());
        EXPECT_EQ(sees("historyChartEmpty"), points.empty());
        EXPECT_EQ(sees("historyChartPlot"), !points.empty());
        if (points.empty())
            return;
        const auto* plot = part<HistoryPlot>("historyChartPlot");
        ASSERT_NE(plot, nullptr);
        const HistoryChart::Content& charted = plot->content();
        EXPECT_EQ(charted.since, Date(Duration(expected.charted - expected.days * 86400.0)));
        EXPECT_EQ(charted.now, Date(Duration(expected.charted)));
        std::size_t i = 0;
        std::int64_t segment = 0;
        for (const Point& point : charted.points) {
            if (point.seg != segment) { // where the line ends and begins again
                ASSERT_LT(i, points.size());
                ASSERT_FALSE(points[i++].percent) << i;
            }
            segment = point.seg;
            ASSERT_LT(i, points.size());
            ASSERT_EQ(point.date.time_since_epoch().count(), points[i].time) << i;
            ASSERT_EQ(point.pct, points[i++].percent) << i;
        }
        EXPECT_EQ(i, points.size());
        EXPECT_EQ(charted.limit.has_value(), expected.wants.switches["limitEnabled"]);
        EXPECT_EQ(plot->ruleText().isEmpty(), !expected.wants.switches["limitEnabled"]);
        if (charted.limit) {
            EXPECT_EQ(*charted.limit, expected.wants.numbers["limit"]);
        }
    }

    void checkTable() {
        const auto rows = expected.table();
        EXPECT_EQ(sees("dailySummary"), !rows.empty());
        EXPECT_EQ(sees("dailySummaryTable"), !rows.empty() && isTableOpen);
        if (!isTableOpen)
            return; // its cells are filled only while it is unfolded
        const char* columns[] = {"Day", "Avg", "Range", "Charging"};
        for (std::size_t row = 0; row < rows.size(); ++row) {
            for (std::size_t column = 0; column < 4; ++column) {
                const std::string name = "dailySummary." + std::to_string(row + 1) + "." + columns[column];
                const auto* cell = part<QLabel>(name);
                ASSERT_NE(cell, nullptr) << name;
                EXPECT_EQ(cell->text().toStdString(), rows[row][column]) << name;
            }
        }
        EXPECT_FALSE(sees(("dailySummary." + std::to_string(rows.size() + 1) + ".Day").c_str()));
    }

    void checkSettings() {
        const auto& wants = expected.wants;
        for (const auto& [key, on] : wants.switches)
            EXPECT_EQ(control<ToggleSwitch>(key)->isChecked(), on) << key;
        for (const char* key : {"limit", "low", "longHours", "lowPowerAt"})
            EXPECT_EQ(control<StepperBox>(key)->value(), wants.numbers.at(key)) << key;
        for (const auto& [key, start, end] : std::vector<std::tuple<std::string, std::string, std::string>>{
                 {"limit", "Alert when charging reaches ", "%"},
                 {"low", "Alert on battery at ", "% or less"},
                 {"lowPowerAt", "When on battery below ", "%"},
                 {"longHours", "Alert after ", " h plugged in above the charge limit"}})
            EXPECT_EQ(control<QLabel>(key + "Label")->text().toStdString(),
                      start + std::to_string(wants.numbers.at(key)) + end);
        for (const char* key : {"quietStart", "quietEnd"})
            EXPECT_EQ(QTime(0, 0).secsTo(control<QTimeEdit>(key)->time()), wants.numbers.at(key) * 60) << key;
        for (const auto& [key, sound] : wants.sounds)
            EXPECT_EQ(control<QComboBox>(key)->currentData().toString().toStdString(), sound) << key;
        for (const auto& [key, ruler] :
             std::vector<std::pair<const char*, const char*>>{{"limit", "limitEnabled"},
                                                              {"repeatReminder", "limitEnabled"},
                                                              {"limitSound", "limitEnabled"},
                                                              {"low", "lowEnabled"},
                                                              {"lowSound", "lowEnabled"},
                                                              {"lowPowerAt", "lowPowerEnabled"},
                                                              {"lowPowerSound", "lowPowerEnabled"},
                                                              {"longHours", "longEnabled"},
                                                              {"longSound", "longEnabled"},
                                                              {"healthSound", "healthEnabled"},
                                                              {"quietStart", "quietEnabled"},
                                                              {"quietEnd", "quietEnabled"}})
            EXPECT_EQ(control<QWidget>(key)->isEnabled(), wants.switches.at(ruler)) << key;
        EXPECT_EQ(control<ToggleSwitch>("launchAtLogin")->isChecked(), startsAtLogin);
    }
};

TEST_F(Surfaces, TellTheSameFromMorningToTheNextNoon) {
    step("launched", [&] { launch(); });
    step("a click on the item", [&] {
        popoverIsOpen = true;
        as(false, false, [&] { item().action(ScreenPoint{100, 10}); });
    });
    live(5, "charging, the popover open");
    step("the table unfolded", [&] {
        isTableOpen = true;
        part<QAbstractButton>("dailySummaryDisclosure")->click();
    });
    step("a week", [&] {
        expected.days = 7;
        expected.charted = now();
        part<QWidget>("rangePicker")->findChildren<QAbstractButton*>().at(1)->click();
    });
    live(4, "charging past the limit");
    step("snoozed from the notification", [&] {
        fakes.notificationCenter.press("SNOOZE");
        snoozes();
    });
    live(3, "snoozed");
    step("cancelled in the popover", [&] {
        part<LinkButton>("cancelSnooze")->click();
        cancels();
    });
    step("snoozed in the menu", [&] {
        choose("Snooze");
        snoozes();
    });
    step("the time is to be shown", [&] { edit("showTime", true); });
    live(20, "charging to the end, snoozed");
    step("closed by a click", [&] { closePopover(); });
    live(45, "full, past the end of the snooze");
    step("opened again", [&] { openPopover(); });
    step("the adapter is changed", [&] {
        laptop.adapterWatts = 45;
        report();
    });
    step("unplugged", [&] { unplug(); });
    live(6, "on battery");

    step("settings, from the popover", [&] {
        popoverIsOpen = false;
        settingsAreOpen = true;
        part<QPushButton>("settingsButton")->click();
    });
    step("no percentage", [&] { flip("showPercent"); });
    step("nothing beside the icon", [&] { flip("showTime"); });
    live(3, "nothing beside the icon");
    step("the time alone", [&] { flip("showTime"); });
    step("both", [&] { flip("showPercent"); });
    step("a higher limit", [&] {
        control<StepperBox>("limit")->stepUp();
        expected.wants.numbers["limit"] = 81;
        wanted();
    });
    step("no limit", [&] { flip("limitEnabled"); });
    step("quiet hours", [&] { flip("quietEnabled"); });
    step("quiet hours from half past ten", [&] {
        control<QTimeEdit>("quietStart")->setTime(QTime(22, 30));
        expected.wants.numbers["quietStart"] = 1350;
        wanted();
    });
    step("a sound", [&] {
        auto* picker = control<QComboBox>("lowSound");
        picker->setCurrentIndex(picker->findText(QStringLiteral("Frog")));
        Q_EMIT picker->activated(picker->currentIndex());
        expected.wants.sounds["lowSound"] = "Frog";
        wanted();
    });
    step("started at login", [&] {
        control<ToggleSwitch>("launchAtLogin")->click();
        startsAtLogin = true;
    });
    step("the popover beside the settings", [&] { openPopover(); });
    step("somebody else wants the limit, at 65 %", [&] {
        edit("limitEnabled", true);
        edit("limit", 65);
    });
    step("somebody else changes all the rest", [&] {
        for (const auto& [key, on] : std::map(expected.wants.switches))
            edit(key, !on);
        for (const auto& [key, number] : std::map(expected.wants.numbers))
            edit(key, number + 1);
        for (const auto& [key, sound] : std::map(expected.wants.sounds))
            edit(key, sound == "Frog" ? "none" : "Tink");
    });
    step("and back", [&] {
        for (const auto& [key, on] : std::map(expected.wants.switches))
            edit(key, !on);
    });
    step("settings closed", [&] { closeSettings(); });
    step("the login item is switched off by the desktop", [&] {
        fakes.loginItem.enabled = false;
        startsAtLogin = false;
        edit("low", 25);
    });
    step("settings again", [&] { openSettings(); });
    step("closed again", [&] { closeSettings(); });
    step("the popover", [&] { openPopover(); });
    live(120, "on battery, to the low");
    step("low power mode", [&] {
        laptop.minutes = 200; // lasts longer then
        tellAndSwitchLowPowerMode(true);
    });
    live(30, "saving power");
    step("not charging at the charger", [&] { plug(false); });
    step("no low power mode", [&] { tellAndSwitchLowPowerMode(false); });
    step("charging", [&] { plug(true); });
    live(9, "charging");

    step("the battery is taken out", [&] {
        laptop.hasBattery = false;
        report();
    });
    live(2, "without battery");
    step("closed without battery", [&] { closePopover(); });
    step("opened without battery", [&] { openPopover(); });
    step("the battery is put in", [&] {
        laptop.hasBattery = true;
        report();
    });
    live(2, "with the battery back");
    step("a worn battery instead", [&] {
        laptop.full = 3900;
        laptop.cycles = 812;
        report();
    });
    live(20, "worn");
    step("unplugged", [&] { unplug(); });
    live(2, "on battery");
    step("snoozed before the sleep", [&] {
        choose("Snooze");
        snoozes();
    });
    sleep(30min, [&] { laptop.percent -= 1; });
    live(5, "snoozed, awake");
    {
        const Environment zone{{"TZ", "EET-2EEST,M3.5.0/3,M10.5.0/4"}};
        live(2, "an hour to the east");
    }
    live(2, "back in the west");
    sleep(4h, [&] {
        laptop.percent -= 9;
        laptop.pluggedIn = true;
        laptop.charges = true;
        laptop.minutes = 40;
    }); // the snooze has run out meanwhile
    live(3, "plugged in while it slept");
    step("popover closed for the evening", [&] { closePopover(); });
    step("settings open in the evening", [&] { openSettings(); });
    live(5, "settings open");
    step("the history is reset", [&] {
        control<QPushButton>("resetHistory")->click();
        auto* question = settings()->findChild<QMessageBox*>(QStringLiteral("confirmReset"));
        ASSERT_NE(question, nullptr);
        for (QAbstractButton* button : question->buttons()) {
            if (button->text() == QStringLiteral("Reset"))
                return button->click();
        }
    });
    expected.history.clear();
    step("no history in the popover", [&] { openPopover(); });
    live(1, "two samples");
    step("settings closed", [&] { closeSettings(); });
    step("a day", [&] {
        expected.days = 1;
        expected.charted = now(); // alone
        part<QWidget>("rangePicker")->findChildren<QAbstractButton*>().at(0)->click();
    });
    step("unplugged", [&] { unplug(); });
    live(30, "on battery in the evening");
    step("snoozed late", [&] {
        choose("Snooze");
        snoozes();
    });
    step("the clock is set back by forty minutes", [&] { fakes.clock.setNow(fakes.clock.now() - 40min); });
    live(50, "with the clock set back, snoozed for longer than an hour");
    step("cancelled in the menu", [&] {
        choose("Cancel snooze");
        cancels();
    });
    step("plugged in", [&] { plug(true); });
    // To a little before midnight.
    const double midnight = morning + 17 * 3600 + 600;
    sleep(Duration(midnight - 300 - now()), [] {});
    live(10, "over midnight");
    ASSERT_TRUE(HasFailure() || plainTime(now()) == "00:05") << plainTime(now());
    sleep(Duration(midnight + 2 * 3600 + 40 * 60 - now()), [] {});
    step("snoozed across the change of the clock, to the second 02:40", [&] {
        choose("Snooze");
        snoozes();
    });
    ASSERT_TRUE(HasFailure() || (plainTime(now()) == "02:40" && plainTime(*expected.snoozed) == "02:40"));
    live(70, "summer time ends");
    EXPECT_TRUE(HasFailure() || !expected.snoozed) << "it has run out";
    step("unplugged in winter time", [&] { unplug(); });
    sleep(8h, [&] { laptop.percent -= 30; });
    live(20, "the last morning");
    EXPECT_GT(checks, 450);
    if (!HasFailure()) {
        // The table has both days, of which one had 25 hours.
        EXPECT_EQ(expected.table().size(), 2U);
        EXPECT_EQ(expected.table().at(0).at(0), "Sun 25");
    }
}

} // namespace
