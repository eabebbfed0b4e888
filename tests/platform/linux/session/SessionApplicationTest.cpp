// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/session/SessionApplication.h"

#include "support/PrivateBus.h"
#include "support/WaitUntil.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QVariantMap>
#include <gtest/gtest.h>

namespace {

class SessionApplicationTest : public testing::Test {
protected:
    PrivateBus bus;
    QDBusConnection own = QDBusConnection::connectToBus(bus.address(), QStringLiteral("application"));
    SessionApplication application{own};
    int activations = 0;

    SessionApplicationTest() {
        QObject::connect(&application, &SessionApplication::activated, [this] { ++activations; });
    }
    ~SessionApplicationTest() override {
        QDBusConnection::disconnectFromBus(own.name());
        qunsetenv("XDG_ACTIVATION_TOKEN");
    }

    /// Calls a method as another process would; whether the answer is no error.
    bool call(const QString& method, const QVariantList& arguments) {
        auto message = QDBusMessage::createMethodCall(own.baseService(), QStringLiteral("/app/velmora/Velmora"),
                                                      QStringLiteral("org.freedesktop.Application"), method);
        message.setArguments(arguments);
        const QDBusPendingCall pending = bus.connection().asyncCall(message);
        return waitUntil([&] { return pending.isFinished(); }) && !pending.isError();
    }

    bool activates(const QVariantMap& platformData) {
        const int before = activations;
        return call(QStringLiteral("Activate"), {platformData}) && waitUntil([&] { return activations == before + 1; });
    }

    static QByteArray token() { return qgetenv("XDG_ACTIVATION_TOKEN"); }
};

/// A token after as many other entries; a QVariantMap is sent in the order of its keys.
QVariantMap platformData(const QString& token, int others) {
    QVariantMap data{{QStringLiteral("activation-token"), token}};
    for (int number = 0; number < others; ++number)
        data.insert(QStringLiteral("a%1").arg(number), QStringList{QStringLiteral("anything")});
    return data;
}

TEST_F(SessionApplicationTest, TakesTheTokenOfWhoActivatesIt) {
    EXPECT_TRUE(activates({}));
    EXPECT_EQ(token(), "");
    EXPECT_TRUE(activates(platformData(QStringLiteral("one"), 0)));
    EXPECT_EQ(token(), "one");
    EXPECT_TRUE(call(QStringLiteral("Open"), {QStringList(), platformData(QStringLiteral("two"), 2)}));
    EXPECT_TRUE(waitUntil([&] { return activations == 3; }));
    EXPECT_EQ(token(), "two");
    EXPECT_TRUE(activates({}));
    EXPECT_EQ(token(), "two");
}

TEST_F(SessionApplicationTest, ReadsNoMoreThanTheFirstEntries) {
    EXPECT_TRUE(activates(platformData(QStringLiteral("the 64th"), 63)));
    EXPECT_EQ(token(), "the 64th");
    EXPECT_TRUE(activates(platformData(QStringLiteral("the 65th"), 64)));
    EXPECT_EQ(token(), "the 64th");
    EXPECT_TRUE(activates(platformData(QStringLiteral("once more"), 1)));
    EXPECT_EQ(token(), "once more");
}

TEST_F(SessionApplicationTest, HasNoActions) {
    QDBusArgument parameters;
    parameters << QVariantList(100, QStringLiteral("anything"));
    EXPECT_TRUE(call(QStringLiteral("ActivateAction"),
                     {QStringLiteral("quit"), QVariant::fromValue(parameters), platformData(QStringLiteral("no"), 0)}));
    EXPECT_TRUE(activates({}));
    EXPECT_EQ(activations, 1);
    EXPECT_EQ(token(), "");
}

} // namespace
