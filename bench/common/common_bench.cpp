#include <cstring>

#include "support/bench.h"

namespace {

using bench::Buffers;

template <class Function>
bool addKernel(const char* name, Function vsp::Api::*member, auto call) {
    return bench::add(name, member, bench::kFrameLengths, call);
}

#define VSPSC_BENCH(name, suffix, call) \
    addKernel(#name suffix, &vsp::Api::name, [](auto f, Buffers& x, int len) { benchmark::DoNotOptimize(call); })

const bool registered[] = {
    VSPSC_BENCH(vspsMulC_NR_16s_Sfs, "", f(x.a.data(), 30001, x.dst.data(), len, 14)),
    VSPSC_BENCH(vspsMulC_NR_16s_Sfs, "_Q15", f(x.a.data(), 30001, x.dst.data(), len, 15)),
    VSPSC_BENCH(vspsMulC_NR_16s_ISfs, "_Q15", f(30001, x.inPlace(), len, 15)),
    VSPSC_BENCH(vspsMul_NR_16s_Sfs, "", f(x.a.data(), x.b.data(), x.dst.data(), len, 14)),
    VSPSC_BENCH(vspsMul_NR_16s_Sfs, "_Q15", f(x.a.data(), x.b.data(), x.dst.data(), len, 15)),
    VSPSC_BENCH(vspsMul_NR_16s_ISfs, "_Q15", f(x.a.data(), x.inPlace(), len, 15)),
    VSPSC_BENCH(vspsMulPowerC_NR_16s_Sfs, "", f(x.a.data(), 30001, x.dst.data(), len, 15)),
    VSPSC_BENCH(vspsInterpolate_G729_16s, "", f(x.a.data(), x.b.data(), x.dst.data(), len)),
    VSPSC_BENCH(vspsInterpolateC_G729_16s_Sfs, "", f(x.a.data(), 20001, x.b.data(), 12767, x.dst.data(), len, 15)),
    VSPSC_BENCH(vspsInterpolateC_NR_G729_16s_Sfs, "", f(x.a.data(), 20001, x.b.data(), 12767, x.dst.data(), len, 15)),
    VSPSC_BENCH(vspsInterpolateC_NR_16s, "", f(x.a.data(), 20001, 1, x.b.data(), 12767, 2, x.dst.data(), len)),
    VSPSC_BENCH(vspsDotProd_G729A_16s32s, "", f(x.a.data(), x.b.data(), len, x.words.data())),
    VSPSC_BENCH(vspsDotProdAutoScale_16s32s_Sfs, "", f(x.a.data(), x.a.data(), len, x.words.data(), x.words.data() + 1)),
    VSPSC_BENCH(vspsRandomNoiseExcitation_G729B_16s, "", f(x.a.data(), x.dst.data(), len)),
    addKernel("vspsAutoScale_16s", &vsp::Api::vspsAutoScale_16s,
              [](auto f, Buffers& x, int len) {
                  Vsp32s scale = 2;
                  benchmark::DoNotOptimize(f(x.a.data(), x.dst.data(), len, &scale));
              }),
    addKernel("vspsAutoScale_16s_I", &vsp::Api::vspsAutoScale_16s_I,
              [](auto f, Buffers& x, int len) {
                  Vsp32s scale = 2;
                  benchmark::DoNotOptimize(f(x.inPlace(), len, &scale));
              }),
    addKernel("vspsInvSqrt_32s_I", &vsp::Api::vspsInvSqrt_32s_I,
              [](auto f, Buffers& x, int len) {
                  Vsp32s values[1024];
                  std::memcpy(values, x.words.data(), len * sizeof(Vsp32s));
                  benchmark::DoNotOptimize(f(values, len));
              }),
    bench::add("vspsLagWindow_G729_32s_I", &vsp::Api::vspsLagWindow_G729_32s_I, {10, 12},
               [](auto f, Buffers& x, int len) { benchmark::DoNotOptimize(f(x.words.data(), len)); }),
};

}  // namespace
