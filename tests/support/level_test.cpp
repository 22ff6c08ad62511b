#include "support/level_test.h"

#include <dlfcn.h>

#include <cstdlib>
#include <stdexcept>

#include "core/cpu.h"

namespace vsp::test {

static Api loadLibrary() {
    void* library = dlopen(VSPSC_LIBRARY_FILE, RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) throw std::runtime_error(dlerror());
    Api api;
#define VSPSC_EXPORT(family, name)                                          \
    api.name = reinterpret_cast<decltype(api.name)>(dlsym(library, #name)); \
    if (api.name == nullptr) throw std::runtime_error("the library does not export " #name);
#include "core/exports.def"
#undef VSPSC_EXPORT
    return api;
}

const Api* apiOf(const std::string& level) {
    static const char* only = std::getenv("VSPSC_LEVEL");  // tools/mutate.py changes one level
    if (only != nullptr && level != only) return nullptr;
    static const Api library = loadLibrary();
    if (level == "library") return &library;
    const Level best = bestLevel(readCpuRegisters());
    if (level == "v4") return best >= Level::v4 ? &kApi_v4 : nullptr;
    if (level == "v3") return best >= Level::v3 ? &kApi_v3 : nullptr;
    return &kApi_y8;
}

}  // namespace vsp::test
