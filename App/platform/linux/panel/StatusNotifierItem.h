// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/StatusBar.h"
#include "platform/linux/panel/DBusMenu.h"
#include "platform/linux/panel/GlyphImages.h"
#include "platform/linux/panel/PanelHost.h"
#include "platform/linux/panel/PanelMenu.h"
#include "platform/linux/panel/StatusNotifierObject.h"
#include "platform/linux/panel/StatusNotifierTypes.h"

#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QDBusServiceWatcher>
#include <QObject>

#include <functional>
#include <optional>
#include <string>

/// A panel item that speaks the StatusNotifierItem protocol, org.kde.StatusNotifierItem. It registers with the watcher
/// whenever one appears: at login the panel may start later than we do, and panels are restarted. Its properties are
/// those of the protocol; one that is not valid is not offered.
class StatusNotifierItem final : public QObject, public StatusItem {
    Q_OBJECT
    Q_PROPERTY(QString Category READ category)
    Q_PROPERTY(QString Id READ id)
    Q_PROPERTY(QString Title READ title)
    Q_PROPERTY(QString Status READ status)
    Q_PROPERTY(int WindowId READ windowId)
    Q_PROPERTY(QString IconAccessibleDesc READ iconAccessibleDesc)
    Q_PROPERTY(QString AttentionAccessibleDesc READ none)
    Q_PROPERTY(QString IconName READ iconName)
    Q_PROPERTY(QString IconThemePath READ iconThemePath)
    Q_PROPERTY(StatusNotifierPixmaps IconPixmap READ iconPixmap)
    Q_PROPERTY(QString OverlayIconName READ none)
    Q_PROPERTY(StatusNotifierPixmaps OverlayIconPixmap READ noPixmaps)
    Q_PROPERTY(QString AttentionIconName READ none)
    Q_PROPERTY(StatusNotifierPixmaps AttentionIconPixmap READ noPixmaps)
    Q_PROPERTY(QString AttentionMovieName READ none)
    Q_PROPERTY(StatusNotifierToolTip ToolTip READ toolTip)
    Q_PROPERTY(bool ItemIsMenu READ itemIsMenu)
    Q_PROPERTY(QDBusObjectPath Menu READ menu)
    Q_PROPERTY(QVariant XAyatanaLabel READ label)
    Q_PROPERTY(QVariant XAyatanaLabelGuide READ labelGuide)
    Q_PROPERTY(uint XAyatanaOrderingIndex READ orderingIndex)

public:
    static constexpr const char* path = "/StatusNotifierItem";
    static constexpr QLatin1String interface { "org.kde.StatusNotifierItem" };

    /// Exports the item at `path`. `hostChanged` is called with whether there is a panel, once that is known and
    /// whenever it changes.
    StatusNotifierItem(QDBusConnection bus, const GlyphImages& glyphs, std::function<void(bool)> hostChanged);
    ~StatusNotifierItem() override;

    bool knowsSymbol(std::string_view name) const override;
    void show(const Content& content) override;
    void setAction(std::function<void(std::optional<ScreenPoint>)> action) override;
    void setMenu(std::vector<MenuEntry> entries) override;

    /// The user clicked on the item, at this point of the panel's; without one, the panel tells no place.
    void activate(int x, int y);
    void activate();
    /// The user asks for the menu of a panel that draws none, at this point of the panel's.
    void showMenu(int x, int y);

private Q_SLOTS:
    void askForHost();

private:
    QDBusConnection bus_;
    const GlyphImages& glyphs_;
    std::function<void(bool)> hostChanged_;
    StatusNotifierObject object_{*this};
    DBusMenu menu_;
    PanelMenu panelMenu_;
    QDBusServiceWatcher watcherWatch_;
    std::function<void(std::optional<ScreenPoint>)> action_;
    Content content_;
    PanelHost host_{.recolours = true}; ///< until the host is known: a name costs nothing to make
    std::string shownSymbol_;
    QString shownDescription_;
    unsigned long owner_ = 0; ///< counts owners of the watcher's name; replies about an earlier one are dropped

    void findHost();
    void registerWithWatcher();
    std::string symbol() const;
    void updateIcon();
    void act(std::optional<ScreenPoint> point);
    void tell(const char* signal, const QVariantList& arguments = {});

    static QString category() { return QStringLiteral("Hardware"); }
    static QString id() { return QStringLiteral("app.velmora.Velmora"); }
    static QString title() { return QStringLiteral("Velmora"); }
    static QString status() { return QStringLiteral("Active"); }
    static int windowId() { return 0; }
    static QString none() { return {}; }
    static StatusNotifierPixmaps noPixmaps() { return {}; }
    static bool itemIsMenu() { return false; }
    static uint orderingIndex() { return 0; }
    static QDBusObjectPath menu() { return QDBusObjectPath(QLatin1String(DBusMenu::path)); }
    QString iconAccessibleDesc() const;
    QString iconName() const;
    QString iconThemePath() const;
    StatusNotifierPixmaps iconPixmap() const;
    StatusNotifierToolTip toolTip() const;
    QVariant label() const;
    QVariant labelGuide() const;
};
