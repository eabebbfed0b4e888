// SPDX-License-Identifier: GPL-3.0-or-later
// tools/cost preloads this into xfce4-power-manager. The X servers of private desktops have no DPMS, and without it
// xfce4-power-manager frees memory that it never allocated, and ends.
#include <cstdint>

extern "C" {

int DPMSCapable(void* /*display*/) {
    return 1;
}

int DPMSInfo(void* /*display*/, std::uint16_t* level, std::uint8_t* state) {
    *level = 0;
    *state = 1;
    return 1;
}

int DPMSGetTimeouts(void* /*display*/, std::uint16_t* standby, std::uint16_t* suspend, std::uint16_t* off) {
    *standby = *suspend = *off = 0;
    return 1;
}

int DPMSSetTimeouts(void* /*display*/, std::uint16_t /*standby*/, std::uint16_t /*suspend*/, std::uint16_t /*off*/) {
    return 1;
}

int DPMSEnable(void* /*display*/) {
    return 1;
}

int DPMSDisable(void* /*display*/) {
    return 1;
}

int DPMSForceLevel(void* /*display*/, std::uint16_t /*level*/) {
    return 1;
}
}
