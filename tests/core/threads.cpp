// Functions on states of their own, at the same time.
#include <thread>

#include "support/level_test.h"
#include "support/samples.h"
#include "support/speech.h"

namespace vsp::test {

namespace {

// What one user of the library does: everything that it computes.
std::vector<Vsp32s> work(const Api& api, const std::vector<Vsp16s>& speech, unsigned seed) {
    constexpr Vsp32s kFrame = 80;
    std::vector<Vsp32u> memory(31);
    const auto state = reinterpret_cast<VspALCState_G169_16s*>(memory.data());
    api.vspsALCInit_G169_16s(state);
    api.vspsALCSetLevel_G169_16s(state, float(seed), 0.0f);
    Vsp16s noiseSeed = Vsp16s(seed), noise[kFrame], controlled[kFrame];
    std::vector<Vsp32s> results;
    for (std::size_t at = 0; at + kFrame <= speech.size(); at += kFrame) {
        Vsp32s scale = Vsp32s(seed % 4), energy = 0;
        api.vspsALC_G169_16s(&speech[at], controlled, kFrame, state);
        api.vspsRandomNoiseExcitation_G729B_16s(&noiseSeed, noise, kFrame);
        api.vspsInterpolateC_NR_G729_16s_Sfs(controlled, 30000, noise, 2767, controlled, kFrame, 15);
        api.vspsAutoScale_16s_I(controlled, kFrame, &scale);
        api.vspsDotProdAutoScale_16s32s_Sfs(controlled, controlled, kFrame, &energy, &results.emplace_back());
        results.insert(results.end(), {energy, scale, noiseSeed, api.vspscGetLibVersion()->build});
        results.insert(results.end(), controlled, controlled + kFrame);
    }
    return results;
}

}  // namespace

class Threads : public LevelTest {};
VSPSC_EVERY_LEVEL(Threads);

TEST_P(Threads, DoNotDisturbEachOther) {
    constexpr unsigned kThreads = 8;
    const std::vector<Vsp16s> speech = recordedSpeech();
    std::vector<std::vector<Vsp32s>> results(kThreads);
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < kThreads; i++) threads.emplace_back([&, i] { results[i] = work(api, speech, i); });
    for (std::thread& thread : threads) thread.join();
    for (unsigned i = 0; i < kThreads; i++) EXPECT_TRUE(work(api, speech, i) == results[i]) << "thread " << i;
    EXPECT_FALSE(results[0] == results[1]);
}

}  // namespace vsp::test
