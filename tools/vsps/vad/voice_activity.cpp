#include "vad/voice_activity.h"

std::string detectorName(int option) {
    return option == vspvSpeechWide ? "AMR-WB" : "GSM-AMR option " + std::to_string(option);
}

VoiceActivity::VoiceActivity(int option) : detector_(vspvSpeechDetectorGetSize, option) {
    checkVoice(vspvSpeechDetectorInit(detector_.get(), option));
}

void VoiceActivity::process(std::span<const std::int16_t> samples, std::vector<VspvSpeechDecision>& frames) {
    if (samples.empty()) return;
    const std::size_t before = frames.size();
    frames.resize(before + (samples.size() + vspvSpeechFrame - 1) / vspvSpeechFrame);
    Vsp32s count = 0;
    checkVoice(vspvSpeechDetectorProcess(detector_.get(), samples.data(), static_cast<Vsp32s>(samples.size()),
                                         frames.data() + before, &count));
    frames.resize(before + std::size_t(count));
}

void VoiceActivity::finish(std::vector<VspvSpeechDecision>& frames) {
    VspvSpeechDecision last{};
    Vsp32s count = 0;
    checkVoice(vspvSpeechDetectorFinish(detector_.get(), &last, &count));
    if (count == 1) frames.push_back(last);
}
