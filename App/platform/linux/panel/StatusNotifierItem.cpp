// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/panel/StatusNotifierItem.h"

#include "platform/GlyphName.h"
#include "platform/linux/bus/DBusCall.h"
#include "platform/linux/files/FileDescriptor.h"
#include "platform/linux/files/ReadDescriptor.h"
#include "platform/linux/panel/DevicePoint.h"
#include "platform/linux/windows/X11FreeArea.h"

#include <QCursor>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QGuiApplication>
#include <QScreen>
#include <QtEndian>

#include <fcntl.h>

#include <utility>

namespace {

constexpr QLatin1String watcherName("org.kde.StatusNotifierWatcher");
constexpr QLatin1String watcherPath("/StatusNotifierWatcher");

/// The name of a process; empty when there is no such process, or it may not be read.
std::string processName(uint process) {
    const FileDescriptor file(::open(("/proc/" + std::to_string(process) + "/comm").c_str(), O_RDONLY | O_CLOEXEC));
    std::string name = file ? readDescriptor(file.get(), 64).value_or("") : "";
    if (name.ends_with('\n'))
        name.pop_back();
    return name;
}

/// In the protocol's format: the bytes A, R, G, B of each pixel in this order, not premultiplied unless asked for.
StatusNotifierPixmap toPixmap(const QImage& image, bool premultiplied) {
    const QImage native =
        image.convertToFormat(premultiplied ? QImage::Format_ARGB32_Premultiplied : QImage::Format_ARGB32);
    const qsizetype rowSize = qsizetype{4} * native.width();
    StatusNotifierPixmap pixmap{
        .width = native.width(), .height = native.height(), .pixels = {rowSize * native.height(), Qt::Uninitialized}};
    for (int y = 0; y < native.height(); ++y)
        qToBigEndian<quint32>(native.constScanLine(y), native.width(), pixmap.pixels.data() + y * rowSize);
    return pixmap;
}

/// A point from the panel, in Qt's coordinates.
ScreenPoint logicalPoint(int x, int y) {
    if (QGuiApplication::platformName() == QLatin1String("wayland"))
        return {x, y}; // the compositor's own coordinates, which both of them have
    std::vector<ScreenArea> screens;
    for (const QScreen* screen : QGuiApplication::screens()) {
        const QRect whole = screen->geometry();
        screens.push_back({.x = whole.x(),
                           .y = whole.y(),
                           .width = whole.width(),
                           .height = whole.height(),
                           .scale = screen->devicePixelRatio()});
    }
    return toLogical({x, y}, screens);
}

/// Where the pointer is, if it can be on an item: not where windows are.
std::optional<ScreenPoint> pointerOnPanel() {
    const QPoint pointer = QCursor::pos();
    const QScreen* screen = QGuiApplication::screenAt(pointer);
    if (screen == nullptr)
        return std::nullopt;
    const QRect whole = screen->geometry();
    QRect free = x11FreeArea(*screen);
    if (free == whole) // nobody knows of the panel, which may hide itself
        free = whole.marginsRemoved({thickestPanel, thickestPanel, thickestPanel, thickestPanel});
    if (free.contains(pointer))
        return std::nullopt;
    return ScreenPoint{pointer.x(), pointer.y()};
}

} // namespace

StatusNotifierItem::StatusNotifierItem(QDBusConnection bus, const GlyphImages& glyphs,
                                       std::function<void(bool)> hostChanged)
    : bus_(std::move(bus))
    , glyphs_(glyphs)
    , hostChanged_(std::move(hostChanged))
    , menu_(bus_)
    , watcherWatch_(watcherName, bus_, QDBusServiceWatcher::WatchForOwnerChange) {
    registerStatusNotifierTypes();
    bus_.registerVirtualObject(QLatin1String(path), &object_);
    // Every change of owner, not only a first one: one watcher may take the name over from another.
    connect(&watcherWatch_, &QDBusServiceWatcher::serviceOwnerChanged, this, [this] { findHost(); });
    for (const char* change : {"StatusNotifierHostRegistered", "StatusNotifierHostUnregistered"})
        bus_.connect(watcherName, watcherPath, watcherName, QString::fromLatin1(change), this, SLOT(askForHost()));
    findHost();
}

StatusNotifierItem::~StatusNotifierItem() {
    bus_.unregisterObject(QLatin1String(path));
}

void StatusNotifierItem::findHost() {
    auto message = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetConnectionUnixProcessID"));
    message << QString(watcherName);
    callAsync(bus_, message, this, [this, owner = ++owner_](const QDBusPendingReply<uint>& reply) {
        if (owner != owner_)
            return;
        const bool isThere =
            !reply.isError() || reply.error().name() != QLatin1String("org.freedesktop.DBus.Error.NameHasNoOwner");
        if (!isThere) {
            hostChanged_(false);
            return;
        }
        host_ = panelHost(reply.isError() ? "" : processName(reply.value()));
        updateIcon();
        registerWithWatcher();
        askForHost();
    });
}

void StatusNotifierItem::askForHost() {
    auto message = QDBusMessage::createMethodCall(
        watcherName, watcherPath, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    message << QString(watcherName) << QStringLiteral("IsStatusNotifierHostRegistered");
    message.setAutoStartService(false);
    callAsync(bus_, message, this, [this, owner = owner_](const QDBusPendingReply<QDBusVariant>& reply) {
        if (owner != owner_)
            return; // about a panel that has gone; it must not count as present
        // A watcher may run without a panel behind it; one that does not answer is assumed to have one.
        hostChanged_(reply.isError() || reply.value().variant().toBool());
    });
}

void StatusNotifierItem::registerWithWatcher() {
    auto message = QDBusMessage::createMethodCall(watcherName, watcherPath, watcherName,
                                                  QStringLiteral("RegisterStatusNotifierItem"));
    // QUIRK: GNOME's extension loses items that register by a well-known name.
    message << bus_.baseService();
    message.setAutoStartService(false);
    bus_.asyncCall(message);
}

bool StatusNotifierItem::knowsSymbol(std::string_view name) const {
    return glyphs_.has(name);
}

std::string StatusNotifierItem::symbol() const {
    const bool needsNumber = !host_.showsLabel && !content_.numberSymbol.empty();
    return needsNumber ? content_.numberSymbol : content_.symbol;
}

void StatusNotifierItem::updateIcon() {
    const bool isOther = std::exchange(shownSymbol_, symbol()) != shownSymbol_;
    const bool isDescribedOtherwise =
        std::exchange(shownDescription_, iconAccessibleDesc()) != shownDescription_; // no signal of its own
    if (isOther || isDescribedOtherwise)
        tell("NewIcon");
}

void StatusNotifierItem::show(const Content& content) {
    const Content before = std::exchange(content_, content);
    updateIcon();
    if (before.title != content.title || before.widestTitle != content.widestTitle)
        tell("XAyatanaNewLabel", {QString::fromStdString(content.title), QString::fromStdString(content.widestTitle)});
    if (before.toolTip != content.toolTip)
        tell("NewToolTip");
}

void StatusNotifierItem::setAction(std::function<void(std::optional<ScreenPoint>)> action) {
    action_ = std::move(action);
}

void StatusNotifierItem::setMenu(std::vector<MenuEntry> entries) {
    menu_.setEntries(std::move(entries));
}

void StatusNotifierItem::act(std::optional<ScreenPoint> point) {
    // On a later turn of the loop: the panel gets its reply first.
    QMetaObject::invokeMethod(
        this,
        [this, point] {
            if (action_)
                action_(point);
        },
        Qt::QueuedConnection);
}

void StatusNotifierItem::activate(int x, int y) {
    act(host_.pointsAreLocal ? pointerOnPanel() : logicalPoint(x, y));
}

void StatusNotifierItem::activate() {
    act(std::nullopt);
}

void StatusNotifierItem::showMenu(int x, int y) {
    // On a later turn of the loop: the panel gets its reply first.
    QMetaObject::invokeMethod(
        this, [this, point = logicalPoint(x, y)] { panelMenu_.show(menu_.entries(), point); }, Qt::QueuedConnection);
}

void StatusNotifierItem::tell(const char* signal, const QVariantList& arguments) {
    auto message = QDBusMessage::createSignal(QLatin1String(path), interface, QLatin1String(signal));
    message.setArguments(arguments);
    bus_.send(message);
}

QString StatusNotifierItem::iconAccessibleDesc() const {
    const bool isAdded = host_.describesLoneTitle && toolTip().text.isEmpty();
    return isAdded ? toolTip().title : QString::fromStdString(content_.accessibilityDescription);
}

QString StatusNotifierItem::iconName() const {
    // Panels prefer a name to images, even if they cannot recolour the named icon.
    const bool byName = host_.recolours && glyphs_.hasFile(shownSymbol_);
    return byName ? QString::fromStdString(glyphIconName(shownSymbol_)) : QString();
}

StatusNotifierPixmaps StatusNotifierItem::iconPixmap() const {
    StatusNotifierPixmaps pixmaps;
    if (iconName().isEmpty()) {
        for (const QImage& image : glyphs_.images(shownSymbol_))
            pixmaps.append(toPixmap(image, host_.premultiplied));
    }
    return pixmaps;
}

QString StatusNotifierItem::iconThemePath() const {
    return QString::fromStdString(glyphs_.iconTheme().string());
}

StatusNotifierToolTip StatusNotifierItem::toolTip() const {
    const QString lines = QString::fromStdString(content_.toolTip);
    StatusNotifierToolTip toolTip;
    switch (host_.toolTip) {
    case PanelHost::ToolTip::title:
        toolTip.title = lines;
        break;
    case PanelHost::ToolTip::titleAndText:
        toolTip.title = lines.section(QLatin1Char('\n'), 0, 0);
        toolTip.text = lines.section(QLatin1Char('\n'), 1);
        break;
    case PanelHost::ToolTip::text:
        toolTip.text = lines;
        break;
    }
    return toolTip;
}

QVariant StatusNotifierItem::label() const {
    return content_.title.empty() ? QVariant() : QString::fromStdString(content_.title);
}

QVariant StatusNotifierItem::labelGuide() const {
    return content_.title.empty() ? QVariant() : QString::fromStdString(content_.widestTitle);
}
