// How much worse than the forward filter the backward one may be: the more stationary the signal is, the more.
#include <cmath>

#include "support/guarded.h"
#include "support/level_test.h"
#include "support/samples.h"

namespace vsp::test {

class LpcMode : public LevelTest {};
VSPSC_EVERY_LEVEL(LpcMode);

TEST_P(LpcMode, BackwardFilterMayBeWorseInStationarySignals) {
    constexpr int kHistory = 30, kFrame = 80, kBackward = 31, kForward = 11;
    constexpr Vsp16s kOne = 4096;
    const auto noise = samples<Vsp32s>(kHistory + kFrame, 3);
    Guarded<Vsp16s> speech(kHistory + kFrame);
    for (int i = 0; i < kHistory + kFrame; i++)
        speech.data()[i] = Vsp16s(8000 * std::sin(0.05 * i) + noise[std::size_t(i)] % 100);
    const Vsp16s* const frame = speech.data() + kHistory;
    const auto logEnergyOfResidual = [frame](Vsp16s coefficient) {  // Q11
        double sum = 0;
        for (int i = 0; i < kFrame; i++) sum += std::pow(frame[i] + frame[i - 1] * coefficient / 4096.0, 2);
        return 2048 * std::log10(sum);
    };
    int modes[2] = {};
    for (const int stationarity : {12999, 13000, 16000, 20000, 25600, 31000})
        for (int second = -kOne; second < -kOne / 2; second += 8) {
            const double worse = logEnergyOfResidual(Vsp16s(second)) - logEnergyOfResidual(-kOne);
            const int allowed = stationarity / 128 * 3 + 205;  // a decibel and more
            if (std::abs(worse - allowed) < 90) continue;      // what the logarithm is exact to
            std::vector<Vsp16s> backward(2 * kBackward), previous(kBackward), forward(2 * kForward);
            previous[0] = backward[kBackward] = forward[0] = forward[kForward] = kOne;
            previous[1] = backward[kBackward + 1] = Vsp16s(second);
            forward[1] = forward[kForward + 1] = -kOne;
            const std::vector<Vsp16s> lsp(10, 1), previousLsp(10, 20000);
            std::vector<Vsp16s> memory{0, 0, Vsp16s(stationarity), 0, 0, 0, 0};
            Vsp16s mode = 7;
            ASSERT_EQ(vspStsNoErr,
                      api.vspsLPCModeDecide_G729E_16s(frame, forward.data(), backward.data(), lsp.data(),
                                                      previousLsp.data(), previous.data(), 0, memory.data(), &mode));
            ASSERT_EQ(stationarity >= 13000 && worse < allowed ? 1 : 0, mode) << stationarity << ' ' << second;
            modes[mode]++;
        }
    EXPECT_GT(modes[0], 100);
    EXPECT_GT(modes[1], 100);
}

}  // namespace vsp::test
