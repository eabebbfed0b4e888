// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

class QWidget;

/// Whether to draw a ring around the widget: it has the focus, and the user is at the keyboard.
bool showsFocus(const QWidget& widget);

/// Keeps track for one window of whether the user is at the keyboard: from a key that moves the focus until the next
/// click. By itself Qt only notices the former. Qt's own styles follow this, too.
class KeyboardFocus final : public QObject {
    Q_OBJECT

public:
    /// Becomes a child of the window.
    explicit KeyboardFocus(QWidget& window);

    /// To be called whenever the window has been shown; `atKeyboard` says how the user asked for it.
    void begin(bool atKeyboard);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QWidget& window_;

    void set(bool atKeyboard);
};
