// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/appearance/KdeSettings.h"

#include "support/AppearanceFixture.h"
#include "support/TemporaryFolder.h"

namespace {

class KdeSettingsTest : public AppearanceFixture {
protected:
    TemporaryFolder home;
    const std::filesystem::path file = home.path / "kdeglobals";

    void writeColours(const std::string& background) const {
        std::string text;
        for (const char* group : {"Window", "View", "Button", "Selection"})
            text +=
                std::string("[Colors:") + group + "]\nBackgroundNormal=" + background + "\nForegroundNormal=9,9,9\n";
        write(file, text);
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
    watch->startOnKde(file);
    tell(0);
    EXPECT_TRUE(hasWindowColour(40));
    writeColours("240,240,240");
    tell(1); // fonts
    writeColours("250,250,250");
    tell(0);
    EXPECT_TRUE(hasWindowColour(250));
    EXPECT_EQ(looks.size(), 2U);
}

TEST_F(KdeSettingsTest, AreQtsOwnAgainWithoutTheFile) {
    writeColours("40,40,40");
    watch->startOnKde(file);
    tell(0);
    ASSERT_TRUE(hasWindowColour(40));
    std::filesystem::remove(file);
    tell(0);
    EXPECT_TRUE(shows({}));
}
