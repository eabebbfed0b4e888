// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

/// Dialogs that ask or tell the user something. A call returns when its dialog is closed; the main loop, timers
/// included, keeps running meanwhile.
class Dialogs {
public:
    virtual ~Dialogs() = default;

    /// What a save dialog offers.
    struct SaveDialog {
        std::string contentType;   ///< the only MIME type on offer, for instance "text/csv"
        std::string suggestedName; ///< of the file
    };

    /// A question or message with its buttons, the first of which is the default.
    struct Alert {
        std::string message;
        std::string informativeText;
        std::vector<std::string> buttons;
    };

    /// Brings the program to the front, so that the next dialog opens where the user is looking.
    virtual void bringToFront() = 0;

    /// Lets the user choose where to save; empty when the user cancelled or the dialog returned no file.
    virtual std::optional<std::filesystem::path> runSaveDialog(const SaveDialog& dialog) = 0;

    /// Shows the alert and returns the index of the button that closed it, from 0; empty when it was closed in another
    /// way.
    virtual std::optional<std::size_t> runAlert(const Alert& alert) = 0;

    /// Reports an error with a file, in the system's words for that error.
    virtual void runErrorAlert(const std::filesystem::path& file, std::error_code error) = 0;
};
