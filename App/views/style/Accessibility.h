// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAccessible>
#include <QString>

class QWidget;

/// Gives a widget the role in which screen readers present it; Qt takes most of our own widgets for mere holders of
/// others, which readers skip. A button stays one that can be pressed, whatever its role. The name and the description
/// are the widget's usual ones. A popup with a role is presented as a window of the program; Qt leaves popups out.
void setAccessibleRole(QWidget& widget, QAccessible::Role role);

/// The same for a widget that is read as one by its name, without what is inside it.
void setAccessibleWhole(QWidget& widget, QAccessible::Role role);

/// Sets what screen readers read as the widget's value.
void setAccessibleValue(QWidget& widget, const QString& value);

/// Whether a button shows something that it has unfolded; it is not read as a check box.
void setAccessibleExpanded(QWidget& widget, bool isExpanded);
