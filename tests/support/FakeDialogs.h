// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Dialogs.h"
#include "support/FakeJournal.h"

#include <cstddef>
#include <functional>
#include <utility>

/// Dialogs that are answered at once, as told beforehand.
class FakeDialogs final : public Dialogs {
public:
    explicit FakeDialogs(FakeJournal* journal = nullptr) : journal_(journal) {}

    std::optional<std::filesystem::path> chosenFile; ///< the save dialog's answer
    std::optional<std::size_t> chosenButton;         ///< the button that ends an alert
    std::function<void()> whileOpen;                 ///< runs while the save dialog is open

    std::vector<SaveDialog> saveDialogs;
    std::vector<Alert> alerts;
    std::vector<std::pair<std::filesystem::path, std::error_code>> errorAlerts;

    void bringToFront() override { note(journal_, "bringToFront"); }

    std::optional<std::filesystem::path> runSaveDialog(const SaveDialog& dialog) override {
        note(journal_, "runSaveDialog");
        saveDialogs.push_back(dialog);
        if (whileOpen)
            whileOpen();
        return chosenFile;
    }

    std::optional<std::size_t> runAlert(const Alert& alert) override {
        note(journal_, "runAlert");
        alerts.push_back(alert);
        return chosenButton;
    }

    void runErrorAlert(const std::filesystem::path& file, std::error_code error) override {
        note(journal_, "runErrorAlert");
        errorAlerts.emplace_back(file, error);
    }

private:
    FakeJournal* journal_;
};
