// SPDX-License-Identifier: GPL-3.0-or-later
#include "gallery/SettingsStates.h"

#include "alerts/Prefs.h"
#include "gallery/Geometry.h"
#include "gallery/Pictures.h"
#include "shell/AppModel.h"
#include "support/FakePlatform.h"
#include "views/settings/SettingsView.h"
#include "views/settings/SettingsWindow.h"
#include "views/text/SettingsForm.h"

#include <QAbstractButton>
#include <QCoreApplication>
#include <QGuiApplication>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>

#include <string>
#include <vector>

namespace {

/// The cards have another background colour than the window.
constexpr double mostDrawn = 0.97;

struct State {
    const char* name;
    std::function<void(FakePlatform&)> arrange; ///< runs before the window is made
    std::function<void(SettingsView&)> act;     ///< the user's actions in it
    const char* seen = "limitEnabled";          ///< the control to scroll to
};

void nothing(SettingsView& /*view*/) {}

void switchOn(SettingsView& view, const char* name) {
    view.findChild<QAbstractButton*>(QLatin1String(name))->click();
}

void setAll(FakePlatform& fake, bool on) {
    for (const SettingsSection& section : settingsSections()) {
        for (const SettingsControl& control : section.controls) {
            if (control.kind == SettingsControl::Kind::toggle)
                fake.defaults.setObject(control.key, on);
        }
    }
}

const std::vector<State> states{
    {"settings", [](FakePlatform&) {}, nothing},
    {"settings-end", [](FakePlatform&) {}, nothing, "resetHistory"},
    {"settings-all-on", [](FakePlatform& fake) { setAll(fake, true); }, nothing, "quietEnd"},
    {"settings-all-off", [](FakePlatform& fake) { setAll(fake, false); }, nothing},
    {"settings-firmware-limit",
     [](FakePlatform& fake) {
         fake.powerSources.packLimits = {
             {.device = "BAT0", .model = "5B10V98091", .design = 80400, .tellsLimit = true, .limit = 80}};
     },
     nothing, "quietEnd"},
    {"settings-beyond-the-range",
     [](FakePlatform& fake) {
         fake.defaults.setObject("limit", 150);
         fake.defaults.setObject("low", -5);
         fake.defaults.setObject("lowSound", "Quack");
         fake.defaults.setObject("longHours", 1'000'000);
     },
     nothing},
    {"settings-login-failed", [](FakePlatform& fake) { fake.loginItem.failure = "Read-only file system"; },
     [](SettingsView& view) { switchOn(view, "launchAtLogin"); }, "resetHistory"},
    {"settings-outside-a-bundle", [](FakePlatform& fake) { fake.bundle.name.reset(); }, nothing, "resetHistory"},
};

void draw(const State& state, const QString& file) {
    FakePlatform fake;
    fake.defaults.registerDefaults(Prefs::defaults());
    state.arrange(fake);
    AppModel model(fake.platform());
    model.refresh(AppModel::Reason::launch);
    auto* view = new SettingsView(model, fake.platform());
    SettingsWindow window(view);
    window.present();
    state.act(*view);
    QCoreApplication::processEvents();
    auto* area = window.findChild<QScrollArea*>();
    if (std::string_view(state.seen) == "resetHistory")
        area->verticalScrollBar()->setValue(area->verticalScrollBar()->maximum());
    else
        area->ensureWidgetVisible(view->findChild<QWidget*>(QLatin1String(state.seen)));
    QCoreApplication::processEvents();
    if (!QGuiApplication::primaryScreen()->availableGeometry().contains(window.frameGeometry()))
        fail("it leaves the screen", file);
    checkSettings(window, *view, keep(window, file, mostDrawn), file);
}

} // namespace

void drawSettings(const std::function<QString(const char*)>& file) {
    for (const State& state : states)
        draw(state, file(state.name));
}
