// SPDX-License-Identifier: GPL-3.0-or-later
#include "alerts/RunningNotice.h"

#include "support/FakePlatform.h"

#include <gtest/gtest.h>

namespace {

struct RunningNoticeTest : ::testing::Test {
    FakePlatform fake;
    const std::filesystem::path folder = "/home/user/.local/state/Velmora";

    void show() { RunningNotice(fake.files, folder, fake.notificationCenter, fake.bundle).show(); }
};

} // namespace

TEST_F(RunningNoticeTest, IsShownOnceEver) {
    show();
    show();
    const NotificationCenter::Request request{
        "running", "Velmora is running",
        "This desktop shows no status items. On GNOME, install the AppIndicator extension. Start Velmora again to see "
        "the details.",
        "", std::nullopt};
    EXPECT_EQ(fake.notificationCenter.requests, std::vector{request});
    EXPECT_TRUE(fake.files.files.contains(RunningNotice::file(folder)));
}

TEST_F(RunningNoticeTest, IsNotShownWhenThatCannotBeRemembered) {
    fake.files.refusesWrites = true;
    show();
    EXPECT_TRUE(fake.notificationCenter.requests.empty());
    fake.files.refusesWrites = false;
    show();
    EXPECT_EQ(fake.notificationCenter.requests.size(), 1U);
}

TEST_F(RunningNoticeTest, IsNotShownOutsideABundle) {
    fake.bundle.place = "/home/user/build/bin";
    show();
    EXPECT_TRUE(fake.notificationCenter.requests.empty());
    EXPECT_TRUE(fake.files.replacedPaths.empty());
}
