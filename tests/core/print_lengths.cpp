// Prints how many elements the functions' arrays have in some legal calls, for those who describe the same in another
// language (python/lengths.txt). A line is a call: the function, the values of its arguments, 0 in place of arrays, and for
// each argument its kind, elements, elements before the pointer, and arrays that a pointer to pointers has.
#include <cinttypes>
#include <cstdio>
#include <random>

#include "support/call.h"

int main() {
    using namespace vsp::test;
    std::mt19937 random(1);
    for (const Function& f : Described::all()) {
        if (f.direct != nullptr) continue;  // not exported
        States states;
        Draw draw([&] { return std::uint32_t(random()); }, states);
        for (unsigned call = 0; call < 60; call++) {
            const Values values = draw.call(f, random(), false).values();
            std::printf("%s", f.name.c_str());
            for (const auto x : values) std::printf(" %" PRId64, std::int64_t(x));
            std::printf(" |");
            for (const Argument& a : f.arguments) {
                const auto count = [&](const Count& n) { return std::int64_t(n(values)); };
                std::printf(" %c,%" PRId64 ",%" PRId64 ",%" PRId64, "vioms"[int(a.kind)], count(a.elements),
                            count(a.history), count(a.rows));
            }
            std::printf("\n");
        }
    }
}
