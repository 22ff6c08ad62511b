// The operators, as functions.
#include "arithmetic/basic_ops.h"

#include "support/described.h"

namespace vsp::test {

using describing::internal;

static const Described functions(
    "arithmetic",
    {
        internal("Exp_16s_Pos", +[](Vsp16s x, Vsp32s* count) -> VspStatus { return *count = Exp_16s_Pos(Vsp16u(x)), 0; },
                 {value(), out(1)})
            .recordedWithNames(),
        internal("Norm_32s_Pos_I",
                 +[](Vsp32s* x, Vsp32s* count) -> VspStatus {
                     if (*x < 0) return vspStsRangeErr;
                     return *count = Norm_32s_Pos_I(x), 0;
                 },
                 {io(1).holding(vspStsRangeErr, 0, 0x7FFFFFFF), out(1)})
            .recordedWithNames(),
        internal("ShiftL_16s",
                 +[](Vsp16s x, Vsp32s n, Vsp16s* y) -> VspStatus {
                     if (n < 0 || n > 31) return vspStsRangeErr;
                     return *y = ShiftL_16s(x, n), 0;
                 },
                 {value(), range(0, 31), out(1)})
            .recordedWithNames(),
        internal("Mul_32s", +[](Vsp32s a, Vsp32s b, Vsp32s* y) -> VspStatus { return *y = Mul_32s(a, b), 0; },
                 {value(), value(), out(1)})
            .recordedWithNames(),
        internal("ownLog2",
                 +[](Vsp32s x, Vsp16s* exponent, Vsp16s* fraction) -> VspStatus {
                     return ownLog2(x, exponent, fraction), 0;
                 },
                 {value(), out(1), out(1)})
            .recordedWithNames(),
        internal("ownPow2",
                 +[](Vsp16s exponent, Vsp16s fraction, Vsp32s* y) -> VspStatus {
                     return *y = ownPow2(exponent, fraction), 0;
                 },
                 {value(), limited(vspStsNoErr, 0, 32767), out(1)})
            .recordedWithNames(),
        internal("saturating_operators",
                 +[](Vsp32s a, Vsp32s b, Vsp32s* sum, Vsp32s* difference, Vsp32s* magnitude, Vsp32s* twice,
                     Vsp32s* fourTimes) -> VspStatus {
                     *sum = Add_32s(a, b);
                     *difference = Sub_32s(a, b);
                     *magnitude = Abs_32s(a);
                     *twice = Mul2_32s(a);
                     *fourTimes = Mul4_32s(a);
                     return 0;
                 },
                 {value(), value(), out(1), out(1), out(1), out(1), out(1)})
            .recordedWithNames(),
    });

}  // namespace vsp::test
