#include "codec/codec_report.h"

#include "console/report_format.h"
#include "console/standard_streams.h"

namespace {

double milliseconds(const CodecReport& r) { return 1000.0 * r.comparison->delay / r.codec->samplingRate; }

std::string comparisonText(const CodecReport& r) {
    const ComparisonReport& c = *r.comparison;
    return "  against   " + inputName(c.original) +
           format(": %.2f s, delay %d samples (%.1f ms)\n", c.seconds, c.delay, milliseconds(r)) +
           "            segmental SNR " + decibels(c.segmentalSnr, "dB") + ", log-spectral distance " +
           decibels(c.spectralDistance, "dB") + '\n';
}

Json comparisonJson(const CodecReport& r) {
    const ComparisonReport& c = *r.comparison;
    return {{"original", c.original},
            {"duration_s", number(c.seconds)},
            {"delay_samples", c.delay},
            {"delay_ms", number(milliseconds(r))},
            {"segmental_snr_db", number(c.segmentalSnr)},
            {"log_spectral_distance_db", number(c.spectralDistance)}};
}

}  // namespace

std::string toText(const CodecReport& r) {
    const VspvCodec& c = *r.codec;
    std::string text = inputName(r.inFile) + format(": %.2f s, %d Hz\n", r.seconds(), c.samplingRate);
    text += format("  codec     %s: %s (%s)\n", c.name, c.description, c.standard);
    text += format("  frames    %llu of %d samples", static_cast<unsigned long long>(r.frames), c.frameSamples);
    if (r.lost)
        text += format(", %llu lost (%.1f %%)", static_cast<unsigned long long>(*r.lost),
                       100.0 * double(*r.lost) / double(r.frames));
    text += format("\n  bit rate  %d bit/s, %llu octets\n", r.bitRate, static_cast<unsigned long long>(r.bytes));
    text += format("  speed     %.0f x real time\n", r.timesRealTime());
    if (r.comparison) text += comparisonText(r);
    text += "written: " + outputName(r.outFile) + '\n';
    return r.plot.empty() ? text : text + "plot: " + outputName(r.plot) + '\n';
}

Json toJson(const CodecReport& r) {
    const VspvCodec& c = *r.codec;
    return {{"input", r.inFile},
            {"output", r.outFile},
            {"codec", c.name},
            {"rate_hz", c.samplingRate},
            {"frame_samples", c.frameSamples},
            {"frames", std::size_t(r.frames)},
            {"frames_lost", r.lost ? Json(std::size_t(*r.lost)) : Json(nullptr)},
            {"bit_rate", r.bitRate},
            {"octets", std::size_t(r.bytes)},
            {"samples", std::size_t(r.samples)},
            {"duration_s", number(r.seconds())},
            {"times_real_time", number(r.timesRealTime())},
            {"against", r.comparison ? comparisonJson(r) : Json(nullptr)},
            {"plot", nameOrNull(r.plot)}};
}
