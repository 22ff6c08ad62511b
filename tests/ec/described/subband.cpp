// Filters of sub-bands. The filter bank, whose states point into themselves, is not described.
#include "support/described.h"

namespace vsp::test {

static const std::initializer_list<VspStatus> kCountFirst = {vspStsNullPtrErr, vspStsCountRangeErr, vspStsRangeErr,
                                                             vspStsSizeErr};
static const std::initializer_list<VspStatus> kRangeFirst = {vspStsNullPtrErr, vspStsRangeErr, vspStsCountRangeErr};
static const Argument kTaps = range(1, 255).upTo(12), kBands = limited(vspStsCountRangeErr, 1, 4097).upTo(70);

static Argument firstBand(std::size_t bands) {
    return limited(vspStsRangeErr, [=](const Values& v) { return Limits{0, v[bands] < 0 ? -1 : v[bands]}; }).anyway();
}
static Limits evenNotNegative(const Values&, int i) { return i % 2 == 0 ? Limits{0} : Limits{}; }

static const Described functions(
    "ec",
    {
        VSPSC_FUNCTION(vspsFIRSubband_EC_32fc, rows(argument(3), in(argument(4))), rows(argument(3), in(argument(4))),
                       out(argument(4)), kTaps, kBands)
            .checks(kCountFirst)
            .recorded("fir_subband_32fc", {item(1), item(2), result(3), item(0)[0], item(0)[1]}),
        VSPSC_FUNCTION(vspsFIRSubbandFast_EC_32fc, rows(argument(3), in(argument(4))), rows(argument(3), in(argument(4))),
                       out(argument(4)), kTaps, kBands)
            .checks(kCountFirst)
            .notRecorded(),
        VSPSC_FUNCTION(vspsFIRSubband_EC_32sc_Sfs, rows(argument(3), in(argument(4))), rows(argument(3), in(argument(4))),
                       out(argument(4)), kTaps, kBands, range(-31, 31))
            .checks(kCountFirst)
            .recorded("fir_subband_32sc", {item(1), item(2), result(3), item(0)[0], item(0)[1], item(0)[2]}),
        VSPSC_FUNCTION(vspsFIRSubbandFast_EC_32sc_Sfs, rows(argument(3), in(argument(4))),
                       rows(argument(3), in(argument(4))), out(argument(4)), kTaps, kBands, range(-31, 31))
            .checks(kCountFirst)
            .notRecorded(),
        VSPSC_FUNCTION(vspsFIRSubbandLow_EC_32sc_Sfs, rows(argument(2), in(argument(5))),
                       rows(argument(2), in(argument(5))), kTaps, io(argument(5)), firstBand(5), kBands,
                       range(0, 31).checkedLast())
            .checks(kRangeFirst)
            .recorded("fir_subband_low_32sc",
                      {item(1), item(2), item(0)[0], item(3).to(4), item(0)[1], item(0)[2], item(0)[3]}),
        VSPSC_FUNCTION(vspsFIRSubbandCoeffUpdate_EC_32fc_I, in(argument(5)).holding(vspStsSizeErr, 0, 0x7FFFFFFF),
                       rows(argument(4), in(argument(5))), in(argument(5)), rows(argument(4), io(argument(5))), kTaps,
                       kBands)
            .checks(kCountFirst)
            .recorded("update_32fc", {item(1), item(2), item(3), item(4).to(5), item(0)[0], item(0)[1]}),
        VSPSC_FUNCTION(vspsFIRSubbandFastCoeffUpdate_EC_32fc_I, in(argument(5)).holding(vspStsSizeErr, 0, 0x7FFFFFFF),
                       rows(argument(4), in(argument(5))), in(argument(5)), rows(argument(4), io(argument(5))), kTaps,
                       kBands)
            .checks(kCountFirst)
            .notRecorded(),
        VSPSC_FUNCTION(vspsFIRSubbandCoeffUpdate_EC_32sc_I, in(argument(5)).holding(vspStsSizeErr, evenNotNegative),
                       rows(argument(4), in(argument(5))), in(argument(5)), rows(argument(4), io(argument(5))), kTaps,
                       kBands, range(0, 31))
            .checks(kCountFirst)
            .recorded("update_32sc", {item(1), item(2), item(3), item(4).to(5), item(0)[0], item(0)[1], item(0)[2]}),
        VSPSC_FUNCTION(vspsFIRSubbandFastCoeffUpdate_EC_32sc_I, in(argument(5)).holding(vspStsSizeErr, evenNotNegative),
                       rows(argument(4), in(argument(5))), in(argument(5)), rows(argument(4), io(argument(5))), kTaps,
                       kBands, range(0, 31))
            .checks(kCountFirst)
            .notRecorded(),
        VSPSC_FUNCTION(vspsFIRSubbandLowCoeffUpdate_EC_32sc_I, rows(argument(3), in(argument(7))), in(argument(7)),
                       rows(argument(3), io(argument(7))), kTaps, io(argument(7)), in(argument(7)), firstBand(7), kBands,
                       range(0, 31).checkedLast())
            .checks(kRangeFirst)
            .recorded("update_low_32sc", {item(2), item(3), item(4).to(6), item(0)[0], item(5).to(7), item(1), item(0)[1],
                                          item(0)[2], item(0)[3]}),
        VSPSC_FUNCTION(vspsFIRSubbandAPCoeffUpdate_EC_32fc_I, rows(argument(6), in(argument(5))),
                       rows([](const Values& v) { return v[4] + v[6] - 1; }, in(argument(5))),
                       rows(argument(6), in(argument(5))), rows(argument(4), io(argument(5))), kTaps, kBands,
                       range(1, 0x7FFFFFFF).upTo(4))
            .checks(kCountFirst)
            .recorded("update_ap_32fc", {item(1), item(2), item(3), item(4).to(5), item(0)[0], item(0)[1], item(0)[2]}),
    });

}  // namespace vsp::test
