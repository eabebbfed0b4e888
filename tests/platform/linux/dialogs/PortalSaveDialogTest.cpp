// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/dialogs/PortalSaveDialog.h"

#include "support/DialogsFixture.h"
#include "support/PrivateBus.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusVirtualObject>
#include <QPushButton>
#include <QTest>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>

namespace {

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString chooser = QStringLiteral("org.freedesktop.portal.FileChooser");
const QString requests = QStringLiteral("org.freedesktop.portal.Request");

struct Asked {
    QString parent;
    QString title;
    QVariantMap options;
    QString request; ///< the object path where the dialog expects the answer
};

/// A desktop's file chooser portal, in the test's process but not on the dialog's connection.
class FakePortal final : public QDBusVirtualObject {
public:
    explicit FakePortal(const PrivateBus& bus) : connection_(bus.connection()) {
        connection_.registerVirtualObject(path, this, QDBusConnection::SubPath);
        connection_.registerService(service);
    }
    ~FakePortal() override { stop(); }

    QList<Asked> asked;
    QStringList closed;                        ///< requests that the dialog withdrew
    std::function<void(const Asked&)> onAsked; ///< called before the portal replies
    std::optional<QVariant> reply;             ///< instead of the request's path; if invalid, no reply is sent
    QString error;                             ///< sent instead of a reply unless empty

    void stop() {
        connection_.unregisterService(service);
        connection_.unregisterObject(path, QDBusConnection::UnregisterTree);
    }
    void respond(const QString& request, uint response, const QStringList& uris = {}) {
        QVariantMap results;
        if (!uris.isEmpty())
            results.insert(QStringLiteral("uris"), uris);
        send(connection_, request, {response, results});
    }
    static void send(QDBusConnection connection, const QString& request, const QVariantList& arguments) {
        auto signal = QDBusMessage::createSignal(request, requests, QStringLiteral("Response"));
        signal.setArguments(arguments);
        connection.send(signal);
    }
    /// Sends the overdue reply to the last question.
    void replyLate() {
        connection_.send(last_.createReply(QVariant::fromValue(QDBusObjectPath(asked.last().request))));
    }

    QString introspect(const QString& /*path*/) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        if (message.interface() == requests && message.member() == QLatin1String("Close")) {
            closed.append(message.path());
            return connection.send(message.createReply());
        }
        if (message.interface() != chooser || message.member() != QLatin1String("SaveFile"))
            return false;
        Asked question{.parent = message.arguments().at(0).toString(),
                       .title = message.arguments().at(1).toString(),
                       .options = qdbus_cast<QVariantMap>(message.arguments().at(2)),
                       .request = {}};
        question.request = path + QStringLiteral("/request/") +
                           message.service().mid(1).replace(QLatin1Char('.'), QLatin1Char('_')) + QLatin1Char('/') +
                           question.options.value(QStringLiteral("handle_token")).toString();
        asked.append(question);
        last_ = message;
        if (onAsked)
            onAsked(question);
        if (!error.isEmpty())
            return connection.send(message.createErrorReply(error, QStringLiteral("no")));
        const QVariant answer = reply.value_or(QVariant::fromValue(QDBusObjectPath(question.request)));
        return !answer.isValid() || connection.send(message.createReply(answer));
    }

private:
    QDBusConnection connection_;
    QDBusMessage last_;
};

/// One of the filters that the dialog sent.
struct Filter {
    QString name;
    uint kind = 0;
    QString pattern;
};

QList<Filter> filtersIn(const QVariant& value) {
    const auto argument = value.value<QDBusArgument>();
    EXPECT_EQ(argument.currentSignature(), QStringLiteral("a(sa(us))"));
    QList<Filter> filters;
    for (argument.beginArray(); !argument.atEnd();) {
        Filter filter;
        argument.beginStructure();
        argument >> filter.name;
        for (argument.beginArray(); !argument.atEnd();) {
            argument.beginStructure();
            argument >> filter.kind >> filter.pattern;
            argument.endStructure();
        }
        argument.endArray();
        argument.endStructure();
        filters.append(filter);
    }
    argument.endArray();
    return filters;
}

class PortalSaveDialogTest : public DialogsFixture {
protected:
    PrivateBus bus;
    // The dialog's connection; the fake portal has another, as two programs have.
    QDBusConnection own = QDBusConnection::connectToBus(bus.address(), QStringLiteral("save-dialog-test"));
    std::chrono::milliseconds timeout = 30s;

    ~PortalSaveDialogTest() override { QDBusConnection::disconnectFromBus(own.name()); }

    std::optional<fs::path> runSaveDialog() { return QtDialogs(own, timeout).runSaveDialog(history); }

    /// Runs `act` once the portal has been asked and the dialog has its reply.
    void whenAsked(FakePortal& portal, const std::function<void(const Asked&)>& act) {
        portal.onAsked = [this, act](const Asked& question) {
            // The portal's reply is on its way by now, and we send a ping after it. Replies keep their order, so the
            // reply to the ping comes second.
            QTimer::singleShot(0, [this, act, question] {
                const auto ping = QDBusMessage::createMethodCall(
                    service, path, QStringLiteral("org.freedesktop.DBus.Peer"), QStringLiteral("Ping"));
                auto* watcher = new QDBusPendingCallWatcher(own.asyncCall(ping));
                QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher, [watcher, act, question] {
                    watcher->deleteLater();
                    act(question);
                });
            });
        };
    }

    /// Expects Qt's own dialog; the user saves in it.
    void expectOwnDialog() {
        whenShown("saveDialog", [](QDialog& dialog) { save(dialog, "own.csv"); });
        EXPECT_EQ(runSaveDialog(), home.path / "own.csv");
    }

    /// The dialog's result when the portal responds with these.
    std::optional<fs::path> chosen(uint response, const QStringList& uris) {
        FakePortal portal(bus);
        whenAsked(portal, [&](const Asked& question) { portal.respond(question.request, response, uris); });
        return runSaveDialog();
    }
};

} // namespace

TEST_F(PortalSaveDialogTest, AsksTheDesktopForTheFile) {
    FakePortal portal(bus);
    whenAsked(portal, [&](const Asked& question) {
        portal.respond(question.request, 0, {QStringLiteral("file:///home/me/caf%E9%20%25.csv")});
    });
    EXPECT_EQ(runSaveDialog(), "/home/me/caf\xE9 %.csv");
    ASSERT_EQ(portal.asked.size(), 1);
    const Asked& question = portal.asked.first();
    EXPECT_EQ(question.title, QStringLiteral("Save As"));
    EXPECT_EQ(question.parent, QString()) << "where windows have no names that others know";
    EXPECT_EQ(question.options.value(QStringLiteral("current_name")), QStringLiteral("history.csv"));
    EXPECT_EQ(question.options.value(QStringLiteral("current_folder")).toByteArray(),
              QByteArray::fromStdString(home.path.native()) + '\0');
    EXPECT_EQ(question.options.value(QStringLiteral("modal")), true);
    const QList<Filter> filters = filtersIn(question.options.value(QStringLiteral("filters")));
    ASSERT_EQ(filters.size(), 1);
    EXPECT_FALSE(filters.first().name.isEmpty());
    EXPECT_EQ(filters.first().kind, 1U);
    EXPECT_EQ(filters.first().pattern, QStringLiteral("text/csv"));
    EXPECT_TRUE(portal.closed.isEmpty());
}

TEST_F(PortalSaveDialogTest, TakesFilesOfThisMachineOnly) {
    for (const char* uri : {"file:///x.csv", "file://localhost/x.csv", "FILE://LocalHost/x.csv", "file:/x.csv"})
        EXPECT_EQ(chosen(0, {QString::fromLatin1(uri)}), "/x.csv") << uri;
    for (const char* uri :
         {"", "file:", "file:///", "file:///folder/", "x.csv", "/x.csv", "sftp://host/x.csv", "file://host/x.csv",
          "file:///x.csv?y", "file:///x.csv#y", "file:///a%2Fb.csv", "file:///x%00.csv", "file:///x%zz"})
        EXPECT_EQ(chosen(0, {QString::fromLatin1(uri)}), std::nullopt) << uri;
}

TEST_F(PortalSaveDialogTest, StartsWhereTheLastFileWent) {
    fs::create_directory(home.path / "other");
    FakePortal portal(bus);
    whenAsked(portal, [&](const Asked& question) {
        portal.respond(question.request, 0, {QStringLiteral("file://%1/other/x.csv").arg(home.path.c_str())});
    });
    QtDialogs dialogs(own, timeout);
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(dialogs.runSaveDialog(history), home.path / "other/x.csv");
    ASSERT_EQ(portal.asked.size(), 2);
    EXPECT_EQ(portal.asked.last().options.value(QStringLiteral("current_folder")).toByteArray(),
              QByteArray::fromStdString((home.path / "other").native()) + '\0');
    EXPECT_NE(portal.asked.first().request, portal.asked.last().request);
}

TEST_F(PortalSaveDialogTest, GivesNothingWhenTheUserCancels) {
    EXPECT_EQ(chosen(1, {}), std::nullopt);
}

TEST_F(PortalSaveDialogTest, GivesNothingForAPlaceThatIsNoFile) {
    EXPECT_EQ(chosen(0, {QStringLiteral("sftp://host/x.csv")}), std::nullopt);
    EXPECT_EQ(chosen(0, {}), std::nullopt);
}

TEST_F(PortalSaveDialogTest, WithoutAPortalQtAsks) {
    expectOwnDialog();
}

TEST_F(PortalSaveDialogTest, WhereThePortalCannotBeStartedQtAsks) {
    write(bus.services() / "portal.service", "[D-BUS Service]\nName=" + service.toStdString() + "\nExec=/bin/false\n");
    const QString daemon = QStringLiteral("org.freedesktop.DBus");
    bus.call(daemon, QStringLiteral("/org/freedesktop/DBus"), daemon, QStringLiteral("ReloadConfig"));
    expectOwnDialog();
}

TEST_F(PortalSaveDialogTest, WhereThePortalRefusesQtAsks) {
    FakePortal portal(bus);
    for (const char* error : {"org.freedesktop.DBus.Error.UnknownMethod", "org.freedesktop.DBus.Error.AccessDenied",
                              "org.freedesktop.portal.Error.Failed"}) {
        portal.error = QLatin1String(error);
        expectOwnDialog();
    }
    portal.error.clear();
    portal.reply = QStringLiteral("no path");
    expectOwnDialog();
    EXPECT_EQ(portal.asked.size(), 4);
    EXPECT_TRUE(portal.closed.isEmpty());
}

TEST_F(PortalSaveDialogTest, WhereTheDesktopsDialogFailsAtOnceQtAsks) {
    FakePortal portal(bus);
    portal.onAsked = [&](const Asked& question) { portal.respond(question.request, 2); };
    expectOwnDialog();
    EXPECT_TRUE(portal.closed.isEmpty());
}

TEST_F(PortalSaveDialogTest, GivesNothingWhenTheDesktopsDialogEndsOtherwise) {
    FakePortal portal(bus);
    whenAsked(portal, [&](const Asked& question) {
        loop.after(600ms, [&portal, question] { portal.respond(question.request, 2); });
    });
    EXPECT_EQ(runSaveDialog(), std::nullopt);
}

TEST_F(PortalSaveDialogTest, DoesNotWaitForAPortalThatDoesNotAnswer) {
    FakePortal portal(bus);
    portal.reply = QVariant();
    timeout = 50ms;
    expectOwnDialog();
    ASSERT_EQ(portal.asked.size(), 1);
    EXPECT_TRUE(portal.closed.isEmpty());
    // The portal accepts at last, but nobody waits for its answer any more.
    portal.replyLate();
    EXPECT_TRUE(waitUntil([&] { return portal.closed == QStringList{portal.asked.first().request}; }));
}

TEST_F(PortalSaveDialogTest, GivesTheUserAllTheTime) {
    FakePortal portal(bus);
    timeout = 1s; // long enough for the fake portal to reply
    whenAsked(portal, [&](const Asked& question) {
        loop.after(timeout + 300ms,
                   [&portal, question] { portal.respond(question.request, 0, {QStringLiteral("file:///x.csv")}); });
    });
    EXPECT_EQ(runSaveDialog(), "/x.csv");
}

TEST_F(PortalSaveDialogTest, GivesNothingWhenThePortalGoesAway) {
    auto portal = std::make_unique<FakePortal>(bus);
    portal->onAsked = [&](const Asked&) { loop.after(100ms, [&] { portal.reset(); }); };
    EXPECT_EQ(runSaveDialog(), std::nullopt);
    EXPECT_EQ(portal, nullptr);
}

TEST_F(PortalSaveDialogTest, HearsAnAnswerThatComesBeforeTheWordThatItWillBeAsked) {
    FakePortal portal(bus);
    portal.onAsked = [&](const Asked& question) {
        portal.respond(question.request, 0, {QStringLiteral("file:///early.csv")});
    };
    EXPECT_EQ(runSaveDialog(), "/early.csv");
}

TEST_F(PortalSaveDialogTest, FollowsThePortalToAPathOfItsOwnChoice) {
    FakePortal portal(bus);
    const QString request = path + QStringLiteral("/request/t7");
    portal.reply = QVariant::fromValue(QDBusObjectPath(request));
    whenAsked(portal, [&](const Asked&) { portal.respond(request, 0, {QStringLiteral("file:///old.csv")}); });
    EXPECT_EQ(runSaveDialog(), "/old.csv");
}

TEST_F(PortalSaveDialogTest, BelievesOnlyThePortalItself) {
    FakePortal portal(bus);
    QDBusConnection stranger = QDBusConnection::connectToBus(bus.address(), QStringLiteral("stranger"));
    whenAsked(portal, [&](const Asked& question) {
        const QVariantMap file{{QStringLiteral("uris"), QStringList{QStringLiteral("file:///strange.csv")}}};
        FakePortal::send(stranger, question.request, {0U, file});
        loop.after(100ms, [this, &portal, question] {
            FakePortal::send(bus.connection(), question.request, {QStringLiteral("no answer")});
            portal.respond(question.request, 0, {QStringLiteral("file:///x.csv")});
        });
    });
    EXPECT_EQ(runSaveDialog(), "/x.csv");
    QDBusConnection::disconnectFromBus(stranger.name());
}

TEST_F(PortalSaveDialogTest, TimersGoOnAndThereIsOnePanelAtATime) {
    FakePortal portal(bus);
    QtDialogs dialogs(own, timeout);
    int ticks = 0;
    const auto timer = loop.repeat(5ms, 0s, [&] {
        if (portal.asked.isEmpty() || ++ticks != 3)
            return;
        EXPECT_EQ(dialogs.runSaveDialog(history), std::nullopt);
        dialogs.bringToFront();
        portal.respond(portal.asked.first().request, 1);
    });
    EXPECT_EQ(dialogs.runSaveDialog(history), std::nullopt);
    EXPECT_GE(ticks, 3); // more ticks may pass while the answer is on the bus
    EXPECT_EQ(portal.asked.size(), 1);
}

TEST_F(PortalSaveDialogTest, HoldsOurOtherWindowsBackMeanwhile) {
    FakePortal portal(bus);
    QPushButton window(QStringLiteral("Export"));
    int clicks = 0;
    QObject::connect(&window, &QPushButton::clicked, &window, [&] { ++clicks; });
    window.show();
    const auto click = [&] {
        QTest::mouseClick(window.windowHandle(), Qt::LeftButton, Qt::NoModifier, window.rect().center());
    };
    click();
    ASSERT_EQ(clicks, 1);
    whenAsked(portal, [&](const Asked& question) {
        click();
        portal.respond(question.request, 1);
    });
    EXPECT_EQ(runSaveDialog(), std::nullopt);
    EXPECT_EQ(clicks, 1);
    click();
    EXPECT_EQ(clicks, 2);
}

TEST_F(PortalSaveDialogTest, TheProgramEndsWhileItIsOpenAndTakesTheDialogWithIt) {
    for (const auto& end :
         {std::function<void()>(&QCoreApplication::quit), std::function<void()>([] { QCoreApplication::exit(); })}) {
        FakePortal portal(bus);
        std::optional<fs::path> answer = "not asked";
        portal.onAsked = [&](const Asked&) { loop.after(100ms, end); };
        EXPECT_TRUE(mainLoopRuns([&] { answer = runSaveDialog(); }));
        EXPECT_EQ(answer, std::nullopt);
        EXPECT_TRUE(waitUntil([&] { return portal.closed == QStringList{portal.asked.first().request}; }));
    }
}
