// The sub-band engine.
#pragma once

#include "echo_canceller/canceller.h"

std::unique_ptr<EchoCanceller> makeSubbandCanceller(const EchoCancellerSettings& settings);
