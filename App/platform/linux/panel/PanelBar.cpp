// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/panel/PanelBar.h"

#include "platform/Lifetime.h"
#include "platform/MainLoop.h"
#include "platform/linux/panel/StatusNotifierItem.h"

#include <utility>

namespace {

/// At login the panel may start this much later than we do.
constexpr Duration timeout{10};

/// After this even the slowest panel has started.
constexpr Duration untilUnseen{60};

class PanelItem final : public StatusItem {
public:
    PanelItem(QDBusConnection bus, MainLoop& loop, const GlyphImages& glyphs, const MakeTrayItem& makeTrayItem,
              const std::function<void()>& whenUnseen)
        : loop_(loop)
        , glyphs_(glyphs)
        , makeTrayItem_(makeTrayItem)
        , whenUnseen_(whenUnseen)
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
    const MakeTrayItem& makeTrayItem_;
    const std::function<void()>& whenUnseen_;
    Content content_;
    std::function<void(std::optional<ScreenPoint>)> action_;
    std::vector<MenuEntry> entries_;
    bool wasSeen_ = false;     ///< there has been a panel
    unsigned long change_ = 0; ///< counts changes of the host; the next one cancels the wait
    std::unique_ptr<StatusItem> trayItem_;
    StatusNotifierItem notifierItem_;
    Lifetime lifetime_;

    void hostChanged(bool isThere) {
        if (change_++ == 0 && !isThere)
            loop_.after(untilUnseen, lifetime_.guard([this] {
                if (!wasSeen_)
                    whenUnseen_();
            }));
        wasSeen_ |= isThere;
        if (isThere)
            trayItem_.reset();
        else if (makeTrayItem_ && !trayItem_)
            loop_.after(timeout, lifetime_.guard([this, change = change_] {
                if (change == change_)
                    useTray();
            }));
    }

    void useTray() {
        trayItem_ = makeTrayItem_(glyphs_);
        trayItem_->setAction([this](std::optional<ScreenPoint> point) { action_(point); });
        trayItem_->setMenu(entries_);
        trayItem_->show(content_);
    }
};

} // namespace

PanelBar::PanelBar(QDBusConnection bus, MainLoop& loop, std::filesystem::path iconTheme, MakeTrayItem makeTrayItem,
                   std::function<void()> whenUnseen)
    : bus_(std::move(bus))
    , loop_(loop)
    , glyphs_(std::move(iconTheme))
    , makeTrayItem_(std::move(makeTrayItem))
    , whenUnseen_(std::move(whenUnseen)) {}

std::unique_ptr<StatusItem> PanelBar::createItem() {
    return std::make_unique<PanelItem>(bus_, loop_, glyphs_, makeTrayItem_, whenUnseen_);
}
