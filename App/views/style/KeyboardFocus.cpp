// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/style/KeyboardFocus.h"

#include <QKeyEvent>
#include <QWidget>
#include <QWindow>

namespace {

bool movesTheFocus(int key) {
    switch (key) {
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_Up:
    case Qt::Key_Down:
        return true;
    default:
        return false;
    }
}

} // namespace

bool showsFocus(const QWidget& widget) {
    return widget.hasFocus() && widget.window()->testAttribute(Qt::WA_KeyboardFocusChange);
}

KeyboardFocus::KeyboardFocus(QWidget& window) : QObject(&window), window_(window) {}

void KeyboardFocus::begin(bool atKeyboard) {
    window_.windowHandle()->installEventFilter(
        this); // which comes before all widgets; once, however often it is called
    set(atKeyboard);
}

void KeyboardFocus::set(bool atKeyboard) {
    if (window_.testAttribute(Qt::WA_KeyboardFocusChange) == atKeyboard)
        return;
    window_.setAttribute(Qt::WA_KeyboardFocusChange, atKeyboard);
    if (QWidget* widget = window_.focusWidget())
        widget->update();
}

bool KeyboardFocus::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::MouseButtonPress)
        set(false);
    else if (event->type() == QEvent::KeyPress && movesTheFocus(static_cast<QKeyEvent*>(event)->key()))
        set(true);
    return QObject::eventFilter(watched, event);
}
