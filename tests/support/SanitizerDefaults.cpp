// SPDX-License-Identifier: GPL-3.0-or-later

/// Defaults for every program of a build with sanitizers, however it is started; the variables ASAN_OPTIONS and
/// LSAN_OPTIONS override them. The sanitizers call the first three functions by name, and libraries call dlclose.
// NOLINTBEGIN(bugprone-reserved-identifier): the sanitizers' names
extern "C" {
__attribute__((visibility("default"))) const char* __asan_default_options();
__attribute__((visibility("default"))) const char* __lsan_default_options();
__attribute__((visibility("default"))) const char* __lsan_default_suppressions();
__attribute__((visibility("default"))) int dlclose(void* handle);
}
// NOLINTEND(bugprone-reserved-identifier)

extern "C" const char* __asan_default_options() {
    // umockdev preloads a library to show its devices, and that comes before the sanitizer's own.
    return "verify_asan_link_order=0";
}

extern "C" const char* __lsan_default_options() {
    // The program never writes to standard error, so the list of suppressions may not appear there either.
    return "print_suppressions=0";
}

extern "C" const char* __lsan_default_suppressions() {
    return
        // Qt's Wayland plugin leaks a few objects, even in an empty program.
        "leak:libwayland-client\n";
}

extern "C" int dlclose(void* /*handle*/) {
    // Plugins of libraries (such as PipeWire's for sound) hold memory until the process ends, and only they point to
    // it. Once they are unloaded, that looks like a leak, and without a name to suppress it by.
    return 0;
}
