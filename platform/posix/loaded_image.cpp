#include "platform/loaded_image.h"

#include <cstring>
#include <dlfcn.h>
#include <link.h>

namespace platform {

namespace {

struct tagSearch {
    const link_map* Module;
    std::vector<tagNoteSegment> Found;
};

bool IsSameModule(const dl_phdr_info& info, const link_map& module) {
    return info.dlpi_addr == module.l_addr && std::strcmp(info.dlpi_name, module.l_name) == 0;
}

int CollectNotes(dl_phdr_info* info, std::size_t, void* data) {
    auto& search = *static_cast<tagSearch*>(data);
    if (!IsSameModule(*info, *search.Module))
        return 0;
    for (std::size_t i = 0; i < info->dlpi_phnum; ++i) {
        const auto& header = info->dlpi_phdr[i];
        if (header.p_type == PT_NOTE)
            search.Found.push_back(
                {{reinterpret_cast<const char*>(info->dlpi_addr + header.p_vaddr), header.p_memsz},
                 header.p_align});
    }
    return 1;
}

} // namespace

std::vector<tagNoteSegment> FindNoteSegments(const CModule& module) {
    link_map* map = nullptr;
    if (module.NativeHandle() == nullptr ||
        dlinfo(module.NativeHandle(), RTLD_DI_LINKMAP, static_cast<void*>(&map)) != 0)
        return {};
    tagSearch search{map, {}};
    dl_iterate_phdr(CollectNotes, &search);
    return search.Found;
}

} // namespace platform
