// SPDX-License-Identifier: GPL-3.0-or-later
#include "alerts/FirmwareLimits.h"
#include "alerts/RunningNotice.h"
#include "history/HistoryStore.h"
#include "platform/ApplicationId.h"
#include "platform/linux/appearance/AppearanceWatch.h"
#include "platform/linux/bus/SystemBus.h"
#include "platform/linux/dialogs/QtDialogs.h"
#include "platform/linux/files/BackgroundFiles.h"
#include "platform/linux/files/JsonUserDefaults.h"
#include "platform/linux/files/PosixFiles.h"
#include "platform/linux/files/XdgFolders.h"
#include "platform/linux/notifications/FreedesktopNotifications.h"
#include "platform/linux/notifications/NotificationConsent.h"
#include "platform/linux/panel/PanelBar.h"
#include "platform/linux/panel/XEmbedItem.h"
#include "platform/linux/power/PowerProfiles.h"
#include "platform/linux/power/ProfileHold.h"
#include "platform/linux/power/SysfsPowerSources.h"
#include "platform/linux/session/DesktopSessionEvents.h"
#include "platform/linux/session/Display.h"
#include "platform/linux/session/ExecutableBundle.h"
#include "platform/linux/session/LibraryMessages.h"
#include "platform/linux/session/LogindSleep.h"
#include "platform/linux/session/QtMainLoop.h"
#include "platform/linux/session/SessionApplication.h"
#include "platform/linux/session/SystemCalendar.h"
#include "platform/linux/session/SystemClock.h"
#include "platform/linux/session/TerminationSignals.h"
#include "platform/linux/session/XdgAutostart.h"
#include "platform/linux/sound/CanberraSounds.h"
#include "platform/linux/windows/WaylandWindows.h"
#include "platform/linux/windows/X11Windows.h"
#include "platform/qt/CodeMemory.h"
#include "platform/qt/HeapMemory.h"
#include "platform/qt/ProgramFiles.h"
#include "shell/AppDelegate.h"
#include "views/style/DesktopPalette.h"

#include <QApplication>
#include <QDBusConnection>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <tuple>
#include <utility>

namespace {

[[noreturn]] void cannotStart(const char* why) {
    std::fprintf(stderr, "velmora: %s\n", why);
    std::_Exit(EXIT_FAILURE); // also called while Qt starts, when an orderly exit is not possible
}

constexpr const char* noDisplay = "there is no display that it could show the battery on";
constexpr const char* noWaylandDisplay = "there is no display that it could show the battery on; on Wayland that needs "
                                         "Qt's plugin, in Debian the package qt6-wayland";

/// The panel asks for everything within a few milliseconds, unless the machine is very busy.
constexpr Duration untilPanelHasItem{0.1};

/// A month of history takes a third as much processor time as the start; the item comes first. Not longer, because
/// details that are opened at once grow when the history is there.
constexpr std::chrono::milliseconds untilHistoryIsRead{50};

/// By then everything that only the start needed has been freed.
constexpr Duration untilStartIsOver{3};

/// The program writes no log, so Qt's messages are dropped. Qt can fail in only one way while it starts; set a
/// breakpoint here to see how.
void handleQtMessage(QtMsgType type, const QMessageLogContext& /*context*/, const QString& message) {
    if (type == QtFatalMsg && QCoreApplication::startingUp())
        cannotStart(isOnlyWayland() ? noWaylandDisplay : noDisplay);
    noticeDisplayLoss(message);
}

std::unique_ptr<DesktopWindows> desktopWindows() {
    if (QGuiApplication::platformName() == QLatin1String("wayland"))
        return std::make_unique<WaylandWindows>();
    return std::make_unique<X11Windows>();
}

/// logind lets a machine wait for 5 seconds before it sleeps, and nobody waits longer for a program to end.
constexpr std::chrono::milliseconds untilDiskIsGivenUp{4000};

/// What has to be ended while the main loop runs. Qt calls exit() from inside the loop when the X server goes away,
/// which is how many sessions end; an atexit handler can reach this only through a static.
struct Running {
    AppDelegate* delegate = nullptr;
    BackgroundFiles* files = nullptr;
    QtMainLoop* mainLoop = nullptr;
    SessionApplication* session = nullptr;
} running;

void waitForFiles(BackgroundFiles& files) {
    if (!files.finish(untilDiskIsGivenUp))
        std::_Exit(EXIT_SUCCESS);
}

void terminateRunning() {
    const Running ending = std::exchange(running, {});
    if (ending.delegate == nullptr)
        return;
    ending.session->release(); // whoever starts it again does not wait for the disk
    ending.delegate->applicationWillTerminate();
    if (ending.delegate->awaitsHistory()) { // it ends as soon as it has started, or as another that wrote the history
        waitForFiles(*ending.files);
        ending.mainLoop->runPending();
        ending.delegate->applicationWillTerminate();
    }
    waitForFiles(*ending.files);
    ending.mainLoop->runPending(); // what was written need not be written again
}

} // namespace

int main(int argc, char** argv) {
    giveBackLargeBlocks();
    TerminationSignals signalEvents;
    qInstallMessageHandler(handleQtMessage);
    dropLibraryMessages();
    if (!prepareDisplay())
        cannotStart(noDisplay);
    QApplication::setQuitOnLastWindowClosed(false);
    // A session manager would restart us in addition to the entry that starts us at login, and the second start opens
    // the details.
    QApplication::setAttribute(Qt::AA_DisableSessionManager);
    QApplication::setDesktopFileName(QLatin1String(applicationId));
    QApplication::setApplicationName(QStringLiteral("Velmora"));
    const QByteArray desktops = qgetenv("XDG_CURRENT_DESKTOP");
    const QByteArray themeChoice = qgetenv("QT_QPA_PLATFORMTHEME");
    if (refusesQtPlatformTheme(desktops.toStdString(), themeChoice.toStdString()))
        QApplication::setDesktopSettingsAware(false);
    QApplication application(argc, argv);

    const QDBusConnection sessionBus = QDBusConnection::sessionBus();
    if (!sessionBus.isConnected())
        cannotStart("there is no session bus, over which panels show their items");
    SessionApplication session(sessionBus);
    if (!session.claim()) {
        if (session.activateOther())
            return EXIT_SUCCESS;
        if (!session.claim()) // the other instance has not just ended either
            cannotStart("the session bus does not let it have its name");
    }

    QtMainLoop mainLoop;
    SystemClock clock;
    SystemCalendar calendar;
    PosixFiles disk(xdgDataHome(), xdgStateHome());
    BackgroundFiles files(disk, mainLoop, untilHistoryIsRead);
    signalEvents.setLastResort([&files] {
        files.updateAtEndNow();
        std::ignore = files.finish(untilDiskIsGivenUp / 2);
    });
    const std::filesystem::path defaultsFile = xdgConfigHome() / "Velmora/defaults.json";
    JsonUserDefaults defaults(defaultsFile, files, mainLoop);
    SysfsPowerSources powerSources("/sys", clock, mainLoop);
    SystemBus systemBus(SystemBus::usualSocket(), mainLoop);
    PowerProfiles powerSaving(systemBus, "/sys");
    ProfileHold lowPowerSwitch(systemBus);
    LogindSleep sleep(systemBus, [&files](auto task) { files.afterUpdates(untilDiskIsGivenUp, std::move(task)); });
    DesktopSessionEvents sessionEvents(sessionBus, signalEvents, sleep);
    ExecutableBundle bundle(runningExecutable());
    const std::filesystem::path stateFolder = xdgStateHome() / "Velmora";
    CanberraSounds sounds(programFile("share/sounds/velmora"));
    FreedesktopNotifications notifications(
        sessionBus, mainLoop, sounds, [&sounds](std::string_view name) { return sounds.file(name); },
        NotificationConsent(files, stateFolder),
        programFile("share/icons/hicolor/scalable/apps") / (std::string(applicationId) + ".svg"));
    MakeTrayItem makeTrayItem;
    if (XEmbedItem::isPossible())
        makeTrayItem = [](const GlyphImages& glyphs) { return std::make_unique<XEmbedItem>(glyphs); };
    RunningNotice runningNotice(files, stateFolder, notifications, bundle);
    PanelBar statusBar(sessionBus, mainLoop, programFile("share/velmora/icons"), makeTrayItem, [&runningNotice] {
        if (!XEmbedItem::hasTray())
            runningNotice.show();
    });
    const std::unique_ptr<DesktopWindows> windows = desktopWindows();
    // A user who has chosen Qt's look gets Qt's dialogs too.
    QtDialogs dialogs(themeChoice.isEmpty() ? std::optional(sessionBus) : std::nullopt);
    XdgAutostart loginItem(bundle, files, xdgConfigHome(), xdgConfigFolders());

    AppDelegate delegate({powerSources, powerSaving, lowPowerSwitch, sessionEvents, mainLoop, clock, calendar, defaults,
                          files, statusBar, *windows, dialogs, notifications, bundle, sounds, loginItem},
                         [] { QCoreApplication::quit(); });
    QObject::connect(&session, &SessionApplication::activated, &session, [&delegate] { delegate.showDetails(); });
    delegate.applicationDidFinishLaunching();
    sessionEvents.start();
    notifications.start(); // before anything can cause a reminder
    AppearanceWatch appearance(sessionBus,
                               [palette = QApplication::palette(), font = QApplication::font()](const auto& changed) {
                                   QApplication::setPalette(desktopPalette(palette, changed));
                                   QApplication::setFont(desktopFont(font, changed));
                               });
    // The panel item does not wait for any of these, so the panel gets its answers first.
    mainLoop.after(untilPanelHasItem, [&] {
        powerSaving.start();
        lowPowerSwitch.start();
        sleep.start();
        systemBus.start();
        if (followsPortal(desktops.toStdString(), themeChoice.toStdString()))
            appearance.start(isXfce(desktops.toStdString()));
        else if (followsKde(desktops.toStdString(), themeChoice.toStdString()))
            appearance.startOnKde(files, xdgConfigHome() / "kdeglobals");
        for (const auto& file : {HistoryStore::file(files), FirmwareLimits::file(files), defaultsFile,
                                 NotificationConsent::file(stateFolder), RunningNotice::file(stateFolder)})
            files.removeLeftovers(file);
        if (const auto identifier = bundle.identifier())
            files.removeLeftovers(XdgAutostart::file(xdgConfigHome(), *identifier));
    });
    mainLoop.after(untilStartIsOver, [] {
        giveBackFreeMemory();
        giveBackCode();
    });
    running = {&delegate, &files, &mainLoop, &session};
    std::atexit(terminateRunning);
    beforeDisplayLoss(terminateRunning);
    const int code = QApplication::exec();
    terminateRunning();
    signalEvents.setLastResort([] {});
    return code;
}
