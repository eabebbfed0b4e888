// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/SettingsWindow.h"

#include <QKeyEvent>
#include <QScreen>
#include <QScrollArea>
#include <QVBoxLayout>

#include <algorithm>

namespace {

constexpr int windowWidth = 480;
constexpr int windowHeight = 720;
constexpr int titleBar = 40; ///< about as high as those of window managers

} // namespace

SettingsWindow::SettingsWindow(QWidget* form)
    : QWidget(nullptr, Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                           Qt::WindowCloseButtonHint) {
    setObjectName(QStringLiteral("settingsWindow"));
    setWindowTitle(QStringLiteral("Velmora Settings"));
    auto* area = new QScrollArea(this);
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area->setFocusPolicy(Qt::NoFocus);
    area->setWidget(form);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(area);
    const QRect available = screen()->availableGeometry();
    setFixedSize(windowWidth, std::min(windowHeight, available.height() - titleBar));
    move(available.center() - rect().center());
}

void SettingsWindow::present() {
    show();
    raise();
    activateWindow();
}

void SettingsWindow::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape)
        close();
    else
        QWidget::keyPressEvent(event);
}
