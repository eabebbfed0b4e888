// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

class DesktopWindows;
class KeyboardFocus;
class QScrollArea;
class ThinScrollBar;

/// The window of the settings form: of fixed size, and hidden but not destroyed when closed. Esc closes it as well.
class SettingsWindow final : public QDialog {
    Q_OBJECT

public:
    /// Takes ownership of the form, and is centred on the screen. `desktop` may be null; it outlives this.
    explicit SettingsWindow(QWidget* form, DesktopWindows* desktop = nullptr);

    /// Brings it to the front with the keyboard focus; its position is left to the user. `atKeyboard` says whether the
    /// user asked for it by a key, and so sees what has the focus.
    void present(bool atKeyboard = false);

protected:
    bool focusNextPrevChild(bool next) override;

private:
    DesktopWindows* desktop_;
    QScrollArea* area_;
    ThinScrollBar* scrollBar_;
    KeyboardFocus* keyboardFocus_;
};
