#include "echo_canceller/canceller.h"

#include <stdexcept>

#include "echo_canceller/fullband_canceller.h"
#include "echo_canceller/subband_canceller.h"

std::unique_ptr<EchoCanceller> makeEchoCanceller(const EchoCancellerSettings& settings) {
    constexpr double kMaxTail = 500, kMaxDelay = 1000;  // ms
    if (settings.rate != 8000 && settings.rate != 16000) throw std::invalid_argument("the rate must be 8000 or 16000 Hz");
    if (!(settings.tailMs >= 1 && settings.tailMs <= kMaxTail)) throw std::invalid_argument("the tail must be 1 to 500 ms");
    if (!(settings.maxBulkDelayMs >= 0 && settings.maxBulkDelayMs <= kMaxDelay))
        throw std::invalid_argument("the bulk delay must be 0 to 1000 ms");
    return settings.engine == EchoEngine::subband ? makeSubbandCanceller(settings) : makeFullbandCanceller(settings);
}
