// An echo canceller: removes from a near-end signal what it contains of the far-end signal.
//
//     far  ------+----------------> loudspeaker, hybrid --+
//                v                                        | echo
//          adaptive filter                                v
//                | estimate        near = echo + near-end speech + noise
//     out <------(-)--------------------------------------+
#pragma once

#include <memory>
#include <span>

enum class EchoEngine {
    subband,  // complex sub-bands, one short adaptive filter in each
    fullband  // one long adaptive filter in the time domain
};

struct EchoCancellerSettings {
    int rate = 8000;      // Hz: 8000 or 16000
    double tailMs = 128;  // length of the echo path that can be cancelled, without its bulk delay; 1 to 500
    EchoEngine engine = EchoEngine::subband;
    bool fixedPoint = false;       // with the 16-bit functions of the library instead of the floating-point ones
    double maxBulkDelayMs = 1000;  // the pure delay before the echo path is searched up to here; 0: taken to be none
    bool toneDisabling = true;     // stop at a modem's answer tone (2100 Hz with phase reversals), ITU-T G.168
};

// What the canceller was doing at the end of the last block.
struct EchoCancellerStatus {
    bool echoFound = false;     // some echo has been removed so far; without it, the bulk delay means nothing
    double bulkDelayMs = 0;     // between far and near, compensated before the adaptive filter
    double stepSize = 0;        // how fast the filter adapts: 0 not at all, 1 as fast as an NLMS filter can
    bool farActive = false;     // there is a far-end signal to cancel
    bool doubleTalk = false;    // far-end and near-end speech at the same time
    bool toneDisabled = false;  // neither adapts nor cancels: out is near, delayed
};

class EchoCanceller {
  public:
    virtual ~EchoCanceller() = default;

    // All three of one length, which may differ from call to call: any split of the signals gives the same output.
    // Samples are on the scale of 16 bits, full scale is 32768; the fixed-point engines round and clip them to integers.
    // out may be near.
    virtual void process(std::span<const float> far, std::span<const float> near, std::span<float> out) = 0;

    // out[n] belongs to near[n - latency()].
    virtual int latency() const = 0;

    virtual EchoCancellerStatus status() const = 0;
};

// Throws std::invalid_argument for settings out of range.
std::unique_ptr<EchoCanceller> makeEchoCanceller(const EchoCancellerSettings& settings);
