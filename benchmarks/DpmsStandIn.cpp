// SPDX-License-Identifier: GPL-3.0-or-later
// Preloaded into xfce4-power-manager where tools/cost measures it: the X servers of private desktops have no screen
// that could be switched off, and without one that program frees what it never had and ends.
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
