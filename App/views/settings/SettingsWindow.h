// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

class QScrollArea;

/// The window around the settings form: of fixed size, closed but not destroyed. Esc closes it as well.
class SettingsWindow final : public QDialog {
    Q_OBJECT

public:
    /// Takes over the form, and stands in the middle of the screen.
    explicit SettingsWindow(QWidget* form);

    /// Brings it to the front with the keyboard; where it is stays the user's affair.
    void present();

protected:
    bool focusNextPrevChild(bool next) override;

private:
    QScrollArea* area_;
};
