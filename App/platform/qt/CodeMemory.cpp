// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/qt/CodeMemory.h"

#include <link.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <span>
#include <string>
#include <string_view>

namespace {

bool isTraced() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("TracerPid:"))
            return line.find_first_of("123456789") != std::string::npos;
    }
    return false;
}

/// Whether the linker has written addresses into the code as well, as it must where that is not position-independent.
bool hasWrittenCode(const dl_phdr_info& object) {
    for (const auto& segment : std::span(object.dlpi_phdr, object.dlpi_phnum)) {
        if (segment.p_type != PT_DYNAMIC)
            continue;
        const auto* entry = reinterpret_cast<const ElfW(Dyn)*>(object.dlpi_addr + segment.p_vaddr);
        for (; entry->d_tag != DT_NULL; ++entry) {
            if (entry->d_tag == DT_TEXTREL || (entry->d_tag == DT_FLAGS && (entry->d_un.d_val & DF_TEXTREL) != 0))
                return true;
        }
    }
    return false;
}

/// Whoever clicks on the item waits for this library first of all, and its code takes longer to fetch than to keep.
bool isOfWindows(const dl_phdr_info& object) {
    return std::string_view(object.dlpi_name).find("libQt6Widgets.so") != std::string_view::npos;
}

int giveBackSegments(dl_phdr_info* object, std::size_t /*size*/, void* /*data*/) {
    if (hasWrittenCode(*object) || isOfWindows(*object))
        return 0;
    const auto pageSize = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
    for (const auto& segment : std::span(object->dlpi_phdr, object->dlpi_phnum)) {
        // The linker has written addresses into writable segments, also where they cannot be written any more.
        if (segment.p_type != PT_LOAD || (segment.p_flags & PF_W) != 0)
            continue;
        const std::uintptr_t begin = (object->dlpi_addr + segment.p_vaddr) & ~(pageSize - 1);
        const std::uintptr_t end = object->dlpi_addr + segment.p_vaddr + segment.p_memsz;
        ::madvise(reinterpret_cast<void*>(begin), end - begin, MADV_DONTNEED);
    }
    return 0;
}

} // namespace

void giveBackCode() {
    if (!isTraced())
        ::dl_iterate_phdr(giveBackSegments, nullptr);
}
