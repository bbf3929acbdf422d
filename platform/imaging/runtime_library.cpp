#include "platform/imaging/runtime_library.h"

#include <dlfcn.h>

namespace klv::imaging {

bool runtime_library::load(std::span<const char* const> names)
{
    for (const char* const name : names)
        if (!library_)
            library_ = dlopen(name, RTLD_NOW | RTLD_LOCAL);
    return library_ != nullptr;
}

void* runtime_library::symbol(const char* name) const { return dlsym(library_, name); }

} // namespace klv::imaging
