// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/settings/SettingsWindow.h"

#include "platform/DesktopWindows.h"
#include "views/style/KeyboardFocus.h"
#include "views/style/ThinScrollBar.h"

#include <QApplication>
#include <QIcon>
#include <QPainter>
#include <QPixmap>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QSvgRenderer>
#include <QVBoxLayout>

#include <algorithm>

namespace {

constexpr int windowWidth = 480;
constexpr int windowHeight = 720;
constexpr int roomAround = 24; ///< kept in view around a control that gets the focus
constexpr int titleBar = 40;   ///< about as high as window managers make it

/// For title bars and task lists on X11; Wayland desktops find the icon by the program's name. Null in an incomplete
/// bundle.
QIcon programIcon() {
    QSvgRenderer drawing(QCoreApplication::applicationDirPath() +
                         QStringLiteral("/../share/icons/hicolor/scalable/apps/app.velmora.Velmora.svg"));
    QIcon icon;
    if (!drawing.isValid())
        return icon;
    for (const int size : {16, 24, 32, 48}) {
        QPixmap pixmap(size, size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        drawing.render(&painter);
        painter.end();
        icon.addPixmap(pixmap);
    }
    return icon;
}

} // namespace

SettingsWindow::SettingsWindow(QWidget* form, DesktopWindows* desktop)
    : QDialog(nullptr, Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                           Qt::WindowCloseButtonHint)
    , desktop_(desktop)
    , area_(new QScrollArea(this))
    , scrollBar_(new ThinScrollBar(area_->verticalScrollBar(), this))
    , keyboardFocus_(new KeyboardFocus(*this)) {
    setObjectName(QStringLiteral("settingsWindow"));
    if (QApplication::windowIcon().isNull())
        QApplication::setWindowIcon(programIcon()); // for the dialogs in front of this window, too
    setWindowTitle(QStringLiteral("Velmora Settings"));
    area_->setFrameShape(QFrame::NoFrame);
    area_->setWidgetResizable(true);
    area_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff); // it would take width from the form
    area_->setFocusPolicy(Qt::NoFocus);
    area_->verticalScrollBar()->setAccessibleName(QStringLiteral("Scroll"));
    area_->setWidget(form);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(area_);
    const QRect available = screen()->availableGeometry();
    setFixedSize(windowWidth, std::min(windowHeight, available.height() - titleBar));
    constexpr int gap = 6; ///< between the scroll bar and the sides, which puts it in the middle of the margin
    scrollBar_->setGeometry(isRightToLeft() ? gap : width() - gap - ThinScrollBar::thickness, gap,
                            ThinScrollBar::thickness, height() - 2 * gap);
    scrollBar_->raise();
    move(available.center() - rect().center());
}

void SettingsWindow::present(bool atKeyboard) {
    setWindowState(windowState() & ~Qt::WindowMinimized); // it has no minimise button, but there are other ways
    if (desktop_ != nullptr) {
        winId(); // makes the window
        desktop_->willShowSettings(*windowHandle());
    }
    show();
    keyboardFocus_->begin(atKeyboard);
    raise();
    activateWindow();
}

bool SettingsWindow::focusNextPrevChild(bool next) {
    const bool found = QDialog::focusNextPrevChild(next);
    const QWidget* widget = focusWidget();
    if (widget != nullptr && area_->widget()->isAncestorOf(widget)) {
        // By itself QScrollArea only keeps the cursor in view.
        const QRect place(widget->mapTo(area_->widget(), QPoint()), widget->size());
        area_->ensureVisible(place.center().x(), place.center().y(), 0, place.height() / 2 + roomAround);
    }
    return found;
}
