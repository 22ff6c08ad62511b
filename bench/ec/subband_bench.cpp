// The sub-band filters and their adaptation for the counts of bands of transforms of 32 to 256 and filters of 8 to 64 taps.
// The last part of a name is the number of bands.
#include <map>
#include <random>

#include "support/bench.h"

namespace {

constexpr int kMaxBands = 4097, kMaxTaps = 255, kOrder = 4;

// Vectors of bands one after the other, each at the start of a cache line, and the pointers to them.
template <class T>
class Rows {
  public:
    template <class Make>
    Rows(int rows, int bands, Make make) : storage_(rows * stride(bands)) {
        for (int i = 0; i < rows; i++) {
            pointers_.push_back(storage_.data() + i * stride(bands));
            for (int k = 0; k < bands; k++) pointers_.back()[k] = make();
        }
    }
    T* const* data() const { return pointers_.data(); }
    T* operator[](int i) const { return pointers_[std::size_t(i)]; }

  private:
    static int stride(int bands) { return (bands + 7) / 8 * 8; }
    bench::Aligned<T> storage_;
    std::vector<T*> pointers_;
};

// What a function needs; the sign of the error changes from call to call, so that the coefficients stay where they are.
template <class T, class Step, class MakeStep>
struct Filters {
    std::mt19937 random{1};
    auto noise(Vsp32f amplitude) {
        return [this, amplitude] {
            std::uniform_real_distribution<Vsp32f> value(-amplitude, amplitude);
            return T{decltype(T::re)(value(random)), decltype(T::re)(value(random))};
        };
    }
    int bands;
    Rows<T> src, coef, dst, scratch, errors;
    Rows<Step> steps;
    int turn = 0;

    Filters(int numBands, int taps, Vsp32f level, Vsp32f coefLevel, MakeStep makeStep)
        : bands(numBands),
          src(taps + kOrder - 1, bands, noise(level)),
          coef(taps, bands, noise(coefLevel)),
          dst(1, bands, noise(0)),
          scratch(1, bands, noise(0)),
          errors(2 * kOrder, bands, noise(level)),
          steps(kOrder, bands, makeStep) {
        for (int j = 0; j < kOrder; j++)
            for (int k = 0; k < bands; k++) errors[kOrder + j][k] = {-errors[j][k].re, -errors[j][k].im};
    }
    T* const* err() { return errors.data() + (turn++ % 2) * kOrder; }
};

struct Float : Filters<Vsp32fc, Vsp64f, Vsp64f (*)()> {
    Float(int numBands, int taps) : Filters(numBands, taps, 1000, 1, [] { return 1e-8; }) {}
};

constexpr int kScale = 12;
struct Fixed : Filters<Vsp32sc, Vsp32sc, Vsp32sc (*)()> {
    static Vsp32sc step() {
        static int turn = 0;
        return {0x60000000, 31 + kScale + 18 + turn++ % 5};  // right shifts by 18 to 22
    }
    Fixed(int numBands, int taps) : Filters(numBands, taps, 1 << 20, 1 << 28, step) {}
};

// Made once for each size.
template <class Data>
Data& dataOf(int taps, int bands) {
    static std::map<std::pair<int, int>, Data> all;
    return all.try_emplace({taps, bands}, bands, taps).first->second;
}

template <class Data, class Function, class Call>
void add(const std::string& name, Function vsp::Api::*member, Call call) {
    const auto addSize = [&](int taps, const std::vector<int>& bands) {
        bench::add(name + " " + std::to_string(taps) + " taps", member, bands,
                   [=](auto function, bench::Buffers&, int numBands) {
                       benchmark::DoNotOptimize(call(function, dataOf<Data>(taps, numBands), taps, numBands));
                   });
    };
    for (const int taps : {8, 16, 32, 64}) addSize(taps, {17, 33, 65, 129});
    addSize(kMaxTaps, {kMaxBands});
}

const bool registered = [] {
    add<Float>("vspsFIRSubband_EC_32fc", &vsp::Api::vspsFIRSubband_EC_32fc, [](auto fir, Float& x, int taps, int bands) {
        return fir(x.src.data(), x.coef.data(), x.dst[0], taps, bands);
    });
    add<Float>(
        "vspsFIRSubbandFast_EC_32fc", &vsp::Api::vspsFIRSubbandFast_EC_32fc,
        [](auto fir, Float& x, int taps, int bands) { return fir(x.src.data(), x.coef.data(), x.dst[0], taps, bands); });
    add<Fixed>("vspsFIRSubband_EC_32sc_Sfs", &vsp::Api::vspsFIRSubband_EC_32sc_Sfs,
               [](auto fir, Fixed& x, int taps, int bands) {
                   return fir(x.src.data(), x.coef.data(), x.dst[0], taps, bands, kScale);
               });
    add<Fixed>("vspsFIRSubbandFast_EC_32sc_Sfs", &vsp::Api::vspsFIRSubbandFast_EC_32sc_Sfs,
               [](auto fir, Fixed& x, int taps, int bands) {
                   return fir(x.src.data(), x.coef.data(), x.dst[0], taps, bands, kScale);
               });
    add<Fixed>("vspsFIRSubbandLow_EC_32sc_Sfs", &vsp::Api::vspsFIRSubbandLow_EC_32sc_Sfs,
               [](auto fir, Fixed& x, int taps, int bands) {
                   return fir(x.src.data(), x.coef.data(), taps, x.dst[0], 0, bands, kScale);
               });
    add<Float>("vspsFIRSubbandCoeffUpdate_EC_32fc_I", &vsp::Api::vspsFIRSubbandCoeffUpdate_EC_32fc_I,
               [](auto update, Float& x, int taps, int bands) {
                   return update(x.steps[0], x.src.data(), x.err()[0], x.coef.data(), taps, bands);
               });
    add<Float>("vspsFIRSubbandFastCoeffUpdate_EC_32fc_I", &vsp::Api::vspsFIRSubbandFastCoeffUpdate_EC_32fc_I,
               [](auto update, Float& x, int taps, int bands) {
                   return update(x.steps[0], x.src.data(), x.err()[0], x.coef.data(), taps, bands);
               });
    add<Fixed>("vspsFIRSubbandCoeffUpdate_EC_32sc_I", &vsp::Api::vspsFIRSubbandCoeffUpdate_EC_32sc_I,
               [](auto update, Fixed& x, int taps, int bands) {
                   return update(x.steps[0], x.src.data(), x.err()[0], x.coef.data(), taps, bands, kScale);
               });
    add<Fixed>("vspsFIRSubbandFastCoeffUpdate_EC_32sc_I", &vsp::Api::vspsFIRSubbandFastCoeffUpdate_EC_32sc_I,
               [](auto update, Fixed& x, int taps, int bands) {
                   return update(x.steps[0], x.src.data(), x.err()[0], x.coef.data(), taps, bands, kScale);
               });
    add<Fixed>("vspsFIRSubbandLowCoeffUpdate_EC_32sc_I", &vsp::Api::vspsFIRSubbandLowCoeffUpdate_EC_32sc_I,
               [](auto update, Fixed& x, int taps, int bands) {
                   return update(x.src.data(), x.err()[0], x.coef.data(), taps, x.scratch[0], x.steps[0], 0, bands, kScale);
               });
    add<Float>("vspsFIRSubbandAPCoeffUpdate_EC_32fc_I", &vsp::Api::vspsFIRSubbandAPCoeffUpdate_EC_32fc_I,
               [](auto update, Float& x, int taps, int bands) {
                   return update(x.steps.data(), x.src.data(), x.err(), x.coef.data(), Vsp32u(taps), Vsp32u(bands),
                                 Vsp32u(kOrder));
               });
    return true;
}();

}  // namespace
