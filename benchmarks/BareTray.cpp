// SPDX-License-Identifier: GPL-3.0-or-later
// The floor that the program is measured against: Qt's own tray icon, a popover with as many plain widgets as the
// program's, which a click opens, and a window with as many plain controls, which the menu opens. It knows nothing of
// batteries.
#include "BareSettings.h"

#include <QApplication>
#include <QFrame>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QProgressBar>
#include <QPushButton>
#include <QSystemTrayIcon>
#include <QVBoxLayout>

#include <memory>

namespace {

/// A surface with a curve, as large as the widget that it stands for.
class Surface final : public QWidget {
public:
    explicit Surface(QSize size, QWidget* parent) : QWidget(parent) { setFixedSize(size); }

protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(palette().color(QPalette::Highlight), 3));
        painter.drawEllipse(rect().adjusted(6, 6, -6, -6));
        painter.drawText(rect(), Qt::AlignCenter, QStringLiteral("64%"));
    }
};

void addRow(QVBoxLayout* column, QWidget* parent, const QString& label, const QString& value) {
    auto* line = new QHBoxLayout;
    line->addWidget(new QLabel(label, parent));
    line->addStretch(1);
    line->addWidget(new QLabel(value, parent));
    column->addLayout(line);
}

std::unique_ptr<QWidget> makePopover() {
    auto popover = std::make_unique<QWidget>(nullptr, Qt::Popup | Qt::FramelessWindowHint);
    popover->setWindowTitle(QStringLiteral("Bare"));
    auto* column = new QVBoxLayout(popover.get());
    auto* header = new QHBoxLayout;
    header->addWidget(new Surface({104, 104}, popover.get()));
    auto* texts = new QVBoxLayout;
    for (const char* text : {"On battery, 2 h 47 min left", "Plugged in for 12 min"})
        texts->addWidget(new QLabel(QString::fromLatin1(text), popover.get()));
    header->addLayout(texts);
    column->addLayout(header);
    addRow(column, popover.get(), QStringLiteral("Cycle count"), QStringLiteral("312 of 1000"));
    auto* bar = new QProgressBar(popover.get());
    bar->setRange(0, 1000);
    bar->setValue(312);
    bar->setTextVisible(false);
    column->addWidget(bar);
    addRow(column, popover.get(), QStringLiteral("Battery health"), QStringLiteral("87%"));
    addRow(column, popover.get(), QStringLiteral("Power out"), QStringLiteral("10.0 W"));
    auto* choices = new QHBoxLayout;
    choices->addWidget(new QPushButton(QStringLiteral("24 hours"), popover.get()));
    choices->addWidget(new QPushButton(QStringLiteral("7 days"), popover.get()));
    column->addLayout(choices);
    column->addWidget(new Surface({308, 110}, popover.get()));
    column->addWidget(new QLabel(QStringLiteral("Daily summary"), popover.get()));
    auto* divider = new QFrame(popover.get());
    divider->setFrameShape(QFrame::HLine);
    column->addWidget(divider);
    auto* note = new QLabel(QStringLiteral("It can only remind you. It cannot stop the charger."), popover.get());
    column->addWidget(note);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(new QPushButton(QStringLiteral("Settings"), popover.get()));
    buttons->addStretch(1);
    buttons->addWidget(new QPushButton(QStringLiteral("Quit"), popover.get()));
    column->addLayout(buttons);
    popover->setFixedWidth(342);
    return popover;
}

} // namespace

int main(int argc, char** argv) {
    QApplication::setQuitOnLastWindowClosed(false);
    // Where GTK's platform theme is installed, Qt would load GTK as well, 14 MiB of it, and this would be no floor.
    QApplication::setDesktopSettingsAware(false);
    QApplication application(argc, argv);
    QPixmap pixmap(22, 22);
    pixmap.fill(Qt::darkGreen);
    QSystemTrayIcon item{QIcon(pixmap)};
    item.setToolTip(QStringLiteral("64%"));
    std::unique_ptr<QWidget> popover;
    QObject::connect(&item, &QSystemTrayIcon::activated, &application, [&popover] {
        if (!popover)
            popover = makePopover();
        popover->move(600, 40);
        popover->setVisible(!popover->isVisible());
    });
    QMenu menu;
    std::unique_ptr<QDialog> settings;
    menu.addAction(QStringLiteral("Settings…"), &application, [&settings] {
        if (!settings)
            settings = makeBareSettings();
        settings->show();
    });
    item.setContextMenu(&menu);
    item.show();
    return QApplication::exec();
}
