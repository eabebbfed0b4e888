// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Panels.h"
#include "support/FakeJournal.h"

#include <cstddef>
#include <functional>
#include <utility>

/// Panels that are answered at once, as told beforehand.
class FakePanels final : public Panels {
public:
    explicit FakePanels(FakeJournal* journal = nullptr) : journal_(journal) {}

    std::optional<std::filesystem::path> chosenFile; ///< what the save panel gives
    std::optional<std::size_t> chosenButton;         ///< what ends an alert
    std::function<void()> whileOpen;                 ///< what happens while the save panel is open

    std::vector<SavePanel> savePanels;
    std::vector<Alert> alerts;
    std::vector<std::pair<std::filesystem::path, std::error_code>> errorAlerts;

    void bringToFront() override { note(journal_, "bringToFront"); }

    std::optional<std::filesystem::path> runSavePanel(const SavePanel& panel) override {
        note(journal_, "runSavePanel");
        savePanels.push_back(panel);
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
