// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/windows/ActivationToken.h"

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
    takeActivationToken(QStringLiteral("the first"));
    EXPECT_EQ(left(), "the first");
    takeActivationToken(QStringLiteral("a later one"));
    EXPECT_EQ(left(), "a later one");
    takeActivationToken(QStringLiteral("short"));
    EXPECT_EQ(left(), "short");
}

TEST_F(ActivationToken, IsLeftAgainAfterQtHasTakenOne) {
    takeActivationToken(QStringLiteral("taken"));
    qunsetenv("XDG_ACTIVATION_TOKEN");
    takeActivationToken(QStringLiteral("next"));
    EXPECT_EQ(left(), "next");
}

TEST_F(ActivationToken, ReplacesTheOneThatThisProcessWasStartedWith) {
    qputenv("XDG_ACTIVATION_TOKEN", "of the start");
    takeActivationToken(QStringLiteral("mine"));
    EXPECT_EQ(left(), "mine");
}

TEST_F(ActivationToken, IsDroppedIfItHasMoreThanFourKibibytes) {
    takeActivationToken(longToken(4096));
    EXPECT_EQ(left().size(), 4096);
    takeActivationToken(QStringLiteral("in place"));
    takeActivationToken(longToken(4097));
    takeActivationToken(QString(2000, QChar(0x20ac))); // three bytes each
    EXPECT_EQ(left(), "in place");
}

} // namespace
