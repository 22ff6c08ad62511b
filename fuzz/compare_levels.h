// Calls a function with arbitrary arguments at every level that the processor has and ends the program where two levels
// differ or an error left a changed output.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <list>
#include <span>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "core/api.h"
#include "core/cpu.h"
#include "support/guarded.h"

namespace vsp::fuzz {

using Bytes = std::vector<std::byte>;

// The bytes that the fuzzer gives; zeros when they are used up.
class Input {
  public:
    Input(const std::uint8_t* data, std::size_t size) : rest_(data, size) {}

    bool empty() const { return rest_.empty(); }

    void fill(void* to, std::size_t size) {
        const std::size_t given = size < rest_.size() ? size : rest_.size();
        std::memset(to, 0, size);
        if (given > 0) std::memcpy(to, rest_.data(), given);
        rest_ = rest_.subspan(given);
    }

    template <class T>
    T take() {
        T x;
        fill(&x, sizeof x);
        return x;
    }

  private:
    std::span<const std::uint8_t> rest_;
};

// The arguments of a call in the making: memory blocks, and the number of elements of arrays.
struct Call {
    Input& in;
    Vsp32s len;
    std::vector<Bytes> blocks;
};

// An argument: a value, or a pointer given as the number of its block, -1 for null.
template <class P>
struct Drawn {
    P value;
    P pass(const std::vector<std::byte*>&) const { return value; }
};
template <class T>
struct Drawn<T*> {
    int block;
    T* pass(const std::vector<std::byte*>& blocks) const {
        return block < 0 ? nullptr : reinterpret_cast<T*>(blocks[std::size_t(block)]);
    }
};

// The kinds of parameters. Each draws an argument of the parameter's type.
struct Kind {
    void keep(const std::vector<Bytes>&) const {}
};

// An array of the call's length, or of a number of elements, sometimes null, sometimes one that is there already.
struct Array : Kind {
    Vsp32s elements;  // 0 for the call's length

    explicit constexpr Array(Vsp32s number) : elements(number) {}

    template <class P>
    Drawn<P> draw(Call& call) const {
        const unsigned choice = call.in.take<std::uint8_t>();
        if (choice == 0xFF) return {-1};
        const std::size_t n = elements > 0 ? std::size_t(elements) : call.len < 1 ? 1 : std::size_t(call.len);
        Bytes block(n * sizeof(std::remove_pointer_t<P>));
        if (choice % 4 == 3)
            for (std::size_t i = 0; i < call.blocks.size(); i++)
                if (call.blocks[i].size() == block.size()) return {int(i)};
        // A few elements over and over, so that short inputs fill long arrays.
        const std::size_t period = 2 * (1 + call.in.take<std::uint8_t>() % 32u);
        call.in.fill(block.data(), period < block.size() ? period : block.size());
        for (std::size_t i = period; i < block.size(); i++) block[i] = block[i - period];
        call.blocks.push_back(block);
        return {int(call.blocks.size()) - 1};
    }
};
inline constexpr Array array(0), one(1);

struct Length : Kind {
    template <class P>
    Drawn<P> draw(Call& call) const {
        return {P(call.len)};
    }
};
inline constexpr Length length;

// Anything; integers are often small.
struct Value : Kind {
    template <class P>
    Drawn<P> draw(Call& call) const {
        const P value = call.in.take<P>();
        if constexpr (sizeof(P) == 4 && std::is_integral_v<P>)
            if (value % 4 != 0) return {P((value >> 2) % 44 - 2)};
        return {value};
    }
};
inline constexpr Value value;

// What the fuzzer has drawn itself.
struct Given : Kind {
    Vsp32s number;

    explicit constexpr Given(Vsp32s drawn) : number(drawn) {}
    template <class P>
    Drawn<P> draw(Call&) const {
        return {P(number)};
    }
};

// A state that one call hands to the next.
struct State : Kind {
    Bytes& bytes;
    mutable std::size_t block = 0;

    explicit State(Bytes& memory) : bytes(memory) {}
    template <class P>
    Drawn<P> draw(Call& call) const {
        block = call.blocks.size();
        call.blocks.push_back(bytes);
        return {int(block)};
    }
    void keep(const std::vector<Bytes>& after) const { bytes = after[block]; }
};

template <class... P, class... Kind>
void compareLevels(Input& in, const char* name, VspStatus (*Api::*function)(P...), const Kind&... kinds) {
    const unsigned choice = in.take<std::uint16_t>();
    Call call{in, Vsp32s(choice / 16 % 300), {}};
    if (choice % 2 == 0) call.len &= ~7;
    if (choice % 16 == 15) call.len = -Vsp32s(in.take<Vsp32u>() >> 1);
    const std::tuple<Drawn<P>...> arguments{kinds.template draw<P>(call)...};

    const auto check = [name](bool good, const char* problem) {
        if (good) return;
        std::fprintf(stderr, "%s: %s\n", name, problem);
        std::abort();
    };
    const auto callAt = [&](const Api& api, std::vector<Bytes>& blocks) {
        std::list<test::Guarded<std::byte>> memory;
        std::vector<std::byte*> pointers;
        for (const Bytes& block : blocks) pointers.push_back(memory.emplace_back(block).data());
        const auto pass = [&](const Drawn<P>&... drawn) { return (api.*function)(drawn.pass(pointers)...); };
        const VspStatus status = std::apply(pass, arguments);
        std::transform(memory.begin(), memory.end(), blocks.begin(), [](const auto& block) { return block.values(); });
        return status;
    };

    std::vector<Bytes> baseline = call.blocks;
    const VspStatus status = callAt(kApi_y8, baseline);
    check(status >= 0 || baseline == call.blocks, "an error changed an array");
    static const Level best = bestLevel(readCpuRegisters());
    for (const auto& [level, api] : {std::pair(Level::v3, &kApi_v3), {Level::v4, &kApi_v4}}) {
        if (level > best) break;
        std::vector<Bytes> blocks = call.blocks;
        check(status == callAt(*api, blocks), "the status differs between levels");
        check(baseline == blocks, "the results differ between levels");
    }
    (kinds.keep(baseline), ...);
}

#define VSPSC_COMPARE(in, function, ...) compareLevels(in, #function, &Api::function, __VA_ARGS__)

}  // namespace vsp::fuzz
