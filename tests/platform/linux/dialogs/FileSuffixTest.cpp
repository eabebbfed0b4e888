// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/dialogs/FileSuffix.h"

#include <gtest/gtest.h>

TEST(FileSuffix, IsAddedWhereTheNameHasNone) {
    const struct {
        const char* file;
        const char* suffix;
        const char* expected;
    } rows[] = {
        {"battery", "csv", "battery.csv"},
        {"/home/me/battery", "csv", "/home/me/battery.csv"},
        {"Akku \xE2\x99\xAA", "csv", "Akku \xE2\x99\xAA.csv"},
        {"battery.csv", "csv", "battery.csv"},
        {"battery.CSV", "csv", "battery.CSV"},
        {"battery.txt", "csv", "battery.txt"},
        {"battery.tar.gz", "csv", "battery.tar.gz"},
        {"battery.", "csv", "battery."},
        {".battery", "csv", ".battery.csv"},
        {".csv", "csv", ".csv.csv"},
        {"/home/me/.csv", "csv", "/home/me/.csv.csv"},
        {".battery.txt", "csv", ".battery.txt"},
        {"a.b/c", "csv", "a.b/c.csv"},
        {"a.b/.c", "csv", "a.b/.c.csv"},
        {"a.b/c.d", "csv", "a.b/c.d"},
        {"battery", "", "battery"},
        {".battery", "", ".battery"},
        {"", "csv", ".csv"},
        {"", "", ""},
    };
    for (const auto& [file, suffix, expected] : rows)
        EXPECT_EQ(withSuffix(file, suffix), expected) << file << " with \"" << suffix << '"';
}
