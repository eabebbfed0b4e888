// SPDX-License-Identifier: GPL-3.0-or-later
// Draws the popover in every state to look at: velmora_gallery FOLDER. The toolkit's own QT_SCALE_FACTOR sets the
// scale. It fails when there is nothing to see in one of the pictures.
#include "alerts/Prefs.h"
#include "support/PopoverScene.h"
#include "views/DesktopPalette.h"
#include "views/Popover.h"
#include "views/PopoverView.h"
#include "views/ViewStyle.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QPixmap>
#include <QSet>
#include <QStyle>
#include <QTemporaryDir>

#include <chrono>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

using namespace std::chrono_literals;

namespace {

struct Scene : PopoverScene {
    bool isUnfolded = false;
    bool isWeek = false;
    bool isDay = false; ///< there is no more history than that
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

[[noreturn]] void fail(const char* why, const QString& file) {
    std::fprintf(stderr, "velmora_gallery: %s: %s\n", why, qPrintable(file));
    std::exit(EXIT_FAILURE);
}

/// Whether there is something to see: text and lines have more than a few colours, and all sides of them are free.
bool showsSomething(const QImage& picture, const QColor& background) {
    QSet<QRgb> colors;
    qsizetype drawn = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const QRgb color = picture.pixel(x, y);
            colors.insert(color);
            drawn += color != background.rgb() ? 1 : 0;
        }
    }
    const double share = static_cast<double>(drawn) / (static_cast<double>(picture.width()) * picture.height());
    return colors.size() > 30 && share > 0.03 && share < 0.5;
}

void draw(const State& state, const QString& file) {
    Scene scene;
    state.arrange(scene);
    if (!scene.fake.files.files.empty() && !scene.isDay)
        scene.past(7);
    Popover popover;
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
    if (!popover.grab().save(file))
        fail("cannot write", file);
    if (!showsSomething(QImage(file), popover.palette().color(QPalette::Window)))
        fail("there is nothing to see", file);
}

/// A screen that is high enough for everything, at any scale.
void makeScreen(const QTemporaryDir& folder) {
    const QString path = folder.filePath(QStringLiteral("screens.json"));
    QFile file(path);
    file.open(QIODevice::WriteOnly);
    file.write(R"({"screens":[{"name":"high","x":0,"y":0,"width":4000,"height":4000,"logicalDpi":96,"dpr":1}]})");
    qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" + QFile::encodeName(path));
}

} // namespace

int main(int argc, char** argv) {
    const QTemporaryDir temporary;
    makeScreen(temporary);
    QApplication application(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: velmora_gallery FOLDER\n");
        return EXIT_FAILURE;
    }
    QApplication::setStyle(QStringLiteral("Fusion"));
    QDir::setSearchPaths(QLatin1String(glyphFolder), {QStringLiteral(VELMORA_ICONS "/hicolor/scalable/status")});
    const QDir folder(QString::fromLocal8Bit(argv[1]));
    folder.mkpath(QStringLiteral("."));
    const QString scale = QString::number(qRound(application.devicePixelRatio() * 100));
    const QPalette light = QApplication::style()->standardPalette();
    for (const State& state : states) {
        for (const bool dark : {false, true}) {
            QApplication::setPalette(desktopPalette(light, {.isDark = dark, .accent = {}, .font = {}}));
            draw(state, folder.filePath(QStringLiteral("%1-%2-%3.png")
                                            .arg(QLatin1String(state.name),
                                                 dark ? QStringLiteral("dark") : QStringLiteral("light"), scale)));
        }
    }
    return EXIT_SUCCESS;
}
