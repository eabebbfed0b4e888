// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/bus/ActivationToken.h"

#include <QByteArray>
#include <QString>
#include <gtest/gtest.h>

namespace {

class ActivationToken : public testing::Test {
protected:
    ~ActivationToken() override { qunsetenv("XDG_ACTIVATION_TOKEN"); }

    static QByteArray left() { return qgetenv("XDG_ACTIVATION_TOKEN"); }
    static QString longToken(qsizetype bytes) { return QString(bytes, QLatin1Char('x')); }
};

TEST_F(ActivationToken, IsLeftWhereQtTakesItFrom) {
    leaveActivationToken(QStringLiteral("the first"));
    EXPECT_EQ(left(), "the first");
    leaveActivationToken(QStringLiteral("a later one"));
    EXPECT_EQ(left(), "a later one");
    leaveActivationToken(QStringLiteral("short"));
    EXPECT_EQ(left(), "short");
}

TEST_F(ActivationToken, IsLeftAgainAfterQtHasTakenOne) {
    leaveActivationToken(QStringLiteral("taken"));
    qunsetenv("XDG_ACTIVATION_TOKEN");
    leaveActivationToken(QStringLiteral("next"));
    EXPECT_EQ(left(), "next");
}

TEST_F(ActivationToken, ReplacesTheOneThatThisProcessWasStartedWith) {
    qputenv("XDG_ACTIVATION_TOKEN", "of the start");
    leaveActivationToken(QStringLiteral("mine"));
    EXPECT_EQ(left(), "mine");
}

TEST_F(ActivationToken, IsDroppedIfItHasMoreThanFourKibibytes) {
    leaveActivationToken(longToken(4096));
    EXPECT_EQ(left().size(), 4096);
    leaveActivationToken(QStringLiteral("in place"));
    leaveActivationToken(longToken(4097));
    leaveActivationToken(QString(2000, QChar(0x20ac))); // three bytes each
    EXPECT_EQ(left(), "in place");
}

} // namespace
