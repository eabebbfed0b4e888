// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Voice.h"

#include <string>

/// The bytes of a WAV file: RIFF, one channel, 16-bit PCM. What is above full scale is cut off there.
std::string wavFile(const Samples& samples);
