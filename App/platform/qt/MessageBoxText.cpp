// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/qt/MessageBoxText.h"

#include <QLabel>
#include <QMessageBox>

void setExplanation(QMessageBox& box, const QString& text) {
    constexpr int charactersInLine = 40;
    box.setInformativeText(text);
    if (auto* label = box.findChild<QLabel*>(QStringLiteral("qt_msgbox_informativelabel"))) {
        label->setTextFormat(Qt::PlainText);
        label->setMinimumWidth(charactersInLine * label->fontMetrics().averageCharWidth());
    }
}
