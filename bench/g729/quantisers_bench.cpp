// Quantisers of G.729 and the voice activity detector, on speech-like values.
#include "support/bench.h"

namespace {

// LSP of a vowel and memories in their middle range.
struct Frame {
    Vsp16s lsp[10] = {31870, 29951, 24773, 17911, 9622, 1311, -8533, -17299, -24120, -29010};
    Vsp16s previous[40], quantised[10], target[40], adaptive[40], fixed[40], code[40] = {},
                                                                             energies[4] = {3000, -2000, 1500, 200};
    Vsp32f lspReal[10], previousReal[40], quantisedReal[10], targetReal[40], adaptiveReal[40], fixedReal[40], codeReal[40],
        energiesReal[4] = {3, -2, 1.5f, 0.2f};
    Vsp32s autocorr[13], vadState[22] = {}, vadStateReal[43] = {};
    Vsp32f autocorrReal[13], speechReal[240], lsfReal[10];
    Vsp16s lsf[10], speech[240];

    Frame() {
        for (int i = 0; i < 40; i++) previous[i] = static_cast<Vsp16s>(2339 + i % 10 * 2340 + 37 * (i / 10));
        for (int i = 0; i < 40; i++) {
            target[i] = static_cast<Vsp16s>(2000 - 190 * (i % 21));
            adaptive[i] = static_cast<Vsp16s>(1700 - 170 * (i % 20));
            fixed[i] = static_cast<Vsp16s>(i % 9 * 300 - 1100);
            if (i % 11 == 3) code[i] = i % 2 == 0 ? 8191 : -8192;
            previousReal[i] = static_cast<Vsp32f>(previous[i]) / 8192;
            targetReal[i] = target[i];
            adaptiveReal[i] = adaptive[i];
            fixedReal[i] = static_cast<Vsp32f>(fixed[i]) / 4096;
            codeReal[i] = static_cast<Vsp32f>(code[i]) / 8192;
        }
        for (int i = 0; i < 10; i++) {
            lspReal[i] = static_cast<Vsp32f>(lsp[i]) / 32768;
            lsf[i] = static_cast<Vsp16s>(1490 * (i + 1));
            lsfReal[i] = 0.285f * static_cast<Vsp32f>(i + 1);
        }
        for (int i = 0; i < 13; i++) {
            autocorr[i] = 0x50000000 >> i;
            autocorrReal[i] = 1e7f / static_cast<Vsp32f>(1 << i);
        }
        for (int i = 0; i < 240; i++) speechReal[i] = speech[i] = static_cast<Vsp16s>((i * 7919) % 4001 - 2000);
    }
};

template <class Function>
bool add(const char* name, Function vsp::Api::*member, int len, auto call) {
    return bench::add(name, member, {len}, [call](auto f, bench::Buffers&, int) {
        static Frame frame;
        benchmark::DoNotOptimize(call(f, frame));
    });
}

#define VSPSC_BENCH(name, len, ...) add(#name, &vsp::Api::name, len, [](auto f, Frame& s) __VA_ARGS__)

Vsp16s index[2], gain[2], vad;
Vsp32s words[2];
Vsp32f reals[2];

[[maybe_unused]] const bool registered[] = {
    VSPSC_BENCH(vspsLSPQuant_G729_16s, 10, { return f(s.lsp, s.previous, s.quantised, index); }),
    VSPSC_BENCH(vspsLSPQuant_G729_32f, 10, { return f(s.lspReal, s.previousReal, s.quantisedReal, words); }),
    VSPSC_BENCH(vspsGainQuant_G729_16s, 40,
                { return f(s.target, s.adaptive, s.fixed, s.code, 0, s.energies, gain, index); }),
    VSPSC_BENCH(vspsGainQuant_G729D_16s, 40,
                { return f(s.target, s.adaptive, s.fixed, s.code, 0, s.energies, gain, index); }),
    VSPSC_BENCH(vspsGainQuant_G729_32f, 40,
                { return f(s.targetReal, s.adaptiveReal, s.fixedReal, s.codeReal, 0, s.energiesReal, reals, words); }),
    VSPSC_BENCH(vspsVAD_G729B_16s, 240, { return f(s.autocorr, -4, 20000, s.lsf, s.speech, &vad, s.vadState); }),
    VSPSC_BENCH(vspsVAD_G729B_32f, 240,
                { return f(s.autocorrReal, 0.5f, s.lsfReal, s.speechReal, words, s.vadStateReal); }),
};

}  // namespace
