// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/Popover.h"

#include "views/PopoverPlacement.h"

#include <QEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QScreen>
#include <QVBoxLayout>

namespace {

bool isWaylandSession() {
    return !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

/// On plain X11 a popup window closes at a click anywhere. Under Wayland, and on X servers that run inside it, a click
/// on somebody else's window never reaches a popup; a tool window that closes when it loses the focus does better
/// there.
Qt::WindowFlags popoverFlags() {
    const bool plainX11 = QGuiApplication::platformName() == QLatin1String("xcb") && !isWaylandSession();
    return plainX11 ? Qt::Popup | Qt::FramelessWindowHint
                    : Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint;
}

QScreen* screenAt(std::optional<ScreenPoint> point) {
    QScreen* screen = point ? QGuiApplication::screenAt(QPoint(point->x, point->y)) : nullptr;
    return screen != nullptr ? screen : QGuiApplication::primaryScreen();
}

} // namespace

Popover::Popover() : QWidget(nullptr, popoverFlags()), text_(new QLabel(this)) {
    setObjectName(QStringLiteral("popover"));
    setWindowTitle(QStringLiteral("Velmora"));
    text_->setObjectName(QStringLiteral("popoverText"));
    text_->setTextFormat(Qt::PlainText);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(16, 14, 16, 14);
    layout->setSizeConstraint(QLayout::SetFixedSize); // also what makes tiling compositors let it float
    layout->addWidget(text_);
}

void Popover::setText(const QString& text) {
    text_->setText(text);
    place();
}

void Popover::showAt(std::optional<ScreenPoint> point) {
    if (point && isCredible(*point, isWaylandSession()))
        point_ = point;
    place();
    show();
    raise();
    activateWindow();
}

void Popover::place() {
    adjustSize();
    if (const QScreen* screen = screenAt(point_)) {
        const QRect available = screen->availableGeometry();
        const ScreenPoint corner = placePopover(
            point_, {available.x(), available.y(), available.width(), available.height()}, width(), height());
        move(corner.x, corner.y);
    }
}

bool Popover::wasJustClosed() const {
    constexpr qint64 sameClickMilliseconds = 250;
    return sinceClosed_.isValid() && sinceClosed_.elapsed() < sameClickMilliseconds;
}

bool Popover::event(QEvent* event) {
    if (event->type() == QEvent::WindowDeactivate)
        hide();
    return QWidget::event(event);
}

void Popover::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape)
        hide();
    else
        QWidget::keyPressEvent(event);
}

void Popover::hideEvent(QHideEvent* event) {
    sinceClosed_.start();
    QWidget::hideEvent(event);
}
