#pragma once

#include <string>
#include <vector>

#include "vspsc/types.h"

namespace vsp::test {

// The recorded telephone prompt under tests/data/speech, 8 kHz.
std::vector<Vsp16s> recordedSpeech();

}  // namespace vsp::test
