// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Voice.h"

#include <string>

/// The bytes of a WAV file: RIFF, one channel, 16-bit PCM. Samples above full scale are clipped.
std::string wavFile(const Samples& samples);
