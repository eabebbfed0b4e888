// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/settings/SettingsWindow.h"

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
constexpr int roomAround = 24; ///< what is seen around a control that the keyboard comes to
constexpr int titleBar = 40;   ///< about as high as those of window managers

/// For the title bars and task lists of X11; Wayland's desktops find it by the program's name. Empty in half a bundle.
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

SettingsWindow::SettingsWindow(QWidget* form)
    : QDialog(nullptr, Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                           Qt::WindowCloseButtonHint)
    , area_(new QScrollArea(this)) {
    setObjectName(QStringLiteral("settingsWindow"));
    if (QApplication::windowIcon().isNull())
        QApplication::setWindowIcon(programIcon()); // for the dialogs before this window, too
    setWindowTitle(QStringLiteral("Velmora Settings"));
    area_->setFrameShape(QFrame::NoFrame);
    area_->setWidgetResizable(true);
    area_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area_->setFocusPolicy(Qt::NoFocus);
    area_->verticalScrollBar()->setAccessibleName(QStringLiteral("Scroll"));
    area_->setWidget(form);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(area_);
    const QRect available = screen()->availableGeometry();
    setFixedSize(windowWidth, std::min(windowHeight, available.height() - titleBar));
    move(available.center() - rect().center());
}

void SettingsWindow::present() {
    setWindowState(windowState() & ~Qt::WindowMinimized); // there is no button for that, but other ways
    show();
    raise();
    activateWindow();
}

bool SettingsWindow::focusNextPrevChild(bool next) {
    const bool found = QDialog::focusNextPrevChild(next);
    const QWidget* widget = focusWidget();
    if (widget != nullptr && area_->widget()->isAncestorOf(widget)) {
        // By itself the area cares for no more than the place of the cursor.
        const QRect place(widget->mapTo(area_->widget(), QPoint()), widget->size());
        area_->ensureVisible(place.center().x(), place.center().y(), 0, place.height() / 2 + roomAround);
    }
    return found;
}
