// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/StatusBar.h"

#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

/// A panel that records the contents, menus and actions of its items.
class FakeStatusBar final : public StatusBar {
public:
    /// The record of one item; it outlives the item.
    struct Record {
        std::vector<StatusItem::Content> shown;
        std::function<void(std::optional<ScreenPoint>)> action;
        std::vector<StatusItem::MenuEntry> menu;
        int menus = 0; ///< how often the menu was set
        bool isAlive = true;
    };

    std::set<std::string, std::less<>> unknownSymbols; ///< names that the panel has no glyph for
    std::vector<std::shared_ptr<Record>> items;        ///< every item ever made

    [[nodiscard]] std::unique_ptr<StatusItem> createItem() override {
        items.push_back(std::make_shared<Record>());
        return std::make_unique<Item>(*this, items.back());
    }

private:
    class Item final : public StatusItem {
    public:
        Item(const FakeStatusBar& bar, std::shared_ptr<Record> record) : bar_(bar), record_(std::move(record)) {}
        ~Item() override { record_->isAlive = false; }
        Item(const Item&) = delete;
        Item& operator=(const Item&) = delete;

        bool knowsSymbol(std::string_view name) const override { return !bar_.unknownSymbols.contains(name); }
        void show(const Content& content) override { record_->shown.push_back(content); }
        void setAction(std::function<void(std::optional<ScreenPoint>)> action) override {
            record_->action = std::move(action);
        }
        void setMenu(std::vector<MenuEntry> entries) override {
            record_->menu = std::move(entries);
            ++record_->menus;
        }

    private:
        const FakeStatusBar& bar_;
        std::shared_ptr<Record> record_;
    };
};
