// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

/// Windows that ask or tell something and are waited for. The main loop, its timers included, runs on meanwhile.
class Dialogs {
public:
    virtual ~Dialogs() = default;

    /// What a save dialog offers.
    struct SaveDialog {
        std::string contentType;   ///< the one MIME type that can be chosen, for instance "text/csv"
        std::string suggestedName; ///< of the file
    };

    /// A question or message with its buttons, the first of which is the default.
    struct Alert {
        std::string message;
        std::string informativeText;
        std::vector<std::string> buttons;
    };

    /// Brings the program in front of the others; what is shown next stands where the user looks.
    virtual void bringToFront() = 0;

    /// Lets the user choose where to save; empty when that was cancelled or gave no file.
    virtual std::optional<std::filesystem::path> runSaveDialog(const SaveDialog& dialog) = 0;

    /// Shows the alert; the number of the button that ended it, from 0, and empty when it was closed otherwise.
    virtual std::optional<std::size_t> runAlert(const Alert& alert) = 0;

    /// Says that something went wrong with a file, in the system's words for that error.
    virtual void runErrorAlert(const std::filesystem::path& file, std::error_code error) = 0;
};
