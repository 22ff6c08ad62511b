#include "support/speech.h"

#include <fstream>
#include <stdexcept>

#include "support/vector_case.h"

namespace vsp::test {

std::vector<Vsp16s> recordedSpeech() {
    std::ifstream file(VSPSC_TEST_DATA "/speech/demo-echotest.wav", std::ios::binary);
    const std::string bytes(std::istreambuf_iterator<char>(file), {});
    constexpr std::size_t kHeader = 44;
    if (bytes.size() <= kHeader || bytes.substr(36, 4) != "data") throw std::runtime_error("the recording is missing");
    std::vector<Vsp16s> speech((bytes.size() - kHeader) / sizeof(Vsp16s));
    std::memcpy(speech.data(), bytes.data() + kHeader, speech.size() * sizeof(Vsp16s));
    return speech;
}

}  // namespace vsp::test
