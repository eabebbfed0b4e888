// SPDX-License-Identifier: GPL-3.0-or-later

/// How a build with sanitizers behaves, in every program of it and however that is started; the variables ASAN_OPTIONS
/// and LSAN_OPTIONS still have the last word. The sanitizers call these by name, and libraries the last one.
// NOLINTBEGIN(bugprone-reserved-identifier): the sanitizers' names
extern "C" {
__attribute__((visibility("default"))) const char* __asan_default_options();
__attribute__((visibility("default"))) const char* __lsan_default_options();
__attribute__((visibility("default"))) const char* __lsan_default_suppressions();
__attribute__((visibility("default"))) int dlclose(void* handle);
}
// NOLINTEND(bugprone-reserved-identifier)

extern "C" const char* __asan_default_options() {
    // umockdev shows its devices by preloading a library, which then comes before the sanitizer's own.
    return "verify_asan_link_order=0";
}

extern "C" const char* __lsan_default_options() {
    // The program never writes to standard error, also not what was suppressed.
    return "print_suppressions=0";
}

extern "C" const char* __lsan_default_suppressions() {
    return
        // Qt's Wayland plugin leaves a few objects behind, also those of an empty program.
        "leak:libwayland-client\n";
}

extern "C" int dlclose(void* /*handle*/) {
    // Plugins of the libraries' (PipeWire's for sound) keep what they have for the whole process, where only they know
    // of it. Once they are unloaded, that looks like a leak, and one without a name.
    return 0;
}
