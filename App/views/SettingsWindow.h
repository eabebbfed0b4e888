// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

/// The window around the settings form: of fixed size, closed but not destroyed.
class SettingsWindow final : public QWidget {
    Q_OBJECT

public:
    /// Takes over the form, and stands in the middle of the screen.
    explicit SettingsWindow(QWidget* form);

    /// Brings it to the front with the keyboard; where it is stays the user's affair.
    void present();

protected:
    void keyPressEvent(QKeyEvent* event) override;
};
