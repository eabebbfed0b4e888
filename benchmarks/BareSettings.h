// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

#include <memory>

/// A window with as many plain controls as the settings have, which does nothing.
std::unique_ptr<QDialog> makeBareSettings();
