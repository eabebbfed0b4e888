// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/panel/DBusMenu.h"

#include "support/PrivateBus.h"
#include "support/WaitUntil.h"

#include <QDBusMessage>
#include <QDBusPendingCall>
#include <gtest/gtest.h>

#include <vector>

namespace {

constexpr int settingsEntry = 1;
constexpr int quitEntry = 2;
constexpr int noEntry = 99;

class DBusMenuTest : public testing::Test {
protected:
    PrivateBus bus;
    QDBusConnection own = QDBusConnection::connectToBus(bus.address(), QStringLiteral("menu"));
    DBusMenu menu{own};
    std::vector<int> clicks;

    DBusMenuTest() {
        menu.setEntries({{.label = "Settings…", .action = [this] { clicks.push_back(settingsEntry); }},
                         {.label = "Quit", .action = [this] { clicks.push_back(quitEntry); }}});
    }
    ~DBusMenuTest() override { QDBusConnection::disconnectFromBus(own.name()); }

    /// What the menu answers to a panel.
    QDBusMessage call(const QString& method, const QVariantList& arguments) {
        auto message = QDBusMessage::createMethodCall(own.baseService(), QLatin1String(DBusMenu::path),
                                                      QStringLiteral("com.canonical.dbusmenu"), method);
        message.setArguments(arguments);
        const QDBusPendingCall pending = bus.connection().asyncCall(message);
        EXPECT_TRUE(waitUntil([&] { return pending.isFinished(); }));
        return pending.reply();
    }

    /// Whether it refuses a call for its size.
    bool refuses(const QString& method, const QVariantList& arguments) {
        return call(method, arguments).errorName() == QLatin1String("org.freedesktop.DBus.Error.LimitsExceeded");
    }

    /// How many items it describes; none if it refuses.
    qsizetype described(const QVariantList& arguments) {
        const QDBusMessage answer = call(QStringLiteral("GetGroupProperties"), arguments);
        return answer.arguments().isEmpty() ? 0 : qdbus_cast<MenuItems>(answer.arguments().at(0)).size();
    }
};

QVariant clicksOn(const QList<int>& ids) {
    QDBusArgument events;
    events.beginArray(QMetaType::fromType<MenuEvent>());
    for (const int id : ids) {
        events.beginStructure();
        events << id << QStringLiteral("clicked") << QDBusVariant(QStringList(100, QStringLiteral("anything"))) << 7U;
        events.endStructure();
    }
    events.endArray();
    return QVariant::fromValue(events);
}

QVariant repeated(int id, qsizetype times) {
    return QVariant::fromValue(QList<int>(times, id));
}

TEST_F(DBusMenuTest, DoesAGroupOfEventsInOrderWhateverTheirData) {
    const QDBusMessage answer =
        call(QStringLiteral("EventGroup"), {clicksOn({quitEntry, noEntry, settingsEntry, quitEntry})});
    ASSERT_EQ(answer.arguments().size(), 1);
    EXPECT_EQ(qdbus_cast<QList<int>>(answer.arguments().at(0)), QList<int>{noEntry});
    EXPECT_TRUE(waitUntil([this] { return clicks.size() == 3; }));
    EXPECT_EQ(clicks, (std::vector{quitEntry, settingsEntry, quitEntry}));
}

TEST_F(DBusMenuTest, DoesSixtyFourEventsAndNoneOfMore) {
    EXPECT_TRUE(refuses(QStringLiteral("EventGroup"), {clicksOn(QList<int>(65, quitEntry))}));
    EXPECT_FALSE(refuses(QStringLiteral("EventGroup"), {clicksOn(QList<int>(64, settingsEntry))}));
    EXPECT_TRUE(waitUntil([this] { return clicks.size() >= 64; }));
    EXPECT_EQ(clicks, std::vector<int>(64, settingsEntry));
}

TEST_F(DBusMenuTest, DescribesSixtyFourItemsAndRefusesMore) {
    EXPECT_EQ(described({repeated(quitEntry, 64), QStringList()}), 64);
    EXPECT_TRUE(refuses(QStringLiteral("GetGroupProperties"), {repeated(quitEntry, 65), QStringList()}));
    EXPECT_FALSE(refuses(QStringLiteral("AboutToShowGroup"), {repeated(0, 64)}));
    EXPECT_TRUE(refuses(QStringLiteral("AboutToShowGroup"), {repeated(0, 65)}));
    EXPECT_EQ(described({repeated(quitEntry, 1), QStringList()}), 1);
}

TEST_F(DBusMenuTest, LooksForSixtyFourPropertiesAndRefusesMore) {
    const QStringList few(64, QStringLiteral("label"));
    const QStringList many(65, QStringLiteral("label"));
    EXPECT_EQ(described({repeated(quitEntry, 2), few}), 2);
    EXPECT_TRUE(refuses(QStringLiteral("GetGroupProperties"), {repeated(quitEntry, 2), many}));
    EXPECT_FALSE(refuses(QStringLiteral("GetLayout"), {0, -1, few}));
    EXPECT_TRUE(refuses(QStringLiteral("GetLayout"), {0, -1, many}));
}

} // namespace
