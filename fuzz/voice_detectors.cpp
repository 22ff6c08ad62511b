// Any samples in any blocks into the level control, the tone detector and the speech detector: they give what the same
// samples in one block give.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>
#include <vector>

#include "vspsvoice.h"

namespace {

using Bytes = std::vector<Vsp8u>;
using Samples = std::vector<Vsp16s>;

class Input {
  public:
    Input(const Vsp8u* data, std::size_t size) : at_(data), end_(data + size) {}
    bool empty() const { return at_ == end_; }
    Vsp8u take() { return empty() ? Vsp8u(0) : *at_++; }

  private:
    const Vsp8u *at_, *end_;
};

template <class T>
void append(Bytes& bytes, const T& value) {
    bytes.resize(bytes.size() + sizeof value);
    std::memcpy(&bytes[bytes.size() - sizeof value], &value, sizeof value);
}

// An object of a kind and all that has come out of it.
class Run {
  public:
    explicit Run(int kind) : kind_(kind), rate_(kind & 2 ? 16000 : 8000), arithmetic_(kind & 1) {
        Vsp32s bytes = 0;
        if (kind_ < 4)
            vspvToneDetectorGetSize(rate_, arithmetic_, &bytes);
        else if (kind_ < 7)
            vspvSpeechDetectorGetSize(kind_ - 3, &bytes);
        else if (kind_ < 8)
            vspvLevelControlGetSize(&bytes);
        else
            vspvPitchTrackerGetSize(&bytes);
        memory_.resize(std::size_t(bytes) / 8);
        const VspvLevelSettings settings{20, 1, 20, 1};
        if (kind_ < 4)
            vspvToneDetectorInit(object<VspvToneDetector>(), rate_, arithmetic_);
        else if (kind_ < 7)
            vspvSpeechDetectorInit(object<VspvSpeechDetector>(), kind_ - 3);
        else if (kind_ < 8)
            vspvLevelControlInit(object<VspvLevelControl>(), &settings);
        else
            vspvPitchTrackerInit(object<VspvPitchTracker>(), kind_ - 8);
    }

    void hear(const Vsp16s* samples, Vsp32s count) {
        if (kind_ < 4) {
            for (Vsp32s used = 0; count > 0; samples += used, count -= used) {
                VspvToneEvent event;
                vspvToneDetectorProcess(object<VspvToneDetector>(), samples, count, &used, &event);
                if (event.type != vspvToneNothing) append(results, event);
            }
        } else if (kind_ < 7) {
            std::vector<VspvSpeechDecision> decisions((std::size_t(count) + vspvSpeechFrame - 1) / vspvSpeechFrame);
            Vsp32s made = 0;
            vspvSpeechDetectorProcess(object<VspvSpeechDetector>(), samples, count, decisions.data(), &made);
            for (Vsp32s i = 0; i < made; i++) append(results, decisions[std::size_t(i)]);
        } else if (kind_ < 8) {
            Samples controlled(static_cast<std::size_t>(count));
            vspvLevelControlProcess(object<VspvLevelControl>(), samples, controlled.data(), count);
            for (const Vsp16s x : controlled) append(results, x);
        } else {
            std::vector<VspvPitchPoint> points(2 * ((std::size_t(count) + vspvPitchFrame - 1) / vspvPitchFrame));
            Vsp32s made = 0;
            vspvPitchTrackerProcess(object<VspvPitchTracker>(), samples, count, points.data(), &made);
            for (Vsp32s i = 0; i < made; i++) append(results, points[std::size_t(i)]);
        }
    }

    Bytes results;

  private:
    template <class Object>
    Object* object() {
        return reinterpret_cast<Object*>(memory_.data());
    }

    int kind_;
    Vsp32s rate_, arithmetic_;
    std::vector<Vsp64s> memory_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const Vsp8u* data, std::size_t size) {
    Input in(data, size);
    const int kind = in.take() % 11;
    Samples samples;
    std::vector<Vsp32s> blocks;
    for (Vsp32u noise = 1; !in.empty() && samples.size() < 20000;) {
        const Vsp8u choice = in.take();
        const int length = in.take() * (choice % 4 == 0 ? 8 : 1) + 1, shift = in.take() % 16;
        Vsp16s value = 0;
        for (int i = 0; i < length; i++) {  // noise, or a constant
            noise = noise * 1664525u + 1013904223u;
            if (i == 0 || choice % 8 != 1) value = Vsp16s(Vsp16s(noise >> 16) >> shift);
            samples.push_back(value);
        }
        blocks.push_back(length);
    }
    if (samples.empty()) return 0;
    Run whole(kind), parts(kind);
    whole.hear(samples.data(), Vsp32s(samples.size()));
    const Vsp16s* at = samples.data();
    for (const Vsp32s length : blocks) parts.hear(std::exchange(at, at + length), length);
    if (whole.results != parts.results) {
        std::fprintf(stderr, "blocks make a difference\n");
        std::abort();
    }
    return 0;
}
