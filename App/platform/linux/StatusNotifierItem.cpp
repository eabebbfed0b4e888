// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/StatusNotifierItem.h"

#include "statusnotifieritemadaptor.h"
#include "views/SymbolGlyph.h"

#include <QDBusMessage>

#include <system_error>
#include <utility>

namespace {

constexpr QLatin1String watcherName("org.kde.StatusNotifierWatcher");

} // namespace

StatusNotifierItem::StatusNotifierItem(QDBusConnection bus, std::filesystem::path iconTheme)
    : bus_(std::move(bus))
    , iconTheme_(std::move(iconTheme))
    , menu_(bus_)
    , watcherWatch_(watcherName, bus_, QDBusServiceWatcher::WatchForOwnerChange) {
    registerStatusNotifierTypes();
    new StatusNotifierItemAdaptor(this); // owned by this object, as adaptors are
    bus_.registerObject(QLatin1String(path), this);
    // Every change of the owner, not only its coming: one watcher may take the name over from another.
    connect(&watcherWatch_, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString& /*name*/, const QString& /*before*/, const QString& now) {
                if (!now.isEmpty())
                    registerWithWatcher();
            });
    registerWithWatcher();
}

StatusNotifierItem::~StatusNotifierItem() {
    bus_.unregisterObject(QLatin1String(path));
}

void StatusNotifierItem::registerWithWatcher() {
    auto message = QDBusMessage::createMethodCall(watcherName, QStringLiteral("/StatusNotifierWatcher"), watcherName,
                                                  QStringLiteral("RegisterStatusNotifierItem"));
    // QUIRK: GNOME's extension loses items that register by a well-known name.
    message << bus_.baseService();
    message.setAutoStartService(false);
    bus_.asyncCall(message);
}

bool StatusNotifierItem::knowsSymbol(std::string_view name) const {
    std::error_code error;
    return std::filesystem::exists(iconTheme_ / "hicolor/scalable/status" / (glyphIconName(name) + ".svg"), error);
}

void StatusNotifierItem::show(const Content& content) {
    const Content before = std::exchange(content_, content);
    if (before.symbol != content.symbol || before.accessibilityDescription != content.accessibilityDescription)
        Q_EMIT NewIcon();
    if (before.title != content.title || before.widestTitle != content.widestTitle)
        Q_EMIT XAyatanaNewLabel(label(), labelGuide());
    if (before.toolTip != content.toolTip)
        Q_EMIT NewToolTip();
}

void StatusNotifierItem::setAction(std::function<void(std::optional<ScreenPoint>)> action) {
    action_ = std::move(action);
}

void StatusNotifierItem::setMenu(std::vector<MenuEntry> entries) {
    menu_.setEntries(std::move(entries));
}

void StatusNotifierItem::act(std::optional<ScreenPoint> point) {
    // On a later turn: the panel gets its answer first.
    QMetaObject::invokeMethod(
        this,
        [this, point] {
            if (action_)
                action_(point);
        },
        Qt::QueuedConnection);
}

void StatusNotifierItem::Activate(int x, int y) {
    act(ScreenPoint{x, y});
}

void StatusNotifierItem::SecondaryActivate(int x, int y) {
    Activate(x, y);
}

void StatusNotifierItem::ContextMenu(int x, int y) {
    // On a later turn: the panel gets its answer first.
    QMetaObject::invokeMethod(
        this,
        [this, x, y] {
            panelMenu_.show(menu_.entries(), {x, y});
        },
        Qt::QueuedConnection);
}

void StatusNotifierItem::Scroll(int /*delta*/, const QString& /*orientation*/) {}

void StatusNotifierItem::ProvideXdgActivationToken(const QString& token) {
    // The toolkit takes it from there when the next window asks for the focus.
    qputenv("XDG_ACTIVATION_TOKEN", token.toUtf8());
}

void StatusNotifierItem::XAyatanaSecondaryActivate(uint /*timestamp*/) {
    act(std::nullopt);
}

QString StatusNotifierItem::iconAccessibleDesc() const {
    return QString::fromStdString(content_.accessibilityDescription);
}

QString StatusNotifierItem::iconName() const {
    return content_.symbol.empty() ? QString() : QString::fromStdString(glyphIconName(content_.symbol));
}

QString StatusNotifierItem::iconThemePath() const {
    return QString::fromStdString(iconTheme_.string());
}

StatusNotifierToolTip StatusNotifierItem::toolTip() const {
    // All lines in the title: some panels show only that.
    return {.iconName = {}, .iconPixmap = {}, .title = QString::fromStdString(content_.toolTip), .text = {}};
}

QString StatusNotifierItem::label() const {
    return QString::fromStdString(content_.title);
}

QString StatusNotifierItem::labelGuide() const {
    return QString::fromStdString(content_.widestTitle);
}

StatusNotifierBar::StatusNotifierBar(QDBusConnection bus, std::filesystem::path iconTheme)
    : bus_(std::move(bus))
    , iconTheme_(std::move(iconTheme)) {}

std::unique_ptr<StatusItem> StatusNotifierBar::createItem() {
    return std::make_unique<StatusNotifierItem>(bus_, iconTheme_);
}
