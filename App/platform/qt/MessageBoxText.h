// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QMessageBox;
class QString;

/// Puts the explanation below a question: as plain text, since names of files may look like markup, and in lines of a
/// length that can be read. By itself Qt makes it as narrow as the question.
void setExplanation(QMessageBox& box, const QString& text);
