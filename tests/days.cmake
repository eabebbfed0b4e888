# SPDX-License-Identifier: GPL-3.0-or-later
# Runs the program with its windows through days of virtual time.

add_executable(velmora_day_tests
    platform/linux/session/QtMainLoopTest.cpp
    shell/DayMain.cpp
    shell/DesktopDayTest.cpp
    shell/SurfacesTest.cpp
    support/PlainProgram.cpp
)
target_link_libraries(velmora_day_tests PRIVATE velmora_app velmora_desktop_test_support velmora_options GTest::gtest
    Qt6::Test)
target_precompile_headers(velmora_day_tests REUSE_FROM velmora_desktop_test_support)
add_dependencies(velmora_day_tests icons percent_glyphs)
gtest_discover_tests(velmora_day_tests DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300)
