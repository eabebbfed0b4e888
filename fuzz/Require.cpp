// SPDX-License-Identifier: GPL-3.0-or-later
#include "Target.h"

#include <cstdlib>
#include <iostream>

void require(bool holds, const char* what) {
    if (holds)
        return;
    std::cerr << "This does not hold: " << what << std::endl;
    std::abort();
}
