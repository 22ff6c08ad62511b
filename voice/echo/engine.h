// What a canceller is inside: the functions of its engine, which the interface calls after its checks.
#pragma once

#include <new>

#include "echo/memory.h"

#pragma GCC visibility push(default)  // of what the library exports
#include "vspsvoice/echo_canceller.h"
#pragma GCC visibility pop

namespace vspv {

struct EchoEngine {
    Vsp32s (*size)(const VspvEchoSettings& settings);
    void* (*init)(void* memory, const VspvEchoSettings& settings);  // returns the object
    void (*process16s)(void* object, const Vsp16s* far, const Vsp16s* near, Vsp16s* out, Vsp32s len);
    void (*process32f)(void* object, const Vsp32f* far, const Vsp32f* near, Vsp32f* out, Vsp32s len);
    Vsp32s (*latency)(const void* object);
    VspvEchoStatus (*status)(const void* object);
};

// Of a class whose constructor takes the settings and the memory for what it refers to.
template <class Canceller>
constexpr EchoEngine engineOf() {
    return {.size =
                [](const VspvEchoSettings& settings) {
                    Memory memory;
                    memory.take<Canceller>(1);
                    const Canceller canceller(settings, memory);
                    return memory.size();
                },
            .init = [](void* begin, const VspvEchoSettings& settings) -> void* {
                Memory memory(begin);
                void* object = memory.take<Canceller>(1).data();
                return new (object) Canceller(settings, memory);
            },
            .process16s = [](void* object, const Vsp16s* far, const Vsp16s* near, Vsp16s* out,
                             Vsp32s len) { static_cast<Canceller*>(object)->process(far, near, out, len); },
            .process32f = [](void* object, const Vsp32f* far, const Vsp32f* near, Vsp32f* out,
                             Vsp32s len) { static_cast<Canceller*>(object)->process(far, near, out, len); },
            .latency = [](const void* object) { return static_cast<const Canceller*>(object)->latency(); },
            .status = [](const void* object) { return static_cast<const Canceller*>(object)->status(); }};
}

extern const EchoEngine kSubbandFloat, kSubbandFixed, kFullbandFloat, kFullbandFixed;

}  // namespace vspv
