// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QMessageBox;
class QString;

/// Sets the explanation below a question: as plain text, since file names may look like markup, and in lines of a
/// readable length. By default Qt makes it as narrow as the question.
void setExplanation(QMessageBox& box, const QString& text);
