// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The header of QCustomPlot uses Qt's keywords, which our code does without.
#define emit Q_EMIT
#define foreach Q_FOREACH
#define signals Q_SIGNALS
#define slots Q_SLOTS
#include <qcustomplot.h>
#undef emit
#undef foreach
#undef signals
#undef slots
