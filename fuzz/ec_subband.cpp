// The sub-band filters and updates: any values, counts and scale factors.
#include <cmath>
#include <limits>

#include "compare_levels.h"

namespace vsp::fuzz {

// An array of pointers to blocks that follow each other.
template <class T>
struct Drawn<T* const*> {
    int firstBlock;
    std::size_t rows;
    mutable std::vector<T*> pointers = {};

    T* const* pass(const std::vector<std::byte*>& blocks) const {
        if (firstBlock < 0) return nullptr;
        pointers.clear();
        for (std::size_t i = 0; i < rows; i++)
            pointers.push_back(reinterpret_cast<T*>(blocks[std::size_t(firstBlock) + i]));
        return pointers.data();
    }
};

// One vector of as many bands as the call has, or several, and the pointers to them. Any NaN is the one that operations
// give: which of two others a sum hands on is not defined.
struct Bands : Kind {
    int rows;

    explicit Bands(int number) : rows(number) {}

    template <class P>
    Drawn<P> draw(Call& call) const {
        const int block = int(call.blocks.size());
        using Pointer = std::remove_cv_t<std::remove_pointer_t<P>>;
        if constexpr (std::is_pointer_v<Pointer>) {
            if (call.in.take<std::uint8_t>() == 0xFF) return {-1, 0};
            for (int i = 0; i < rows; i++) addBlock<Pointer>(call);
            return {block, std::size_t(rows)};
        } else {
            addBlock<P>(call);
            return {block};
        }
    }

  private:
    template <class P>
    static void addBlock(Call& call) {
        using Element = std::remove_cv_t<std::remove_pointer_t<P>>;
        const std::size_t n = call.len < 1 ? 1 : std::size_t(call.len);
        Bytes block(n * sizeof(Element));
        // A few elements over and over, so that short inputs fill all vectors.
        const std::size_t period = sizeof(Element) * (1 + call.in.take<std::uint8_t>() % 8u);
        call.in.fill(block.data(), std::min(period, block.size()));
        for (std::size_t i = period; i < block.size(); i++) block[i] = block[i - period];
        if constexpr (std::is_same_v<Element, Vsp32fc>) replaceNans<Vsp32f>(block);
        if constexpr (std::is_same_v<Element, Vsp64f>) replaceNans<Vsp64f>(block);
        call.blocks.push_back(block);
    }

    template <class T>
    static void replaceNans(Bytes& block) {
        for (std::size_t i = 0; i < block.size(); i += sizeof(T)) {
            T x;
            std::memcpy(&x, &block[i], sizeof x);
            if (!std::isnan(x)) continue;
            x = -std::numeric_limits<T>::quiet_NaN();
            std::memcpy(&block[i], &x, sizeof x);
        }
    }
};

// A value that is given.
struct Count : Kind {
    int n;
    explicit Count(int number) : n(number) {}
    template <class P>
    Drawn<P> draw(Call&) const {
        return {P(n)};
    }
};

}  // namespace vsp::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vsp::fuzz;
    using vsp::Api;
    Input in(data, size);
    while (!in.empty()) {
        const int choice = in.take<std::uint8_t>(), taps = in.take<std::uint8_t>() % 9,
                  projections = in.take<std::uint8_t>() % 4;
        const Bands row(1), rows(taps);
        const Count len(taps);
        switch (choice % 7) {
            case 0: VSPSC_COMPARE(in, vspsFIRSubband_EC_32fc, rows, rows, row, len, length); break;
            case 1: VSPSC_COMPARE(in, vspsFIRSubband_EC_32sc_Sfs, rows, rows, row, len, length, value); break;
            case 2: VSPSC_COMPARE(in, vspsFIRSubbandLow_EC_32sc_Sfs, rows, rows, len, row, value, length, value); break;
            case 3: VSPSC_COMPARE(in, vspsFIRSubbandCoeffUpdate_EC_32fc_I, row, rows, row, rows, len, length); break;
            case 4: VSPSC_COMPARE(in, vspsFIRSubbandCoeffUpdate_EC_32sc_I, row, rows, row, rows, len, length, value); break;
            case 5:
                VSPSC_COMPARE(in, vspsFIRSubbandLowCoeffUpdate_EC_32sc_I, rows, row, rows, len, row, row, value, length,
                              value);
                break;
            case 6:
                VSPSC_COMPARE(in, vspsFIRSubbandAPCoeffUpdate_EC_32fc_I, Bands(projections), Bands(taps + projections),
                              Bands(projections), rows, len, length, Count(projections));
                break;
        }
    }
    return 0;
}
