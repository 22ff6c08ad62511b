#include "chosen_level.h"

#include "core/cpu.h"

extern "C" {
[[gnu::visibility("hidden"), gnu::used]] const vsp::Api* vspChosenApi = &vsp::kApi_y8;
}

// As in the library, but through a table that can be exchanged.
asm(R"(
    .macro vsp_export name
        .globl \name
        .type \name, @function
        .p2align 4
    \name:
        endbr64
        movq vspChosenApi(%rip), %rax
        jmpq *vsp_chosen_slot(%rax)
        .size \name, . - \name
        .set vsp_chosen_slot, vsp_chosen_slot + 8
    .endm
    .text
    .set vsp_chosen_slot, 0
)"
#define VSPSC_EXPORT(family, name) "vsp_export " #name "\n"
#include "core/exports.def"
#undef VSPSC_EXPORT
);

std::vector<const vsp::Api*> runnableLevels() {
    const vsp::Level best = vsp::bestLevel(vsp::readCpuRegisters());
    std::vector<const vsp::Api*> all{&vsp::kApi_y8};
    if (best >= vsp::Level::v3) all.push_back(&vsp::kApi_v3);
    if (best >= vsp::Level::v4) all.push_back(&vsp::kApi_v4);
    return all;
}

void chooseLevel(const vsp::Api& level) { vspChosenApi = &level; }
