// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/notifications/NotificationConsent.h"

#include "support/FakeFiles.h"

#include <gtest/gtest.h>

namespace {

using Status = NotificationCenter::AuthorizationStatus;

const std::filesystem::path folder = "/home/user/.local/state/Velmora";
const std::filesystem::path file = folder / "notifications";

} // namespace

TEST(NotificationConsent, IsNotDeterminedUntilItIsGivenAndIsKept) {
    FakeFiles files;
    NotificationConsent consent(files, folder);
    EXPECT_EQ(consent.status(), Status::notDetermined);
    EXPECT_TRUE(files.replacedPaths.empty()) << "to ask writes nothing";
    consent.give();
    EXPECT_EQ(consent.status(), Status::authorized);
    EXPECT_EQ(NotificationConsent(files, folder).status(), Status::authorized);
}

TEST(NotificationConsent, IsWrittenOnce) {
    FakeFiles files;
    NotificationConsent consent(files, folder);
    consent.give();
    consent.give();
    NotificationConsent(files, folder).give();
    EXPECT_EQ(files.replacedPaths, std::vector{file});
}

TEST(NotificationConsent, TakesADamagedFileForNone) {
    for (const char* content : {"", "authorized", "authorized\nx", "denied\n", "\xff\xfe"}) {
        FakeFiles files;
        files.files[file] = content;
        EXPECT_EQ(NotificationConsent(files, folder).status(), Status::notDetermined) << content;
    }
    FakeFiles huge;
    huge.files[file] = std::string(1 << 20, 'a');
    EXPECT_EQ(NotificationConsent(huge, folder).status(), Status::notDetermined);
}

TEST(NotificationConsent, HoldsForNowWhereItCannotBeReadOrWritten) {
    FakeFiles files;
    files.refusesReads = true;
    files.refusesWrites = true;
    NotificationConsent consent(files, folder);
    EXPECT_EQ(consent.status(), Status::notDetermined);
    consent.give();
    EXPECT_EQ(consent.status(), Status::authorized);
    EXPECT_EQ(NotificationConsent(files, folder).status(), Status::notDetermined);
}
