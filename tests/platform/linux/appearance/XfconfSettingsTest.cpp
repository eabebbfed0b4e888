// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/appearance/XfconfSettings.h"

#include "support/AppearanceFixture.h"

#include <QDBusVariant>
#include <QDBusVirtualObject>

namespace {

const QString service = QStringLiteral("org.xfce.Xfconf");
const QString path = QStringLiteral("/org/xfce/Xfconf");
const QString xsettings = QStringLiteral("xsettings");
const QString theme = QStringLiteral("/Net/ThemeName");
const QString font = QStringLiteral("/Gtk/FontName");

/// The settings service of Xfce, in the test's own process.
class FakeXfconf final : public QDBusVirtualObject {
public:
    explicit FakeXfconf(const PrivateBus& bus, QVariantMap first = {})
        : properties(std::move(first))
        , connection_(bus.connection()) {
        connection_.registerVirtualObject(path, this);
        connection_.registerService(service);
    }
    ~FakeXfconf() override {
        connection_.unregisterService(service);
        connection_.unregisterObject(path);
    }

    QVariantMap properties;
    bool answersNothing = false; ///< sends an empty answer
    int asked = 0;

    void change(const QString& channel, const QString& property, const QVariant& value) {
        signal("PropertyChanged", {channel, property, QVariant::fromValue(QDBusVariant(value))});
    }
    void remove(const QString& channel, const QString& property) { signal("PropertyRemoved", {channel, property}); }
    void signal(const char* name, const QVariantList& arguments) {
        auto message = QDBusMessage::createSignal(path, service, QLatin1String(name));
        message.setArguments(arguments);
        connection_.send(message);
    }

    QString introspect(const QString& /*path*/) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        if (message.member() != QLatin1String("GetAllProperties"))
            return false;
        ++asked;
        EXPECT_EQ(message.arguments(), (QVariantList{xsettings, QStringLiteral("/")}));
        return connection.send(answersNothing ? message.createReply() : message.createReply(QVariant(properties)));
    }

private:
    QDBusConnection connection_;
};

using XfconfSettingsTest = AppearanceFixture;

} // namespace

TEST_F(XfconfSettingsTest, TellsWhatTheDesktopHasChosen) {
    FakeXfconf xfce(bus, {{theme, QStringLiteral("Greybird-dark")}, {font, QStringLiteral("Sans Bold 12")}});
    watch->start(true);
    EXPECT_TRUE(shows({.isDark = true, .accent = {}, .font = Appearance::Font{"Sans", 12}}));
}

TEST_F(XfconfSettingsTest, FollowsWhileItRuns) {
    FakeXfconf xfce(bus, {{theme, QStringLiteral("Adwaita")}});
    watch->start(true);
    ASSERT_TRUE(shows({.isDark = false, .accent = {}, .font = {}}));
    xfce.change(xsettings, theme, QStringLiteral("Adwaita-dark"));
    EXPECT_TRUE(shows({.isDark = true, .accent = {}, .font = {}}));
    xfce.change(xsettings, font, QStringLiteral("Sans 9"));
    EXPECT_TRUE(shows({.isDark = true, .accent = {}, .font = Appearance::Font{"Sans", 9}}));
    xfce.remove(xsettings, font);
    EXPECT_TRUE(shows({.isDark = true, .accent = {}, .font = {}}));
    xfce.remove(xsettings, theme);
    EXPECT_TRUE(shows({}));
}

TEST_F(XfconfSettingsTest, HearsOnlyWhatIsMeantForIt) {
    FakeXfconf xfce(bus);
    watch->start(true);
    ASSERT_TRUE(waitUntil([&] { return xfce.asked == 1; }));
    xfce.change(QStringLiteral("xfce4-panel"), theme, QStringLiteral("Adwaita-dark"));
    xfce.change(xsettings, QStringLiteral("/Net/IconThemeName"), QStringLiteral("Adwaita-dark"));
    xfce.change(xsettings, theme, 7);
    xfce.signal("PropertyChanged", {xsettings, theme});
    xfce.signal("PropertyRemoved", {7});
    xfce.change(xsettings, font, QStringLiteral("Sans 9"));
    ASSERT_TRUE(shows({.isDark = {}, .accent = {}, .font = Appearance::Font{"Sans", 9}}));
    xfce.remove(QStringLiteral("xfce4-panel"), font);
    xfce.change(xsettings, font, QStringLiteral("Sans 8"));
    ASSERT_TRUE(shows({.isDark = {}, .accent = {}, .font = Appearance::Font{"Sans", 8}}));
    EXPECT_EQ(looks.size(), 2U);
}

TEST_F(XfconfSettingsTest, HearsAServiceThatComesLater) {
    watch->start(true);
    FakeXfconf xfce(bus, {{theme, QStringLiteral("Adwaita-dark")}});
    EXPECT_TRUE(shows({.isDark = true, .accent = {}, .font = {}}));
}

TEST_F(XfconfSettingsTest, OutlivesAnAnswerThatIsNone) {
    FakeXfconf xfce(bus);
    xfce.answersNothing = true;
    watch->start(true);
    ASSERT_TRUE(waitUntil([&] { return xfce.asked == 1; }));
    xfce.change(xsettings, theme, QStringLiteral("Adwaita-dark"));
    EXPECT_TRUE(shows({.isDark = true, .accent = {}, .font = {}}));
}

TEST_F(XfconfSettingsTest, IsNotStartedAndOnlyAskedOnItsOwnDesktop) {
    EXPECT_FALSE(starts(service, [this] { watch->start(true); }));
    EXPECT_TRUE(looks.empty());

    FakeXfconf xfce(bus, {{theme, QStringLiteral("Adwaita-dark")}});
    ASSERT_TRUE(shows({.isDark = true, .accent = {}, .font = {}}));
    const int asked = xfce.asked;
    AppearanceWatch elsewhere(own, [](const Appearance&) { ADD_FAILURE() << "it has asked"; });
    elsewhere.start(false);
    xfce.change(xsettings, theme, QStringLiteral("Adwaita"));
    EXPECT_TRUE(shows({.isDark = false, .accent = {}, .font = {}}));
    EXPECT_EQ(xfce.asked, asked);
}
