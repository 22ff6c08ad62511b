// vsps codecs: what can be coded.
#include <iostream>
#include <memory>

#include "commands.h"
#include "console/json.h"
#include "console/report_format.h"
#include "vspsvoice.h"

namespace {

std::string payloadType(const VspvCodec& c) { return c.rtpPayloadType < 0 ? "dynamic" : std::to_string(c.rtpPayloadType); }

std::string bitRates(const VspvCodec& c) {
    const std::string first = std::to_string(c.pBitRates[0]);
    if (c.numBitRates > 3) return first + " to " + std::to_string(c.pBitRates[c.numBitRates - 1]);
    std::string rates = first;
    for (Vsp32s k = 1; k < c.numBitRates; k++) rates += " " + std::to_string(c.pBitRates[k]);
    return rates;
}

void printText() {
    std::cout << "codec         rate   frame  bit/s                RTP                 type     description\n";
    for (Vsp32s i = 0; i < vspvCodecCount(); i++) {
        const VspvCodec& c = *vspvCodec(i);
        std::cout << format("%-13s%5d  %3g ms  %-20s %-12s/%5d  %-8s %s (%s)\n", c.name, c.samplingRate,
                            1000. * c.frameSamples / c.samplingRate, bitRates(c).c_str(),
                            c.rtpName == nullptr ? "-" : c.rtpName, c.rtpClockRate, payloadType(c).c_str(), c.description,
                            c.standard);
    }
}

void printJson() {
    Json codecs = Json::array();
    for (Vsp32s i = 0; i < vspvCodecCount(); i++) {
        const VspvCodec& c = *vspvCodec(i);
        Json rates = Json::array();
        for (Vsp32s k = 0; k < c.numBitRates; k++) rates.append(c.pBitRates[k]);
        codecs.append({{"name", c.name},
                       {"description", c.description},
                       {"standard", c.standard},
                       {"rate_hz", c.samplingRate},
                       {"frame_samples", c.frameSamples},
                       {"max_frame_octets", c.maxFrameBytes},
                       {"bit_rates", rates},
                       {"rtp",
                        {{"name", c.rtpName == nullptr ? Json(nullptr) : Json(c.rtpName)},
                         {"clock_rate_hz", c.rtpClockRate},
                         {"payload_type", c.rtpPayloadType < 0 ? Json(nullptr) : Json(c.rtpPayloadType)}}},
                       {"several_rates", (c.capabilities & vspvCodecRates) != 0},
                       {"discontinuous_transmission", (c.capabilities & vspvCodecDTX) != 0},
                       {"conceals_losses", (c.capabilities & vspvCodecConceals) != 0}});
    }
    std::cout << Json({{"codecs", codecs}}).text();
}

}  // namespace

void addCodecs(CommandLine& vsps) {
    Command command = vsps.add("codecs", "The codecs of vsps encode and vsps decode.");
    const auto json = std::make_shared<bool>(false);
    command.flag("--json", *json, "Print a JSON object instead of text.");
    command.run([json] { *json ? printJson() : printText(); });
}
