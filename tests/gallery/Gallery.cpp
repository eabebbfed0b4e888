// SPDX-License-Identifier: GPL-3.0-or-later
// Draws pictures of the popover and the settings window in every state: velmora_gallery FOLDER [HEIGHT]. Qt's own
// QT_SCALE_FACTOR sets the scale, LC_ALL the clock, VELMORA_POINTS the size of the desktop's font. With HEIGHT the
// screen is that high, and only the settings window is drawn. It fails when one of the pictures shows nothing, when the
// settings window leaves the screen, or when what Geometry.h says does not hold.
#include "alerts/Prefs.h"
#include "gallery/Geometry.h"
#include "gallery/Pictures.h"
#include "gallery/SettingsStates.h"
#include "support/FakeDesktopWindows.h"
#include "support/PopoverScene.h"
#include "views/popover/Popover.h"
#include "views/popover/PopoverView.h"
#include "views/style/DesktopPalette.h"
#include "views/style/ViewStyle.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QLayout>
#include <QScreen>
#include <QStyle>
#include <QTemporaryDir>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

using namespace std::chrono_literals;

namespace {

struct Scene : PopoverScene {
    bool isUnfolded = false;
    bool isWeek = false;
    bool isDay = false; ///< the history is one day long
    bool floats = true; ///< over a desktop that can show shadows
};

struct State {
    const char* name;
    std::function<void(Scene&)> arrange;
};

const std::vector<State> states{
    {"no-battery", [](Scene& s) { s.fake.powerSources.sources = std::vector<std::optional<Value>>(); }},
    {"20-percent-on-battery",
     [](Scene& s) {
         s.battery(20, false, false, 47);
         s.registry(312, 4600, -910);
     }},
    {"charging",
     [](Scene& s) {
         s.battery(64, true, true, 45);
         s.registry(312, 4600, 2900);
     }},
    {"held-at-the-limit", [](Scene& s) { s.registry(312, 4600, 0); }},
    {"without-shadow", [](Scene& s) { s.floats = false; }},
    {"full",
     [](Scene& s) {
         s.battery(100, true, false);
         s.registry(312, 4600, 0);
     }},
    {"snoozed", [](Scene& s) { Prefs::setSnoozeUntil(s.fake.defaults, s.fake.clock.now() + 43min); }},
    {"health-good-650-cycles", [](Scene& s) { s.registry(650, 4700); }},
    {"health-fair-750-cycles", [](Scene& s) { s.registry(750, 4300); }},
    {"health-worn-1200-cycles", [](Scene& s) { s.registry(1200, 3600); }},
    {"empty-history", [](Scene& s) { s.fake.files.files.clear(); }},
    {"one-day",
     [](Scene& s) {
         s.past(1);
         s.isDay = true;
         s.isUnfolded = true;
     }},
    {"seven-days-with-gaps", [](Scene& s) { s.isUnfolded = s.isWeek = true; }},
    {"limit-off", [](Scene& s) { s.fake.defaults.setObject("limitEnabled", Value(false)); }},
    {"limit-100", [](Scene& s) { s.fake.defaults.setObject("limit", Value(100)); }},
};

/// The popover is mostly empty.
constexpr double mostDrawn = 0.5;

void draw(const State& state, const QString& file) {
    Scene scene;
    state.arrange(scene);
    if (!scene.fake.files.files.empty() && !scene.isDay)
        scene.past(7);
    FakeDesktopWindows desktop;
    desktop.hasShadows = scene.floats;
    Popover popover(&desktop);
    auto* view = new PopoverView(
        scene.started(), scene.fake.platform(), [] {}, [] {});
    popover.setContent(view);
    QObject::connect(view, &PopoverView::resized, &popover, &Popover::place);
    if (scene.isWeek)
        view->findChild<QWidget*>(QStringLiteral("rangePicker"))->findChildren<QAbstractButton*>().at(1)->click();
    view->rebuild();
    popover.showAt(std::nullopt);
    if (scene.isUnfolded)
        view->findChild<QAbstractButton*>(QStringLiteral("dailySummaryDisclosure"))->click();
    QCoreApplication::processEvents();
    checkPopover(popover, *view, keep(popover, file, mostDrawn), file);
}

/// The popover is as high as its content wants to be, at once, after everything that changes that.
void checkHeights() {
    Scene scene;
    Popover popover;
    auto* view = new PopoverView(
        scene.started(), scene.fake.platform(), [] {}, [] {});
    popover.setContent(view);
    QObject::connect(view, &PopoverView::resized, &popover, &Popover::place);
    view->rebuild();
    popover.showAt(std::nullopt);
    const auto click = [&](const char* name) { view->findChild<QAbstractButton*>(QLatin1String(name))->click(); };
    const auto refresh = [&] {
        scene.started().refresh(AppModel::Reason::event);
        scene.fake.mainLoop.runDue();
    };
    const std::vector<std::pair<const char*, std::function<void()>>> acts{
        {"unfold", [&] { click("dailySummaryDisclosure"); }},
        {"fold", [&] { click("dailySummaryDisclosure"); }},
        {"range",
         [&] {
             view->findChild<QWidget*>(QStringLiteral("rangePicker"))->findChildren<QAbstractButton*>().at(1)->click();
         }},
        {"snooze",
         [&] {
             scene.started().snooze();
             scene.fake.mainLoop.runDue();
         }},
        {"cancel",
         [&] {
             click("cancelSnooze");
             scene.fake.mainLoop.runDue();
         }},
        {"a long state",
         [&] {
             scene.battery(64, true, true);
             refresh();
         }},
        {"no battery",
         [&] {
             scene.fake.powerSources.sources = std::vector<std::optional<Value>>();
             refresh();
         }},
        {"a battery",
         [&] {
             scene.battery(64, false, false);
             refresh();
         }},
    };
    for (const auto& [name, act] : acts) {
        act();
        const int height = popover.height();
        for (int i = 0; i < 10; ++i) // more than there are levels of layouts
            QCoreApplication::processEvents();
        view->layout()->invalidate();
        const int wanted = view->layout()->totalHeightForWidth(popoverWidth);
        if (height != std::min(wanted, popover.screen()->availableGeometry().height()))
            fail("the height is not what the content wants", QLatin1String(name));
    }
}

/// A screen of that height.
void makeScreen(const QTemporaryDir& folder, const char* height) {
    const QString path = folder.filePath(QStringLiteral("screens.json"));
    QFile file(path);
    file.open(QIODevice::WriteOnly);
    file.write(R"({"screens":[{"name":"one","x":0,"y":0,"width":4000,"height":)");
    file.write(height);
    file.write(R"(,"logicalDpi":96,"dpr":1}]})");
    qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" + QFile::encodeName(path));
}

} // namespace

int main(int argc, char** argv) {
    const QTemporaryDir temporary;
    const bool isLow = argc == 3;
    makeScreen(temporary, isLow ? argv[2] : "4000"); // high enough for everything at any scale
    QApplication application(argc, argv);
    if (argc != 2 && !isLow) {
        std::fprintf(stderr, "usage: velmora_gallery FOLDER [HEIGHT]\n");
        return EXIT_FAILURE;
    }
    QApplication::setStyle(QStringLiteral("Fusion"));
    if (const int points = qEnvironmentVariableIntValue("VELMORA_POINTS"); points > 0) {
        QFont font = QApplication::font();
        font.setPointSize(points);
        QApplication::setFont(font);
    }
    const QDir folder(QString::fromLocal8Bit(argv[1]));
    folder.mkpath(QStringLiteral("."));
    const QString scale = QString::number(qRound(application.devicePixelRatio() * 100));
    const QPalette light = QApplication::style()->standardPalette();
    for (const auto& [look, isDark, hasHighContrast] :
         {std::tuple("light", false, false), std::tuple("dark", true, false), std::tuple("high-contrast", false, true),
          std::tuple("high-contrast-dark", true, true)}) {
        Appearance appearance;
        appearance.isDark = isDark;
        appearance.hasHighContrast = hasHighContrast;
        QApplication::setPalette(desktopPalette(light, appearance));
        const auto file = [&](const char* name) {
            return folder.filePath(QStringLiteral("%1-%2-%3.png").arg(QLatin1String(name), QLatin1String(look), scale));
        };
        drawSettings(file);
        checkHeights();
        for (const State& state : states) {
            if (!isLow)
                draw(state, file(state.name));
        }
    }
    return EXIT_SUCCESS;
}
