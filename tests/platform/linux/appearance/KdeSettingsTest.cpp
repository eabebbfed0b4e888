// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/appearance/KdeSettings.h"

#include "support/AppearanceFixture.h"
#include "support/FakeFiles.h"

namespace {

class KdeSettingsTest : public AppearanceFixture {
protected:
    FakeFiles files;
    const std::filesystem::path file = "/home/user/.config/kdeglobals";

    void writeColours(const std::string& background) {
        std::string text;
        for (const char* group : {"Window", "View", "Button", "Selection"})
            text +=
                std::string("[Colors:") + group + "]\nBackgroundNormal=" + background + "\nForegroundNormal=9,9,9\n";
        files.files[file] = text;
    }

    void tell(int kind) const {
        auto signal =
            QDBusMessage::createSignal(QStringLiteral("/KGlobalSettings"), QStringLiteral("org.kde.KGlobalSettings"),
                                       QStringLiteral("notifyChange"));
        signal << kind << 0;
        bus.connection().send(signal);
    }

    bool hasWindowColour(std::uint8_t grey) {
        return waitUntil([&] {
            return !looks.empty() && looks.back().colours &&
                   looks.back().colours->window == Appearance::Colour{grey, grey, grey};
        });
    }
};

} // namespace

TEST_F(KdeSettingsTest, AreReadAtEachChangeOfTheColours) {
    writeColours("40,40,40");
    watch->startOnKde(files, file);
    tell(0);
    EXPECT_TRUE(hasWindowColour(40));
    writeColours("250,250,250");
    tell(0);
    EXPECT_TRUE(hasWindowColour(250));
    EXPECT_EQ(looks.size(), 2U);
}

TEST_F(KdeSettingsTest, AreQtsOwnAgainWithoutTheFile) {
    writeColours("40,40,40");
    watch->startOnKde(files, file);
    tell(0);
    ASSERT_TRUE(hasWindowColour(40));
    files.files.clear();
    tell(0);
    EXPECT_TRUE(shows({}));
}

TEST_F(KdeSettingsTest, AreNotReadAtChangesOfOtherThings) {
    writeColours("40,40,40");
    watch->startOnKde(files, file);
    tell(1); // fonts
    EXPECT_FALSE(waitUntil([&] { return !files.readPaths.empty(); }, std::chrono::milliseconds(300)));
}

TEST_F(KdeSettingsTest, AreReadOnceForManySignals) {
    writeColours("40,40,40");
    watch->startOnKde(files, file);
    for (int i = 0; i < 1000; ++i)
        tell(0);
    ASSERT_TRUE(hasWindowColour(40));
    EXPECT_LE(files.readPaths.size(), 10U);
}

TEST_F(KdeSettingsTest, MayComeFromTheDiskWhenNobodyWaitsForThemAnyMore) {
    writeColours("40,40,40");
    files.holdsLoads = true;
    watch->startOnKde(files, file);
    tell(0);
    ASSERT_TRUE(waitUntil([&] { return files.heldLoads.size() == 1; }));
    watch.reset();
    files.heldLoads.front()();
    EXPECT_TRUE(looks.empty());
}
