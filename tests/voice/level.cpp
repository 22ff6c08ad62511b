// The level control of the voice layer against that of the library.
#include <cmath>

#include "support/samples.h"
#include "support/speech.h"
#include "support/status_order.h"
#include "voice/object.h"
#include "vspsc.h"

namespace vsp::test {

namespace {

constexpr VspvLevelSettings kSettings{20, 3, 30, 1};

using Samples = std::vector<Vsp16s>;
using LevelControl = VoiceObject<VspvLevelControl>;

Samples controlledByTheLibrary(const Samples& samples) {
    Guarded<Vsp32s> state(124 / sizeof(Vsp32s));
    const auto control = reinterpret_cast<VspALCState_G169_16s*>(state.data());
    vspsALCInit_G169_16s(control);
    vspsALCSetLevel_G169_16s(control, kSettings.target, kSettings.limit);
    vspsALCSetGain_G169_16s(control, kSettings.maxGain);
    Samples result(samples.size());
    EXPECT_EQ(vspStsNoErr, vspsALC_G169_16s(samples.data(), result.data(), Vsp32s(samples.size()), control));
    return result;
}

}  // namespace

TEST(VoiceLevel, BlocksOfAnyLengthGiveTheSameAndAsLateAsToldOnly) {
    Samples speech = recordedSpeech();
    speech.resize(speech.size() & ~std::size_t(7));
    const Samples expected = controlledByTheLibrary(speech);
    for (const Vsp32s unit : {1, 2, 4, 8}) {
        VspvLevelSettings settings = kSettings;
        settings.blockUnit = unit;
        LevelControl control(0, vspvLevelControlGetSize), other(1, vspvLevelControlGetSize);
        ASSERT_EQ(vspStsNoErr, vspvLevelControlInit(control.get(), &settings));
        Vsp32s latency = -1;
        ASSERT_EQ(vspStsNoErr, vspvLevelControlLatency(control.get(), &latency));
        EXPECT_EQ(8 - unit, latency);
        Samples result;
        LevelControl *current = &control, *next = &other;
        inBlocks(speech, 100, std::size_t(unit), [&](std::span<const Vsp16s> block) {
            Guarded<Vsp16s> samples(Samples(block.begin(), block.end()));
            const auto count = Vsp32s(block.size());
            ASSERT_EQ(vspStsNoErr, vspvLevelControlProcess(current->get(), samples.data(), samples.data(), count));
            result.insert(result.end(), samples.begin(), samples.end());
            current->moveTo(*next);
            std::swap(current, next);
        });
        Samples delayed(std::size_t(latency), 0);
        delayed.insert(delayed.end(), expected.begin(), expected.end() - latency);
        EXPECT_EQ(delayed, result) << unit;
    }
}

TEST(VoiceLevel, ChecksComeInOrderAndTouchNothing) {
    const std::vector<VspStatus> nulls{vspStsNullPtrErr};
    EXPECT_EQ(vspStsNullPtrErr, vspvLevelControlGetSize(nullptr));
    expectStatusOrder(vspvLevelControlInit, nulls, pointer, pointer);
    expectStatusOrder(vspvLevelControlLatency, nulls, pointer, pointer);
    expectStatusOrder(vspvLevelControlProcess, {vspStsNullPtrErr, vspStsSizeErr}, pointer, pointer, pointer, value);

    LevelControl control(0, vspvLevelControlGetSize);
    VspvLevelSettings settings = kSettings;
    settings.blockUnit = 2;
    ASSERT_EQ(vspStsNoErr, vspvLevelControlInit(control.get(), &settings));
    const auto before = control.values();
    for (Vsp32f VspvLevelSettings::*field :
         {&VspvLevelSettings::target, &VspvLevelSettings::limit, &VspvLevelSettings::maxGain})
        for (const Vsp32f bad : {-1.0f, std::nanf(""), -INFINITY}) {
            VspvLevelSettings s{1, 1, 1, 3};
            s.*field = bad;
            EXPECT_EQ(vspStsRangeErr, vspvLevelControlInit(control.get(), &s));
        }
    for (const Vsp32s unit : {0, -1, 3, 16, kLowest}) {
        const VspvLevelSettings s{1, 1, 1, unit};
        EXPECT_EQ(vspStsBadArgErr, vspvLevelControlInit(control.get(), &s));
    }
    Samples x = samples(8), copy = x;
    for (const Vsp32s len : {0, -2, 1, 7, kLowest})
        EXPECT_EQ(vspStsSizeErr, vspvLevelControlProcess(control.get(), x.data(), x.data(), len));
    EXPECT_EQ(copy, x);
    EXPECT_EQ(before, control.values());
}

}  // namespace vsp::test
