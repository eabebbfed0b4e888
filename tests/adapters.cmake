# SPDX-License-Identifier: GPL-3.0-or-later
# Tests the adapters against the real thing: sysfs and udev as umockdev presents them, and files in a temporary folder.

find_package(Qt6 6.4 REQUIRED COMPONENTS Test)
pkg_check_modules(umockdev REQUIRED IMPORTED_TARGET umockdev-1.0)

add_library(velmora_desktop_test_support STATIC support/Fixture.cpp)
target_include_directories(velmora_desktop_test_support PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})
target_compile_definitions(velmora_desktop_test_support
    PUBLIC VELMORA_FIXTURES="${CMAKE_CURRENT_SOURCE_DIR}/fixtures/power_supply")
target_link_libraries(velmora_desktop_test_support PUBLIC velmora_linux velmora_test_support PRIVATE velmora_options)
velmora_precompile(velmora_desktop_test_support <gtest/gtest.h> <QApplication> <QDBusArgument>
    <QDBusConnectionInterface> <QDBusMessage> <QDBusVirtualObject> <QLabel> <QPushButton>)

add_executable(velmora_adapter_tests
    history/HistoryDiskTest.cpp
    history/HistoryKillTest.cpp
    history/HistoryZonesTest.cpp
    platform/linux/windows/ActivationTokenTest.cpp
    platform/linux/session/AutostartEntryTest.cpp
    platform/linux/session/AutostartLaunchTest.cpp
    platform/linux/sound/CanberraSoundsTest.cpp
    platform/qt/CodeMemoryTest.cpp
    platform/linux/panel/BatteryPictureTest.cpp
    platform/linux/panel/DBusMenuTest.cpp
    platform/linux/session/ExecutableBundleTest.cpp
    platform/linux/power/FixtureLimitsTest.cpp
    platform/linux/power/FixturesTest.cpp
    platform/linux/notifications/FreedesktopNotificationsTest.cpp
    platform/linux/panel/GlyphImagesTest.cpp
    platform/linux/files/BackgroundFilesTest.cpp
    platform/linux/files/DiskThreadTest.cpp
    platform/linux/files/JsonUserDefaultsTest.cpp
    platform/linux/session/LibraryMessagesTest.cpp
    platform/linux/session/LogindSleepTest.cpp
    platform/linux/Main.cpp
    platform/linux/notifications/NotificationDaemonTest.cpp
    platform/linux/notifications/NotificationSoundTest.cpp
    platform/linux/panel/PanelBarTest.cpp
    platform/linux/dialogs/PortalSaveDialogTest.cpp
    platform/linux/appearance/KdeSettingsTest.cpp
    platform/linux/appearance/PortalSettingsTest.cpp
    platform/linux/files/PosixFilesTest.cpp
    platform/linux/power/PowerProfilesTest.cpp
    platform/linux/power/ProfileHoldTest.cpp
    platform/linux/dialogs/QtDialogsTest.cpp
    platform/linux/session/SessionApplicationTest.cpp
    platform/linux/panel/StatusNotifierItemTest.cpp
    platform/linux/power/SysfsPowerSourcesTest.cpp
    platform/linux/session/SystemCalendarTest.cpp
    platform/linux/session/XdgAutostartTest.cpp
    platform/linux/files/XdgFoldersTest.cpp
    platform/linux/appearance/XfconfSettingsTest.cpp
    resources/GlyphFilesTest.cpp
    shell/AppDelegateTest.cpp
    support/DiskFaults.cpp
    support/FakeNotificationDaemon.cpp
    support/PrivateBus.cpp
    support/Umockdev.cpp
    support/Watcher.h
    views/style/AccessibilityTest.cpp
    views/style/BalancedLabelTest.cpp
    views/style/ContrastTest.cpp
    views/style/DesktopPaletteTest.cpp
    views/style/ViewStyleTest.cpp
    views/popover/HistoryPlotTest.cpp
    views/popover/PopoverTest.cpp
    views/popover/PopoverViewTest.cpp
    views/popover/RingViewTest.cpp
    views/settings/SettingsViewTest.cpp
    views/style/OneFamilyTest.cpp
    views/style/RightToLeftTest.cpp
    views/text/TimeTextTest.cpp
)
target_link_libraries(velmora_adapter_tests PRIVATE velmora_app velmora_linux velmora_desktop_test_support velmora_options
    GTest::gtest PkgConfig::umockdev Qt6::Svg Qt6::Test)
# The tests save pictures here for people to look at.
target_compile_definitions(velmora_adapter_tests PRIVATE VELMORA_PICTURES="${CMAKE_BINARY_DIR}/pictures"
    VELMORA_FONTS="${CMAKE_CURRENT_SOURCE_DIR}/fixtures/fonts")
file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/pictures)
add_dependencies(velmora_adapter_tests icons percent_glyphs)
target_precompile_headers(velmora_adapter_tests REUSE_FROM velmora_desktop_test_support)
set_target_properties(velmora_adapter_tests PROPERTIES AUTOMOC ON CROSSCOMPILING_EMULATOR umockdev-wrapper)
gtest_discover_tests(velmora_adapter_tests DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 60)

# The built alert sounds, and the libcanberra code that plays them.
target_compile_definitions(velmora_adapter_tests PRIVATE VELMORA_SOUNDS="${CMAKE_BINARY_DIR}/share/sounds/velmora")
target_sources(velmora_adapter_tests PRIVATE ${CMAKE_SOURCE_DIR}/App/platform/linux/sound/CanberraOutput.cpp)
target_link_libraries(velmora_adapter_tests PRIVATE PkgConfig::canberra)
add_dependencies(velmora_adapter_tests sounds velmora_sound)

# Draws pictures of the popover and the settings in every state, for people to look at.
add_executable(velmora_gallery gallery/Gallery.cpp gallery/Geometry.cpp gallery/Pictures.cpp gallery/SettingsStates.cpp)
target_link_libraries(velmora_gallery PRIVATE velmora_views velmora_test_support velmora_options)
add_dependencies(velmora_gallery icons percent_glyphs)
foreach(scale 1 2)
    add_test(NAME gallery.scale${scale} COMMAND velmora_gallery ${CMAKE_BINARY_DIR}/gallery)
    set_tests_properties(gallery.scale${scale} PROPERTIES ENVIRONMENT "QT_SCALE_FACTOR=${scale}" TIMEOUT 180)
endforeach()
foreach(points 9 16)
    add_test(NAME gallery.points${points} COMMAND velmora_gallery ${CMAKE_BINARY_DIR}/gallery/points-${points})
    set_tests_properties(gallery.points${points} PROPERTIES ENVIRONMENT "VELMORA_POINTS=${points}" TIMEOUT 180)
endforeach()
add_test(NAME gallery.twelve_hours COMMAND velmora_gallery ${CMAKE_BINARY_DIR}/gallery/twelve-hours)
set_tests_properties(gallery.twelve_hours PROPERTIES ENVIRONMENT "LC_ALL=en_US.UTF-8" TIMEOUT 60)
add_test(NAME gallery.low_screen COMMAND velmora_gallery ${CMAKE_BINARY_DIR}/gallery/low-screen 600)
set_tests_properties(gallery.low_screen PROPERTIES TIMEOUT 60)

# Records machines as fixtures, and reads them as the program does.
add_executable(velmora_check_fixture fixtures/CheckFixture.cpp)
target_link_libraries(velmora_check_fixture PRIVATE velmora_desktop_test_support velmora_options)
add_test(NAME tools.fixture COMMAND /usr/bin/python3 -m unittest --verbose test_fixture
         WORKING_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR}/tools)
set_tests_properties(tools.fixture PROPERTIES TIMEOUT 300 ENVIRONMENT
    "PYTHONDONTWRITEBYTECODE=1;VELMORA_CHECK_FIXTURE=$<TARGET_FILE:velmora_check_fixture>")
