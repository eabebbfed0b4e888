// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/SettingsWindow.h"

#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>

#include <algorithm>

namespace {

constexpr int windowWidth = 480;
constexpr int windowHeight = 720;
constexpr int roomAround = 24; ///< what is seen around a control that the keyboard comes to
constexpr int titleBar = 40;   ///< about as high as those of window managers

} // namespace

SettingsWindow::SettingsWindow(QWidget* form)
    : QDialog(nullptr, Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                           Qt::WindowCloseButtonHint)
    , area_(new QScrollArea(this)) {
    setObjectName(QStringLiteral("settingsWindow"));
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
