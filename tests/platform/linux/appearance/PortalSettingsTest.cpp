// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/appearance/PortalSettings.h"

#include "support/AppearanceFixture.h"

#include <QDBusArgument>
#include <QDBusVariant>
#include <QDBusVirtualObject>

namespace {

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString interface = QStringLiteral("org.freedesktop.portal.Settings");
const QString appearance = QStringLiteral("org.freedesktop.appearance");
const QString gnome = QStringLiteral("org.gnome.desktop.interface");

using Spaces = QMap<QString, QVariantMap>;

/// The settings portal of a desktop, in the test's own process.
class FakePortal final : public QDBusVirtualObject {
public:
    explicit FakePortal(const PrivateBus& bus) : connection_(bus.connection()) {
        connection_.registerVirtualObject(path, this);
        connection_.registerService(service);
    }
    ~FakePortal() override {
        connection_.unregisterService(service);
        connection_.unregisterObject(path);
    }

    Spaces spaces;
    QVariant nonsense; ///< sent instead of the answer, if set
    QStringList asked; ///< the namespaces of all questions

    void change(const QString& space, const QString& key, const QVariant& value) {
        spaces[space][key] = value; // for later questions
        auto message = QDBusMessage::createSignal(path, interface, QStringLiteral("SettingChanged"));
        message << space << key << QVariant::fromValue(QDBusVariant(value));
        connection_.send(message);
    }

    QString introspect(const QString& /*path*/) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        if (message.interface() != interface || message.member() != QLatin1String("ReadAll"))
            return false;
        asked += message.arguments().at(0).toStringList();
        return connection.send(message.createReply(nonsense.isValid() ? nonsense : answer()));
    }

private:
    QDBusConnection connection_;

    QVariant answer() const {
        QDBusArgument argument;
        argument << spaces;
        return QVariant::fromValue(argument);
    }
};

QVariant color(double red, double green, double blue) {
    QDBusArgument argument;
    argument.beginStructure();
    argument << red << green << blue;
    argument.endStructure();
    return QVariant::fromValue(argument);
}

using PortalSettingsTest = AppearanceFixture;

TEST_F(PortalSettingsTest, TellsWhatTheDesktopHasChosen) {
    FakePortal portal(bus);
    portal.spaces[appearance] = {{QStringLiteral("color-scheme"), 1U},
                                 {QStringLiteral("accent-color"), color(0.25, 0.5, 0.75)}};
    portal.spaces[gnome] = {{QStringLiteral("font-name"), QStringLiteral("Cantarell 11")},
                            {QStringLiteral("text-scaling-factor"), 2.0}};
    watch->start(false);
    EXPECT_TRUE(shows({.isDark = true, .accent = {{0.25, 0.5, 0.75}}, .font = Appearance::Font{"Cantarell", 22}}));
    EXPECT_EQ(portal.asked, (QStringList{appearance, gnome}));
}

TEST_F(PortalSettingsTest, FollowsWhileItRuns) {
    FakePortal portal(bus);
    portal.spaces[appearance] = {{QStringLiteral("color-scheme"), 1U}};
    watch->start(false);
    ASSERT_TRUE(shows({.isDark = true, .accent = {}, .font = {}}));
    portal.change(appearance, QStringLiteral("color-scheme"), 2U);
    EXPECT_TRUE(shows({.isDark = false, .accent = {}, .font = {}}));
    portal.change(appearance, QStringLiteral("accent-color"), color(1, 0, 0));
    EXPECT_TRUE(shows({.isDark = false, .accent = {{1, 0, 0}}, .font = {}}));
}

TEST_F(PortalSettingsTest, TellsOfHighContrast) {
    FakePortal portal(bus);
    portal.spaces[appearance] = {{QStringLiteral("contrast"), 1U}};
    watch->start(false);
    Appearance high;
    high.hasHighContrast = true;
    EXPECT_TRUE(shows(high));
    portal.change(appearance, QStringLiteral("contrast"), 0U);
    EXPECT_TRUE(shows({}));
    portal.change(appearance, QStringLiteral("contrast"), 1U);
    EXPECT_TRUE(shows(high));
    portal.change(appearance, QStringLiteral("contrast"), QStringLiteral("1"));
    EXPECT_TRUE(shows({})) << "of the wrong type";
}

TEST_F(PortalSettingsTest, SaysNothingOfChangesThatChangeNothing) {
    FakePortal portal(bus);
    watch->start(false);
    portal.change(gnome, QStringLiteral("cursor-size"), 48);
    portal.change(appearance, QStringLiteral("color-scheme"), 0U);
    portal.change(gnome, QStringLiteral("color-scheme"), QStringLiteral("prefer-dark"));
    portal.change(appearance, QStringLiteral("color-scheme"), 1U);
    EXPECT_TRUE(shows({.isDark = true, .accent = {}, .font = {}}));
    EXPECT_EQ(looks.size(), 1U);
}

TEST_F(PortalSettingsTest, HearsAPortalThatComesLater) {
    watch->start(false);
    FakePortal portal(bus);
    portal.spaces[appearance] = {{QStringLiteral("color-scheme"), 1U}};
    EXPECT_TRUE(shows({.isDark = true, .accent = {}, .font = {}}));
}

TEST_F(PortalSettingsTest, DoesNotStartAPortal) {
    EXPECT_FALSE(starts(service, [this] { watch->start(false); }));
    EXPECT_TRUE(looks.empty());
}

TEST_F(PortalSettingsTest, BelievesNothingOfTheWrongType) {
    FakePortal portal(bus);
    portal.spaces[appearance] = {{QStringLiteral("color-scheme"), QStringLiteral("1")},
                                 {QStringLiteral("accent-color"), QStringLiteral("red")}};
    portal.spaces[gnome] = {{QStringLiteral("font-name"), 11},
                            {QStringLiteral("text-scaling-factor"), QStringLiteral("2")},
                            {QStringLiteral("gtk-theme"), QStringLiteral("Adwaita-dark")}};
    watch->start(false);
    EXPECT_TRUE(shows({.isDark = true, .accent = {}, .font = {}}));
    EXPECT_EQ(looks.size(), 1U);
}

TEST_F(PortalSettingsTest, BelievesNoNameThatIsLongerThanAnyName) {
    FakePortal portal(bus);
    portal.spaces[appearance] = {{QStringLiteral("color-scheme"), 1U}};
    portal.spaces[gnome] = {{QStringLiteral("font-name"), QString(5000, QLatin1Char('x'))}};
    watch->start(false);
    EXPECT_TRUE(shows({.isDark = true, .accent = {}, .font = {}}));
    portal.change(gnome, QStringLiteral("font-name"), QString(4000, QLatin1Char('x')));
    EXPECT_TRUE(shows({.isDark = true, .accent = {}, .font = Appearance::Font{std::string(4000, 'x'), 0}}));
}

TEST_F(PortalSettingsTest, ReadsNoMoreSettingsThanADesktopHas) {
    QVariantMap settings{{QStringLiteral("font-name"), QStringLiteral("Cantarell")}};
    while (settings.size() < 1024) // they are sent in the order of their names
        settings.insert(QStringLiteral("a%1").arg(settings.size()), 0);
    watch->start(false);
    {
        FakePortal portal(bus);
        portal.spaces[gnome] = settings;
        EXPECT_TRUE(shows({.isDark = {}, .accent = {}, .font = Appearance::Font{"Cantarell", 0}}));
    }
    settings.insert(QStringLiteral("a"), 0);
    FakePortal portal(bus);
    portal.spaces[gnome] = settings;
    EXPECT_TRUE(shows({}));
}

TEST_F(PortalSettingsTest, OutlivesAnAnswerThatIsNone) {
    FakePortal portal(bus);
    portal.nonsense = QStringLiteral("nothing of that kind");
    watch->start(false);
    ASSERT_TRUE(waitUntil([&] { return !portal.asked.isEmpty(); }));
    portal.change(appearance, QStringLiteral("color-scheme"), 1U);
    EXPECT_TRUE(shows({.isDark = true, .accent = {}, .font = {}}));
}

} // namespace
