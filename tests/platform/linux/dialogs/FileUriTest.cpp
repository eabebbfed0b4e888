// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/dialogs/FileUri.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

TEST(FileUri, GivesTheFileByteForByte) {
    const std::pair<const char*, const char*> rows[] = {
        {"file:///home/me/history.csv", "/home/me/history.csv"},
        {"file:///a%20b%25c%23d%3Fe.csv", "/a b%c#d?e.csv"},
        {"file:///Akku%20%E2%99%AA.csv", "/Akku \xE2\x99\xAA.csv"},
        {"file:///caf%E9.csv", "/caf\xE9.csv"},
        {"file:///caf%e9%FF%01.csv", "/caf\xE9\xFF\x01.csv"},
        {"file:///not/escaped \xE2\x99\xAA+&'.csv", "/not/escaped \xE2\x99\xAA+&'.csv"},
        {"file://localhost/x.csv", "/x.csv"},
        {"FILE://LocalHost/x.csv", "/x.csv"},
        {"file:/x.csv", "/x.csv"},
        {"file:////x.csv", "//x.csv"},
        {"file:///%2525.csv", "/%25.csv"},
    };
    for (const auto& [uri, file] : rows) {
        const auto found = fileOfUri(uri);
        ASSERT_TRUE(found) << uri;
        EXPECT_EQ(found->native(), file) << uri;
    }
}

TEST(FileUri, GivesNothingForWhatIsNoFileOfThisMachine) {
    for (const char* uri : {"",
                            "file",
                            "file:",
                            "file://",
                            "file:///",
                            "file:///folder/",
                            "/home/me/x.csv",
                            "x.csv",
                            "http://localhost/x.csv",
                            "sftp://host/x.csv",
                            "trash:///x.csv",
                            "file2:///x.csv",
                            "file://host/x.csv",
                            "file://localhost.example/x.csv",
                            "file:x.csv",
                            "file://x.csv",
                            "file:///x.csv?y",
                            "file:///x.csv#y",
                            "file:///a%2Fb.csv",
                            "file:///a%2fb.csv",
                            "file:///x%00.csv",
                            "file:///x%",
                            "file:///x%4",
                            "file:///x%zz",
                            "file:///x%4z",
                            "file:///x%+4",
                            "file:///x%-4",
                            "file:///x% 4",
                            "file:///x%%20"})
        EXPECT_EQ(fileOfUri(uri), std::nullopt) << uri;
    EXPECT_EQ(fileOfUri(std::string("file:///x\0y.csv", 15)), std::nullopt);
}
