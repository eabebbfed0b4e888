// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/PanelBar.h"

#include "platform/Lifetime.h"
#include "platform/MainLoop.h"
#include "platform/linux/StatusNotifierItem.h"
#include "platform/linux/XEmbedItem.h"

#include <QGuiApplication>

#include <utility>

namespace {

/// At login the panel may come so much later than we do.
constexpr Duration patience{10};

class PanelItem final : public StatusItem {
public:
    PanelItem(QDBusConnection bus, MainLoop& loop, const GlyphImages& glyphs)
        : loop_(loop)
        , glyphs_(glyphs)
        , notifierItem_(std::move(bus), glyphs, [this](bool isThere) { hostChanged(isThere); }) {}

    bool knowsSymbol(std::string_view name) const override { return notifierItem_.knowsSymbol(name); }

    void show(const Content& content) override {
        content_ = content;
        notifierItem_.show(content);
        if (trayItem_)
            trayItem_->show(content);
    }

    void setAction(std::function<void(std::optional<ScreenPoint>)> action) override {
        action_ = action;
        notifierItem_.setAction(std::move(action));
    }

    void setMenu(std::vector<MenuEntry> entries) override {
        entries_ = entries;
        notifierItem_.setMenu(std::move(entries));
        if (trayItem_)
            trayItem_->setMenu(entries_);
    }

private:
    MainLoop& loop_;
    const GlyphImages& glyphs_;
    Content content_;
    std::function<void(std::optional<ScreenPoint>)> action_;
    std::vector<MenuEntry> entries_;
    unsigned long change_ = 0; ///< of the host; the wait for one ends with the next
    std::unique_ptr<XEmbedItem> trayItem_;
    StatusNotifierItem notifierItem_;
    Lifetime lifetime_;

    void hostChanged(bool isThere) {
        ++change_;
        if (isThere)
            trayItem_.reset();
        else if (QGuiApplication::platformName() == QLatin1String("xcb"))
            loop_.after(patience, lifetime_.guard([this, change = change_] {
                if (change == change_)
                    useTray();
            }));
    }

    void useTray() {
        trayItem_ = std::make_unique<XEmbedItem>(glyphs_);
        trayItem_->setAction([this](std::optional<ScreenPoint> point) { action_(point); });
        trayItem_->setMenu(entries_);
        trayItem_->show(content_);
    }
};

} // namespace

PanelBar::PanelBar(QDBusConnection bus, MainLoop& loop, std::filesystem::path iconTheme)
    : bus_(std::move(bus))
    , loop_(loop)
    , glyphs_(std::move(iconTheme)) {}

std::unique_ptr<StatusItem> PanelBar::createItem() {
    return std::make_unique<PanelItem>(bus_, loop_, glyphs_);
}
