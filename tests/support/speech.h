#pragma once

#include <string>
#include <vector>

#include "vspsc/types.h"

namespace vsp::test {

// The recorded telephone prompt in tests/support/data, 8 kHz.
std::vector<Vsp16s> recordedSpeech();

}  // namespace vsp::test
