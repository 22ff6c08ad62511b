#include "support/speech.h"

#include <cstring>
#include <stdexcept>

#include "support/test_data.h"

namespace vsp::test {

std::vector<Vsp16s> recordedSpeech() {
    const std::string bytes = testData("support/demo-echotest.wav");
    constexpr std::size_t kHeader = 44;
    if (bytes.size() <= kHeader || bytes.substr(36, 4) != "data") throw std::runtime_error("the recording is missing");
    std::vector<Vsp16s> speech((bytes.size() - kHeader) / sizeof(Vsp16s));
    std::memcpy(speech.data(), bytes.data() + kHeader, speech.size() * sizeof(Vsp16s));
    return speech;
}

}  // namespace vsp::test
