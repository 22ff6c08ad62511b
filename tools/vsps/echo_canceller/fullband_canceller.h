// The full-band engine.
#pragma once

#include "echo_canceller/canceller.h"

std::unique_ptr<EchoCanceller> makeFullbandCanceller(const EchoCancellerSettings& settings);
