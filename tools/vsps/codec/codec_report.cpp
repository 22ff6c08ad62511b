#include "codec/codec_report.h"

#include "console/report_format.h"
#include "console/standard_streams.h"

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
    return text + "written: " + outputName(r.outFile) + '\n';
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
            {"times_real_time", number(r.timesRealTime())}};
}
