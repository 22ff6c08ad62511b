// Chooses the instruction-set level while the library is loaded, and exports every function as a jump through its table.
// Compiled without instrumentation: the resolver runs before relocation is complete and must not call anything.
#include "core/api.h"
#include "core/cpu.h"

extern "C" {

using Function = void (*)();

[[gnu::visibility("hidden")]] Function vspResolveApi() {
    const vsp::Level level = vsp::bestLevel(vsp::readCpuRegisters());
    const vsp::Api* api = &vsp::kApi_y8;
    if (level == vsp::Level::v3) api = &vsp::kApi_v3;
    if (level == vsp::Level::v4) api = &vsp::kApi_v4;
    return reinterpret_cast<Function>(reinterpret_cast<unsigned long>(api));
}

// An indirect function whose "address" is the table: the loader stores it in vspApi, which is read-only afterwards.
[[gnu::ifunc("vspResolveApi"), gnu::visibility("hidden")]] void vspApiIndirect();
[[gnu::visibility("hidden")]] extern const Function vspApi;
[[gnu::used]] const Function vspApi = &vspApiIndirect;
}

// One thunk per name, in the order of the table's slots.
asm(R"(
    .macro vsp_export name
        .globl \name
        .type \name, @function
        .p2align 4
    \name:
        endbr64
        movq vspApi(%rip), %rax
        jmpq *vsp_slot(%rax)
        .size \name, . - \name
        .set vsp_slot, vsp_slot + 8
    .endm
    .text
    .set vsp_slot, 0
)"
#define VSPSC_EXPORT(family, name) "vsp_export " #name "\n"
#include "core/exports.def"
#undef VSPSC_EXPORT
);
