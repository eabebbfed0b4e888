// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/panel/StatusNotifierItem.h"

#include "platform/qt/ProgramFiles.h"
#include "support/PrivateBus.h"
#include "support/WaitUntil.h"
#include "support/Watcher.h"

#include <QCursor>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QGuiApplication>
#include <QRegularExpression>
#include <QScreen>
#include <gtest/gtest.h>

#include <sys/prctl.h>

#include <memory>
#include <utility>
#include <vector>

namespace {

const QString introspectable = QStringLiteral("org.freedesktop.DBus.Introspectable");

/// Gives this process another name, under which the watchers in it are known.
class ProcessName {
public:
    explicit ProcessName(const char* name) {
        ::prctl(PR_GET_NAME, before_);
        ::prctl(PR_SET_NAME, name);
    }
    ~ProcessName() { ::prctl(PR_SET_NAME, before_); }
    ProcessName(const ProcessName&) = delete;
    ProcessName& operator=(const ProcessName&) = delete;

private:
    char before_[16] = {};
};

/// A watcher that does not say whether it has a panel until the test lets it.
class SlowWatcher final : public QDBusVirtualObject {
public:
    SlowWatcher(const PrivateBus& bus, const QString& name)
        : connection_(QDBusConnection::connectToBus(bus.address(), name)) {
        connection_.registerVirtualObject(Watcher::path(), this);
        connection_.registerService(Watcher::serviceName());
    }
    ~SlowWatcher() override { QDBusConnection::disconnectFromBus(connection_.name()); }
    SlowWatcher(const SlowWatcher&) = delete;
    SlowWatcher& operator=(const SlowWatcher&) = delete;

    bool wasAsked() const { return question_.type() == QDBusMessage::MethodCallMessage; }
    void leave() { connection_.unregisterService(Watcher::serviceName()); }
    void answer(bool hasHost) { connection_.send(question_.createReply(QVariant::fromValue(QDBusVariant(hasHost)))); }

    QString introspect(const QString& /*path*/) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        if (message.member() == QLatin1String("Get")) {
            message.setDelayedReply(true);
            question_ = message;
        } else {
            connection.send(message.createReply());
        }
        return true;
    }

private:
    QDBusConnection connection_;
    QDBusMessage question_;
};

class StatusNotifierItemTest : public testing::Test {
protected:
    PrivateBus bus;
    QDBusConnection connection = QDBusConnection::connectToBus(bus.address(), QStringLiteral("item"));
    GlyphImages glyphs{programFile("share/velmora/icons")};
    std::vector<bool> hosts;
    std::unique_ptr<StatusNotifierItem> item;

    ~StatusNotifierItemTest() override {
        item.reset();
        QDBusConnection::disconnectFromBus(QStringLiteral("item"));
    }

    void start() {
        item = std::make_unique<StatusNotifierItem>(connection, glyphs,
                                                    [this](bool isThere) { hosts.push_back(isThere); });
    }

    bool registersWith(const Watcher& watcher, qsizetype times) {
        return waitUntil([&] { return watcher.items.size() == times; });
    }

    /// What the item answers to a panel.
    QDBusMessage ask(const QString& member, const QVariantList& arguments,
                     const QString& interface = QStringLiteral("org.freedesktop.DBus.Properties")) {
        auto message = QDBusMessage::createMethodCall(connection.baseService(), QLatin1String(StatusNotifierItem::path),
                                                      interface, member);
        message.setArguments(arguments);
        const QDBusPendingCall pending = bus.connection().asyncCall(message);
        EXPECT_TRUE(waitUntil([&] { return pending.isFinished(); }));
        return pending.reply();
    }

    /// All properties that the item has for a panel.
    QVariantMap offered() {
        return qdbus_cast<QVariantMap>(ask(QStringLiteral("GetAll"), {iface()}).arguments().at(0));
    }

    static QString iface() { return StatusNotifierItem::interface; }

    StatusNotifierToolTip toolTip() const { return item->property("ToolTip").value<StatusNotifierToolTip>(); }

    static StatusItem::Content content() {
        return {.symbol = "battery.75",
                .numberSymbol = "",
                .accessibilityDescription = "Battery",
                .title = " 80%",
                .widestTitle = " 100%",
                .toolTip = "80% · On battery"};
    }
};

/// Counts the item's signals as a panel receives them.
class Signals final : public QObject {
    Q_OBJECT

public:
    Signals(const PrivateBus& bus, QDBusConnection item) : item_(std::move(item)), panel_(bus.connection()) {
        for (const auto& [signal, slot] :
             {std::pair("NewIcon", SLOT(icon())), std::pair("NewToolTip", SLOT(toolTip())),
              std::pair("XAyatanaNewLabel", SLOT(label())), std::pair("NothingMore", SLOT(nothingMore()))})
            EXPECT_TRUE(panel_.connect(item_.baseService(), QLatin1String(StatusNotifierItem::path),
                                       StatusNotifierItem::interface, QLatin1String(signal), this, slot));
        // The bus has taken the rules above when it answers what is asked after them.
        EXPECT_TRUE(panel_.interface()->isServiceRegistered(item_.baseService()).value());
    }

    /// Waits until those that have been sent have been counted.
    void arrive() {
        // A bus keeps the order of what one program sends.
        isOver_ = false;
        item_.send(QDBusMessage::createSignal(QLatin1String(StatusNotifierItem::path), StatusNotifierItem::interface,
                                              QStringLiteral("NothingMore")));
        ASSERT_TRUE(waitUntil([this] { return isOver_; }));
    }

    int icons = 0;
    int toolTips = 0;
    int labels = 0;

public Q_SLOTS:
    void icon() { ++icons; }
    void toolTip() { ++toolTips; }
    void label() { ++labels; }
    void nothingMore() { isOver_ = true; }

private:
    QDBusConnection item_;
    QDBusConnection panel_;
    bool isOver_ = false;
};

} // namespace

TEST_F(StatusNotifierItemTest, RegistersByItsUniqueName) {
    Watcher watcher(bus, QStringLiteral("a"));
    watcher.takeName();
    start();
    ASSERT_TRUE(registersWith(watcher, 1));
    EXPECT_EQ(watcher.items.first(), connection.baseService());
    EXPECT_TRUE(waitUntil([&] { return hosts == std::vector{true}; }));
}

TEST_F(StatusNotifierItemTest, TellsWhetherAPanelIsBehindTheWatcher) {
    Watcher watcher(bus, QStringLiteral("a"));
    watcher.hasHost = false;
    watcher.takeName();
    start();
    ASSERT_TRUE(registersWith(watcher, 1));
    ASSERT_TRUE(waitUntil([&] { return hosts == std::vector{false}; }));
    watcher.hasHost = true;
    Q_EMIT watcher.StatusNotifierHostRegistered();
    ASSERT_TRUE(waitUntil([&] { return hosts == std::vector{false, true}; }));
}

TEST_F(StatusNotifierItemTest, TellsThatThereIsNoPanelAndRegistersWhenOneComes) {
    start();
    ASSERT_TRUE(waitUntil([&] { return hosts == std::vector{false}; }));
    Watcher watcher(bus, QStringLiteral("a"));
    watcher.takeName();
    ASSERT_TRUE(registersWith(watcher, 1));
    ASSERT_TRUE(waitUntil([&] { return hosts == std::vector{false, true}; }));
    watcher.leave();
    ASSERT_TRUE(waitUntil([&] { return hosts == std::vector{false, true, false}; }));
    watcher.takeName();
    ASSERT_TRUE(registersWith(watcher, 2));
}

TEST_F(StatusNotifierItemTest, DoesNotBelieveTheAnswerOfAWatcherThatHasLeft) {
    SlowWatcher slow(bus, QStringLiteral("a"));
    start();
    ASSERT_TRUE(waitUntil([&] { return slow.wasAsked(); }));
    slow.leave();
    ASSERT_TRUE(waitUntil([&] { return hosts == std::vector{false}; }));
    slow.answer(true);
    Watcher next(bus, QStringLiteral("b"));
    next.hasHost = false;
    next.takeName();
    ASSERT_TRUE(registersWith(next, 1));
    ASSERT_TRUE(waitUntil([&] { return hosts.size() >= 2; }));
    EXPECT_EQ(hosts, (std::vector{false, false}));
}

TEST_F(StatusNotifierItemTest, FollowsAWatcherThatTakesTheNameOverAndTheOneThatGetsItBack) {
    Watcher first(bus, QStringLiteral("a"));
    Watcher second(bus, QStringLiteral("b"));
    first.takeNameAndQueue();
    start();
    ASSERT_TRUE(registersWith(first, 1));
    second.takeName();
    ASSERT_TRUE(registersWith(second, 1));
    second.leave();
    ASSERT_TRUE(registersWith(first, 2));
}

TEST_F(StatusNotifierItemTest, OffersPicturesToAPanelThatItDoesNotKnow) {
    Watcher watcher(bus, QStringLiteral("a"));
    watcher.takeName();
    start();
    ASSERT_TRUE(registersWith(watcher, 1));
    item->show(content());
    EXPECT_EQ(item->property("IconName").toString(), QString());
    const auto pixmaps = item->property("IconPixmap").value<StatusNotifierPixmaps>();
    ASSERT_EQ(pixmaps.size(), 7);
    for (const StatusNotifierPixmap& pixmap : pixmaps) {
        EXPECT_EQ(pixmap.width, pixmap.height);
        ASSERT_EQ(pixmap.pixels.size(), 4 * pixmap.width * pixmap.height);
        // A pixel of the level, at half height, is opaque and grey.
        const qsizetype pixel = 4 * (pixmap.width * (pixmap.height / 2) + pixmap.width * 5 / 16);
        EXPECT_EQ(pixmap.pixels.mid(pixel, 4), QByteArray("\xFF\x55\x55\x55", 4)) << pixmap.width;
        EXPECT_EQ(pixmap.pixels.at(0), 0) << "the corner is transparent";
    }
}

TEST_F(StatusNotifierItemTest, CarriesTheNumberInTheIconWhereNoLabelIsShown) {
    Watcher watcher(bus, QStringLiteral("a"));
    watcher.takeName();
    start();
    ASSERT_TRUE(registersWith(watcher, 1));
    StatusItem::Content numbered = content();
    item->show(numbered);
    const auto plain = item->property("IconPixmap").value<StatusNotifierPixmaps>();
    numbered.numberSymbol = "percent.80.level";
    Signals told(bus, connection);
    item->show(numbered);
    told.arrive();
    EXPECT_EQ(told.icons, 1);
    const auto number = item->property("IconPixmap").value<StatusNotifierPixmaps>();
    ASSERT_EQ(number.size(), plain.size());
    EXPECT_NE(number.first().pixels, plain.first().pixels);
}

TEST_F(StatusNotifierItemTest, NamesWhatIsInAFileAndDrawsTheTimeItself) {
    start(); // without a panel names are assumed to be enough
    StatusItem::Content numbered = content();
    numbered.numberSymbol = "percent.80.level";
    ASSERT_TRUE(item->knowsSymbol(numbered.numberSymbol));
    item->show(numbered);
    EXPECT_EQ(item->property("IconName").toString(), "velmora-percent-80-level-symbolic");
    EXPECT_TRUE(item->property("IconPixmap").value<StatusNotifierPixmaps>().isEmpty());
    numbered.numberSymbol = "time.1:45.80.level";
    ASSERT_TRUE(item->knowsSymbol(numbered.numberSymbol));
    Signals told(bus, connection);
    item->show(numbered);
    told.arrive();
    EXPECT_EQ(told.icons, 1);
    EXPECT_EQ(item->property("IconName").toString(), "");
    EXPECT_EQ(item->property("IconPixmap").value<StatusNotifierPixmaps>().size(), 7);
    EXPECT_FALSE(item->knowsSymbol("time.soon.80.level"));
}

TEST_F(StatusNotifierItemTest, TellsThePanelOnlyWhatItDoesNotHave) {
    start();
    item->show(content());
    Signals told(bus, connection);
    item->show(content());
    told.arrive();
    EXPECT_EQ(told.icons + told.toolTips + told.labels, 0);
    StatusItem::Content changed = content();
    changed.toolTip = "79% · On battery";
    item->show(changed);
    told.arrive();
    EXPECT_EQ(told.toolTips, 1);
    changed.title = " 79%";
    item->show(changed);
    told.arrive();
    EXPECT_EQ(told.labels, 1);
    changed.symbol = "battery.50";
    item->show(changed);
    told.arrive();
    EXPECT_EQ(told.icons, 1);
    EXPECT_EQ(told.icons + told.toolTips + told.labels, 3);
}

TEST_F(StatusNotifierItemTest, DividesTheToolTipForThePanel) {
    const struct {
        const char* process;
        QString title;
        QString text;
    } rows[] = {
        {"mate-panel", QStringLiteral("80%"), QStringLiteral("Health\nCycles")},
        {"lxqt-panel", QStringLiteral("80%\nHealth\nCycles"), QString()},
        {"budgie-panel", QString(), QStringLiteral("80%\nHealth\nCycles")},
    };
    for (const auto& [process, title, text] : rows) {
        StatusItem::Content three = content();
        three.toolTip = "80%\nHealth\nCycles";
        const ProcessName name(process);
        Watcher watcher(bus, QString::fromLatin1(process));
        watcher.takeName();
        start();
        ASSERT_TRUE(registersWith(watcher, 1));
        item->show(three);
        EXPECT_EQ(toolTip().title, title) << process;
        EXPECT_EQ(toolTip().text, text) << process;
        item.reset();
        watcher.leave();
    }
}

TEST_F(StatusNotifierItemTest, DescribesItsIconByALoneLineWhereThatIsAddedToIt) {
    const ProcessName name("wrapper-2.0");
    Watcher watcher(bus, QStringLiteral("a"));
    watcher.takeName();
    start();
    ASSERT_TRUE(registersWith(watcher, 1));
    StatusItem::Content one = content();
    item->show(one);
    EXPECT_EQ(toolTip().title, QStringLiteral("80% · On battery"));
    EXPECT_EQ(item->property("IconAccessibleDesc").toString(), QStringLiteral("80% · On battery"));
    Signals told(bus, connection);
    one.toolTip = "80% · Charging";
    item->show(one);
    told.arrive();
    EXPECT_EQ(told.icons, 1) << "which is when the panel asks for the description";
    one.toolTip += "\nCycles: 312";
    item->show(one);
    EXPECT_EQ(item->property("IconAccessibleDesc").toString(), QStringLiteral("Battery"));
}

TEST_F(StatusNotifierItemTest, HasALabelOnlyWhileThereIsText) {
    start();
    StatusItem::Content unlabelled = content();
    unlabelled.title = unlabelled.widestTitle = "";
    item->show(unlabelled);
    EXPECT_FALSE(offered().contains(QStringLiteral("XAyatanaLabel")));
    EXPECT_FALSE(offered().contains(QStringLiteral("XAyatanaLabelGuide")));
    EXPECT_EQ(ask(QStringLiteral("Get"), {iface(), QStringLiteral("XAyatanaLabel")}).errorName(),
              "org.freedesktop.DBus.Error.UnknownProperty");
    Signals told(bus, connection);
    item->show(content());
    told.arrive();
    EXPECT_EQ(told.labels, 1);
    EXPECT_EQ(offered().value(QStringLiteral("XAyatanaLabel")), " 80%");
    EXPECT_EQ(offered().value(QStringLiteral("XAyatanaLabelGuide")), " 100%");
}

TEST_F(StatusNotifierItemTest, TakesThePointersPlaceWhereThePanelTellsThatOfAnApplet) {
    const ProcessName name("mate-panel");
    start();
    std::vector<std::optional<ScreenPoint>> points;
    item->setAction([&](std::optional<ScreenPoint> point) { points.push_back(point); });
    Watcher watcher(bus, QStringLiteral("mate"));
    watcher.takeName();
    ASSERT_TRUE(registersWith(watcher, 1));
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    const QPoint onPanel(screen.center().x(), screen.top() + 12);
    for (const QPoint& pointer : {onPanel, screen.center()}) { // the second with the keyboard
        QCursor::setPos(pointer);
        ask(QStringLiteral("Activate"), {0, 27}, iface());
    }
    ASSERT_TRUE(waitUntil([&] { return points.size() == 2; }));
    EXPECT_EQ(points[0], (ScreenPoint{onPanel.x(), onPanel.y()}));
    EXPECT_EQ(points[1], std::nullopt);
}

TEST_F(StatusNotifierItemTest, OffersThePropertiesOfTheProtocolAlone) {
    start();
    item->show(content());
    QStringList described;
    for (const auto& match :
         QRegularExpression(QStringLiteral("property name=\"(\\w+)\""))
             .globalMatch(ask(QStringLiteral("Introspect"), {}, introspectable).arguments().at(0).toString()))
        described.append(match.captured(1));
    described.sort();
    EXPECT_EQ(described.size(), 21);
    EXPECT_EQ(offered().keys(), described);
    EXPECT_EQ(ask(QStringLiteral("Get"), {iface(), QStringLiteral("objectName")}).errorName(),
              "org.freedesktop.DBus.Error.UnknownProperty");
}

TEST_F(StatusNotifierItemTest, RefusesWhatIsNoCallOfTheProtocol) {
    start();
    const QString otherTypes = QStringLiteral("80");
    const QVariantList any[] = {{}, {otherTypes}, {7, otherTypes}, {7, 7, 7}};
    for (const char* member :
         {"Activate", "SecondaryActivate", "ContextMenu", "Scroll", "XAyatanaSecondaryActivate", "Explode"})
        for (const QVariantList& arguments : any) {
            if (QLatin1String(member) == QLatin1String("Scroll") && arguments.size() == 2)
                continue;
            EXPECT_EQ(ask(QLatin1String(member), arguments, iface()).type(), QDBusMessage::ErrorMessage) << member;
        }
    for (const char* member : {"Get", "GetAll", "Set", "Explode"})
        for (const QVariantList& arguments : any)
            EXPECT_EQ(ask(QLatin1String(member), arguments).type(), QDBusMessage::ErrorMessage) << member;
    EXPECT_EQ(ask(QStringLiteral("GetAll"), {QStringLiteral("org.example")}).errorName(),
              "org.freedesktop.DBus.Error.UnknownInterface");
    EXPECT_EQ(ask(QStringLiteral("Set"), {iface(), QStringLiteral("Title"), QVariant::fromValue(QDBusVariant(7))})
                  .errorName(),
              "org.freedesktop.DBus.Error.PropertyReadOnly");
    EXPECT_EQ(ask(QStringLiteral("Scroll"), {7, QStringLiteral("vertical")}, iface()).type(),
              QDBusMessage::ReplyMessage);
}

#include "StatusNotifierItemTest.moc"
