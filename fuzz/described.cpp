// The described functions of a family, with any arguments, good and bad, one after the other on shared states. Ends the
// program where a function reports the wrong error, changes what it must not, or differs between levels.
#include <cstdio>
#include <cstdlib>
#include <span>

#include "core/cpu.h"
#include "support/call.h"

namespace {

using namespace vsp;
using namespace vsp::test;

void expect(const Call& call, const std::string& problem) {
    if (problem.empty()) return;
    std::fprintf(stderr, "%s: %s\n", call.function->name.c_str(), problem.c_str());
    std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Level best = bestLevel(readCpuRegisters());
    const auto& functions = Described::all();
    std::span<const std::uint8_t> rest(data, size);
    const auto next = [&] {  // numbers from two bytes each: small inputs make many calls
        std::uint32_t x = 0;
        for (int i = 0; i < 2 && !rest.empty(); i++) {
            x = x << 8 | rest[0];
            rest = rest.subspan(1);
        }
        return x * 0x9E3779B1u >> 8 ^ x;
    };
    States states;
    Draw draw(next, states);
    while (!rest.empty()) {
        const std::uint32_t choice = next();
        const Call call = draw.call(functions[choice % functions.size()], next(), true);
        const Guard guard = choice & 0x8000 ? Guard::begin : Guard::end;
        const Result baseline = run(kApi_y8, call, guard);
        expect(call, problemOf(call, baseline));
        for (const auto& [level, api] : {std::pair(Level::v3, &kApi_v3), {Level::v4, &kApi_v4}}) {
            if (level > best) break;
            const Result result = run(*api, call, guard);
            expect(call, problemOf(call, result));
            expect(call, differenceBetween(call, baseline, result));
        }
        draw.keep(call, baseline);
    }
    return 0;
}
