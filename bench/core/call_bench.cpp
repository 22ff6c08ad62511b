// What a call through the shared library costs beyond a direct call of the same function.
#include "support/bench.h"

namespace {

const bool registered = bench::add(
    "vspsALCGetStateSize_G169_16s", &vsp::Api::vspsALCGetStateSize_G169_16s, {1},
    [](auto function, bench::Buffers& buffers, int) { benchmark::DoNotOptimize(function(buffers.words.data())); });

}  // namespace
