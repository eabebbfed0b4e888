// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/sound/CanberraOutput.h"

#include <dlfcn.h>

#include <utility>

namespace {

void saysNothing(const char* /*file*/, int /*line*/, const char* /*function*/, int /*error*/, const char*, ...) {}

/// QUIRK: if libcanberra plays through ALSA, its threads are still returning from the driver when the driver is
/// unloaded with its context, and crash. Once the driver is in the process, it stays.
void keepAlsaDriver() {
    if (void* driver = ::dlopen("libcanberra-alsa.so", RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE))
        ::dlclose(driver);
}

/// QUIRK: libasound complains on standard error about anything it does not find: eight lines where there is no sound
/// card. It is in the process only if libcanberra has chosen it.
void silenceAlsa() {
    void* library = ::dlopen("libasound.so.2", RTLD_LAZY | RTLD_NOLOAD);
    if (library == nullptr)
        return;
    using SetHandler = int (*)(decltype(&saysNothing));
    if (const auto setHandler = reinterpret_cast<SetHandler>(::dlsym(library, "snd_lib_error_set_handler")))
        setHandler(saysNothing);
    ::dlclose(library);
}

} // namespace

CanberraOutput::~CanberraOutput() {
    if (context_ != nullptr)
        ca_context_destroy(context_);
}

SoundOutput::Result CanberraOutput::play(const Properties& properties, std::function<void()> finished) {
    if (context_ == nullptr && !open())
        return Result::Failed;
    ca_proplist* list = nullptr;
    if (ca_proplist_create(&list) != CA_SUCCESS)
        return Result::Failed;
    for (const auto& [name, value] : properties)
        ca_proplist_sets(list, name.c_str(), value.c_str());
    finished_ = std::move(finished);
    const int error = ca_context_play_full(context_, 0, list, finish, this);
    ca_proplist_destroy(list);
    if (error == CA_ERROR_NOTFOUND)
        return Result::NotFound;
    return error == CA_SUCCESS ? Result::Playing : Result::Failed;
}

bool CanberraOutput::open() {
    if (ca_context_create(&context_) != CA_SUCCESS) {
        context_ = nullptr;
        return false;
    }
    // What the desktop's volume control shows.
    ca_context_change_props(context_, CA_PROP_APPLICATION_NAME, "Velmora", CA_PROP_APPLICATION_ID,
                            "app.velmora.Velmora", CA_PROP_APPLICATION_ICON_NAME, "app.velmora.Velmora", nullptr);
    if (ca_context_open(context_) != CA_SUCCESS) {
        ca_context_destroy(std::exchange(context_, nullptr));
        return false;
    }
    keepAlsaDriver();
    silenceAlsa();
    return true;
}

void CanberraOutput::finish(ca_context* /*context*/, std::uint32_t /*id*/, int /*error*/, void* output) {
    static_cast<CanberraOutput*>(output)->finished_();
}

SoundOutput* makeCanberraOutput() {
    return new CanberraOutput;
}
