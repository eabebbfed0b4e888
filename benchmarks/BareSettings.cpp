// SPDX-License-Identifier: GPL-3.0-or-later
#include "BareSettings.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QSpinBox>
#include <QTimeEdit>
#include <QVBoxLayout>

std::unique_ptr<QDialog> makeBareSettings() {
    auto window = std::make_unique<QDialog>();
    window->setWindowTitle(QStringLiteral("Bare Settings"));
    window->setFixedSize(480, 720);
    auto* area = new QScrollArea(window.get());
    area->setWidgetResizable(true);
    auto* form = new QWidget;
    auto* rows = new QFormLayout(form);
    for (int i = 0; i < 10; ++i)
        rows->addRow(QStringLiteral("Something to switch on"), new QCheckBox(form));
    for (int i = 0; i < 4; ++i)
        rows->addRow(QStringLiteral("A number to choose"), new QSpinBox(form));
    for (int i = 0; i < 5; ++i) {
        auto* choices = new QComboBox(form);
        for (int choice = 0; choice < 16; ++choice)
            choices->addItem(QStringLiteral("Choice %1").arg(choice));
        rows->addRow(QStringLiteral("Sound"), choices);
    }
    for (const char* name : {"From", "Until"})
        rows->addRow(QString::fromLatin1(name), new QTimeEdit(form));
    for (const char* name : {"Export", "Reset"})
        rows->addRow(new QPushButton(QString::fromLatin1(name), form));
    rows->addRow(new QLabel(QStringLiteral("It can only remind you. It cannot stop the charger."), form));
    area->setWidget(form);
    auto* layout = new QVBoxLayout(window.get());
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(area);
    return window;
}
