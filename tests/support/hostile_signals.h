// Signals that an echo canceller is not made for, at 8 kHz, and how much louder than the near end they make its output.
#pragma once

#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <vector>

namespace vsp::test {

constexpr int kHostileRate = 8000;

struct HostileKind {
    std::string name;
    std::size_t from, to;  // samples
};

struct HostileCall {
    std::vector<float> far, near;  // integers of 16 bits
    std::vector<HostileKind> kinds;
};

namespace hostile {

inline float clipped(float x) { return std::clamp(std::rint(x), -32768.0f, 32767.0f); }

// What is heard in a second, or a shorter while.
struct While {
    int source;          // of the far end: squares, silence, noise, tone, noise of two levels, bursts
    float direct, late;  // gains of the echo path
    std::size_t delay;   // of the late part
    float tone;          // at the near end
    bool swapped, cut;   // cut: no near end in its second half
};

inline float source(int kind, std::size_t n, std::size_t second, std::mt19937& random) {
    std::normal_distribution<float> gauss;
    switch (kind) {
        case 0: return n / 40 % 2 != 0 ? 32767.0f : -32768.0f;
        case 1: return 0;
        case 2: return 3000 * gauss(random);
        case 3: return 30000 * std::sin(0.3456f * float(n % 100000));
        case 4: return (second % 2 != 0 ? 10.0f : 8000.0f) * gauss(random);
        default: return n % 2000 < 200 ? 32767.0f : 0;
    }
}

inline While choose(std::size_t kind, std::size_t second, std::mt19937& random) {
    const auto flipped = [&](int s) {
        return While{s, second % 2 != 0 ? 0.5f : -0.4f, 0.2f, 45 + second * 37 % 200, 0, false, false};
    };
    switch (kind) {
        case 0: return {0, 0.5f, 0.2f, 100, 0, false, false};
        case 1: return flipped(0);
        case 2: return flipped(2);
        case 3: return {4, -0.4f, 0.2f, 100, 0, false, false};
        case 4: return flipped(4);
        case 5: return {2, 0.5f, 0.2f, 100, 0, second % 2 != 0, false};
        case 6: return {second % 2 != 0 ? 1 : 2, 0.5f, 0.2f, 100, 0, false, true};
        case 7: return {3, -0.4f, 0.2f, 100, second % 3 == 0 ? 20000.0f : 0, false, false};
        case 8: return {5, 0.5f, 0.2f, 300, 0, false, second % 5 == 4};
        case 9: return {2, second % 8 == 7 ? -4.0f : 4.0f, 0.2f, 100, 0, false, false};
        default: break;
    }
    std::uniform_real_distribution<float> gain(-1, 1);
    const auto one = [&](unsigned of) { return random() % of == 0; };
    While w{};
    w.source = static_cast<int>(random() % 6);
    w.direct = one(4) ? 0 : gain(random);
    w.late = one(3) ? 0 : gain(random);
    w.delay = random() % 1000;
    w.tone = one(8) ? 20000.0f : 0;
    w.swapped = one(4), w.cut = one(6);
    return w;
}

}  // namespace hostile

// All kinds one after another, each for the same time, in a call of so many seconds.
inline HostileCall hostileCall(double seconds) {
    using namespace hostile;
    const std::vector<std::string> names = {"full-scale squares",
                                            "squares, path flips",
                                            "noise, path flips",
                                            "steps in level",
                                            "steps, path flips",
                                            "swapped ends",
                                            "near end cut off",
                                            "tones",
                                            "bursts",
                                            "clipped, louder echo",
                                            "all of it at random"};
    HostileCall call;
    const auto length = static_cast<std::size_t>(seconds * kHostileRate) / names.size();
    std::mt19937 random(1);
    std::vector<float> x(length * names.size() + 1000);  // with its past
    for (std::size_t kind = 0; kind < names.size(); kind++) {
        call.kinds.push_back({names[kind], kind * length, (kind + 1) * length});
        While now{};
        for (std::size_t i = 0; i < length; i++) {
            const std::size_t n = kind * length + i, second = i / kHostileRate, at = n + 1000;
            const std::size_t turn = kind + 1 < names.size() ? kHostileRate : 1700;
            if (i % turn == 0) now = choose(kind, second, random);
            x[at] = clipped(source(now.source, n, second, random));
            float y = now.direct * x[at - 40] + now.late * x[at - now.delay];
            if (now.tone != 0) y += now.tone * std::sin(0.785f * float(n % 100000));
            if (now.cut && i % turn >= turn / 2) y = 0;
            call.far.push_back(x[at]);
            call.near.push_back(clipped(y));
            if (now.swapped) std::swap(call.far.back(), call.near.back());
        }
    }
    return call;
}

// dB over the worst tenth of a second that ends within the kind; both with the noise of rounding besides.
inline double mostLouder(const HostileCall& call, const std::vector<float>& out, const HostileKind& kind) {
    constexpr std::size_t kWindow = kHostileRate / 10;
    constexpr double kRounding = kWindow / 12.0;
    double before = kRounding, after = kRounding, worst = 0;
    for (std::size_t n = 0; n < kind.to; n++) {
        before += double(call.near[n]) * call.near[n];
        after += double(out[n]) * out[n];
        if (n >= kWindow) {
            before -= double(call.near[n - kWindow]) * call.near[n - kWindow];
            after -= double(out[n - kWindow]) * out[n - kWindow];
        }
        if (n >= kind.from) worst = std::max(worst, after / before);
    }
    return 10 * std::log10(worst);
}

}  // namespace vsp::test
