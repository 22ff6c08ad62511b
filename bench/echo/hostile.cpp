// Ten minutes of signals that are no speech and no echo path: by how much the output is louder than the near end at most,
// over any 100 ms, for each kind of signal; and how much echo is removed of the ordinary call that follows.
//
//     vspsc_bench_echo_hostile [SECONDS]
//
// SECONDS: in all, 600 if it is not given. Each canceller hears all kinds one after another, each for the same time.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "echo/owned_canceller.h"
#include "support/hostile_signals.h"

namespace {

using namespace vsp::test;
using Signal = std::vector<float>;

struct Engine {
    std::string name;
    int engine, arithmetic, suppression;
};

Signal cancel(const Engine& engine, const HostileCall& call) {
    VspvEchoSettings settings = echoSettings(kHostileRate);
    settings.engine = engine.engine, settings.arithmetic = engine.arithmetic, settings.suppression = engine.suppression;
    OwnedCanceller canceller(settings);
    const std::size_t latency = canceller.latency(), length = call.near.size();
    Signal far = call.far, near = call.near, out(length + latency);
    far.resize(out.size()), near.resize(out.size());
    canceller.process(far, near, out);
    out.erase(out.begin(), out.begin() + static_cast<std::ptrdiff_t>(latency));
    return out;
}

}  // namespace

int main(int argc, char** argv) {
    const double seconds = argc > 1 ? std::strtod(argv[1], nullptr) : 600;
    const std::vector<Engine> engines = {{"subband", vspvEchoSubband, vspvEchoFloat, 0},
                                         {"subband-fixed", vspvEchoSubband, vspvEchoFixed, 0},
                                         {"subband-suppress", vspvEchoSubband, vspvEchoFloat, 1},
                                         {"subband-fixed-suppress", vspvEchoSubband, vspvEchoFixed, 1},
                                         {"fullband", vspvEchoFullband, vspvEchoFloat, 0},
                                         {"fullband-fixed", vspvEchoFullband, vspvEchoFixed, 0}};
    std::printf("output over near end, dB over the worst 100 ms\n%-34s", "");
    std::vector<Signal> outs;
    const HostileCall call = hostileCall(seconds);
    for (const Engine& engine : engines) {
        std::printf(" %22s", engine.name.c_str());
        outs.push_back(cancel(engine, call));
    }
    for (std::size_t i = 0; i < call.kinds.size(); i++) {
        std::printf("\n%-34s", call.kinds[i].name.c_str());
        for (const Signal& out : outs) std::printf(" %22.2f", mostLouder(call, out, call.kinds[i]));
    }
    std::printf("\n");
    return 0;
}
