#include "support/bench.h"

#include <random>

#include "amrwb/scalar_amrwb.h"
#include "common/hand_tuned_common.h"
#include "common/scalar_common.h"
#include "common/scalar_lp.h"
#include "core/cpu.h"
#include "ec/hand_tuned_full_band.h"
#include "ec/hand_tuned_subband.h"
#include "ec/scalar_full_band.h"
#include "ec/scalar_subband.h"
#include "g722/scalar_g722.h"
#include "g723/scalar_g723.h"
#include "g726/scalar_g726.h"
#include "g729/scalar_g729.h"
#include "gsmamr/scalar_gsmamr.h"
#include "gsmfr/scalar_gsmfr.h"

namespace bench {

static constexpr vsp::Api kApi_library = {
#define VSPSC_EXPORT(family, name) .name = &::name,
#include "core/exports.def"
#undef VSPSC_EXPORT
};

template <class... Add>
static vsp::Api apiOf(Add... add) {
    vsp::Api api{};
    (add(api), ...);
    return api;
}

std::vector<Implementation> implementations() {
    static const vsp::Api scalar = apiOf(addScalarCommon, addScalarLp, addScalarAmrwb, addScalarG722, addScalarG723,
                                         addScalarG726, addScalarG729, addScalarG729Quantisers, addScalarFixedCodebook,
                                         addScalarGsmamr, addScalarGsmfr, addScalarSubband, addScalarFullBand);
    static const vsp::Api handTuned = apiOf(addHandTunedCommon, addHandTunedSubband, addHandTunedFullBand);
    const vsp::Level level = vsp::bestLevel(vsp::readCpuRegisters());
    std::vector<Implementation> all = {{"library", &kApi_library}, {"y8", &vsp::kApi_y8}};
    if (level >= vsp::Level::v3) all.push_back({"v3", &vsp::kApi_v3});
    if (level >= vsp::Level::v4) all.push_back({"v4", &vsp::kApi_v4});
    all.push_back({"scalar", &scalar});
    if (level >= vsp::Level::v4) all.push_back({"hand-tuned", &handTuned});
    return all;
}

Buffers::Buffers(int len)
    : a(len), b(len), dst(len), words(len), stride_((len + 31) / 32 * 32 + 32), ring_(int(kRing) * stride_) {
    std::mt19937 random(1);
    std::uniform_int_distribution<int> sample(-8000, 8000), word(1, 0x7FFFFFFF);
    for (int i = 0; i < len; i++) {
        a[i] = Vsp16s(sample(random));
        b[i] = Vsp16s(sample(random));
        words[i] = word(random) >> (i % 31);
    }
    for (int i = 0; i < int(kRing) * stride_; i++) ring_[i] = Vsp16s(sample(random));
}

}  // namespace bench
