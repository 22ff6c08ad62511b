#include "tone/answer_tone.h"

#include <utility>

AnswerToneFinder::AnswerToneFinder(int rate, bool fixedPoint)
    : rate_(rate), detector_(vspvToneDetectorGetSize, rate, fixedPoint ? vspvToneFixed : vspvToneFloat) {
    checkVoice(vspvToneDetectorInit(detector_.get(), rate, fixedPoint ? vspvToneFixed : vspvToneFloat));
}

void AnswerToneFinder::process(std::span<const std::int16_t> samples, std::vector<AnswerTone>& tones) {
    while (!samples.empty()) {
        VspvToneEvent event;
        Vsp32s used = 0;
        checkVoice(
            vspvToneDetectorProcess(detector_.get(), samples.data(), static_cast<Vsp32s>(samples.size()), &used, &event));
        samples = samples.subspan(std::size_t(used));
        add(event, tones);
    }
}

void AnswerToneFinder::finish(std::vector<AnswerTone>& tones) {
    VspvToneEvent event;
    do {
        checkVoice(vspvToneDetectorFinish(detector_.get(), &event));
        add(event, tones);
    } while (event.type != vspvToneNothing);
}

void AnswerToneFinder::add(const VspvToneEvent& event, std::vector<AnswerTone>& tones) {
    if (event.type == vspvToneReversal) reversals_.push_back(seconds(event.time));
    if (event.type == vspvToneEnd)
        tones.push_back({seconds(event.start), seconds(event.end), event.power, std::exchange(reversals_, {})});
}
