// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

class QScrollArea;

/// The window of the settings form: of fixed size, and hidden but not destroyed when closed. Esc closes it as well.
class SettingsWindow final : public QDialog {
    Q_OBJECT

public:
    /// Takes ownership of the form, and is centred on the screen.
    explicit SettingsWindow(QWidget* form);

    /// Brings it to the front with the keyboard focus; its position is left to the user.
    void present();

protected:
    bool focusNextPrevChild(bool next) override;

private:
    QScrollArea* area_;
};
