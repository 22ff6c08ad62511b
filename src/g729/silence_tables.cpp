#include "g729/silence_tables.h"

namespace vsp {

constexpr Vsp16s lbf_corr[13] = {7869, 7011, 4838, 2299, 321, -660, -782, -484, -164, 3, 39, 21, 4};
constexpr Vsp16s factor_fx[33] = {32767, 16913, 17476, 18079, 18725, 19418, 20165, 20972, 21845, 22795, 23831,
                                  24966, 26214, 27594, 29127, 30840, 32767, 17476, 18725, 20165, 21845, 23831,
                                  26214, 29127, 32767, 18725, 21845, 26214, 32767, 21845, 32767, 32767, 0};
constexpr Vsp16s shift_fx[33] = {0, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1,
                                 2, 2, 2, 2, 2, 2, 2, 2, 3, 3, 3, 3, 4, 4, 5, 0};
constexpr Vsp16s fact[3] = {410, 26, 13};
constexpr Vsp16s marg[3] = {0, 0, 1};
constexpr Vsp32f lbf_corr_32f[13] = {0.24017939691329f,  0.21398822343783f,  0.14767692339633f,  0.07018811903116f,
                                     0.00980856433051f,  -0.02015934721195f, -0.02388269958005f, -0.01480076155002f,
                                     -0.00503292155509f, 0.00012141366508f,  0.00119354245231f,  0.00065908718613f,
                                     0.00015015782285f};
constexpr Vsp16s tab_Sidgain[kSidGains] = {2,    5,    8,    13,   20,   32,   50,   64,    80,    101,  127,
                                           160,  201,  253,  318,  401,  505,  635,  800,   1007,  1268, 1596,
                                           2010, 2530, 3185, 4009, 5048, 6355, 8000, 10071, 12679, 15962};

constexpr Vsp8u PtrTab_1[kNoiseEntries1] = {96, 52,  20, 54,  86, 114, 82, 68,  36, 121, 48, 92,  18,  120, 94,  124,
                                            50, 125, 4,  100, 28, 76,  12, 117, 81, 22,  90, 116, 127, 21,  108, 66};
constexpr Vsp8u PtrTab_2[2][kNoiseEntries2] = {{31, 21, 9, 3, 10, 2, 19, 26, 4, 3, 11, 29, 15, 27, 21, 12},
                                               {16, 1, 0, 0, 8, 25, 22, 20, 19, 23, 20, 31, 4, 31, 20, 31}};
constexpr Vsp16s Mp[2] = {8644, 16572};
constexpr Vsp16s lspSid_reset[kLspOrder] = {31441, 27566, 21458, 13612, 4663, -4663, -13612, -21458, -27566, -31441};

// The factors against the quotients that they stand for.
static consteval bool quotients() {
    for (int quiet = 0; quiet < 32; quiet++) {
        const Vsp64f value = Vsp64f(factor_fx[quiet]) * (1 << shift_fx[quiet]), exact = 32768.0 * 32 / (32 - quiet);
        if (value < exact * 0.9998 || value > exact * 1.0001) return false;
    }
    return true;
}
static_assert(quotients());

static consteval bool rising() {
    for (int i = 1; i < kSidGains; i++)
        if (tab_Sidgain[i] <= tab_Sidgain[i - 1]) return false;
    return true;
}
static_assert(rising());

template <int n>
static consteval bool below(const Vsp8u (&entries)[n], int limit) {
    for (const int entry : entries)
        if (entry >= limit) return false;
    return true;
}
static_assert(below(PtrTab_1, kNc0) && below(PtrTab_2[0], kNc1) && below(PtrTab_2[1], kNc1));

// The two arithmetics have the same filter, but for its rounding.
static consteval bool agree() {
    for (int i = 0; i < 13; i++) {
        const Vsp32f difference = lbf_corr_32f[i] * 32768 - Vsp32f(lbf_corr[i]);
        if (difference > 2 || difference < -2) return false;
    }
    return true;
}
static_assert(agree());

static consteval bool symmetric() {
    for (int i = 0; i < kLspOrder; i++)
        if (lspSid_reset[i] != -lspSid_reset[kLspOrder - 1 - i]) return false;
    return true;
}
static_assert(symmetric());

}  // namespace vsp
