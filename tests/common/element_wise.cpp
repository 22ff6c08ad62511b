// Kernels that compute each element from one or two others.
#include <array>
#include <functional>
#include <numeric>
#include <string>

#include "common/definitions.h"
#include "support/guarded.h"
#include "support/level_test.h"
#include "support/samples.h"

namespace vsp::test {

namespace {

constexpr Vsp32s kHuge = 0x7FFFFFFF;

std::vector<int> lengths() {
    std::vector<int> all(100);
    std::iota(all.begin(), all.end(), 1);
    all.insert(all.end(), {127, 128, 129, 240, 1023});
    return all;
}

std::vector<Vsp32s> scaleFactors() {
    std::vector<Vsp32s> all(41);
    std::iota(all.begin(), all.end(), 0);
    all.insert(all.end(), {47, 64, 1000, kHuge - 31, kHuge});
    return all;
}

using Vector = std::vector<Vsp16s>;
using Definition = std::function<Vector(const Vector&, const Vector&)>;
using Kernel = std::function<VspStatus(const Vsp16s* src1, const Vsp16s* src2, Vsp16s* dst, int len)>;

// Makes the definition of one element one of vectors.
Definition each(const std::function<Vsp64s(Vsp64s, Vsp64s)>& f) {
    return [f](const Vector& a, const Vector& b) {
        Vector result(a.size());
        for (std::size_t i = 0; i < a.size(); i++) result[i] = Vsp16s(f(a[i], b[i]));
        return result;
    };
}

// Runs a kernel at the end and at the begin of a page, at other alignments, and with each source as destination.
void expectAs(const Definition& definition, const Kernel& kernel, const Vector& a, const Vector& b) {
    const int len = int(a.size());
    const Vector expected = definition(a, b);
    for (const auto& [guard, gap] : {std::pair(Guard::end, 0), std::pair(Guard::begin, 1)}) {
        const Guarded<const Vsp16s> src1(a, guard, gap), src2(b, guard, 2 * gap);
        Guarded<Vsp16s> dst(a.size(), guard, 5 * gap), inPlace1(a, guard, 3 * gap), inPlace2(b, guard, 7 * gap);
        ASSERT_EQ(vspStsNoErr, kernel(src1.data(), src2.data(), dst.data(), len));
        ASSERT_EQ(expected, dst.values()) << "length " << len;
        ASSERT_TRUE(src1.values() == a && src2.values() == b) << "source changed, length " << len;
        ASSERT_EQ(vspStsNoErr, kernel(inPlace1.data(), src2.data(), inPlace1.data(), len));
        ASSERT_EQ(expected, inPlace1.values()) << "in place of the first source, length " << len;
        ASSERT_EQ(vspStsNoErr, kernel(src1.data(), inPlace2.data(), inPlace2.data(), len));
        ASSERT_EQ(expected, inPlace2.values()) << "in place of the second source, length " << len;
    }
}

void expectAsForEveryLength(const Definition& definition, const Kernel& kernel) {
    for (const int len : lengths()) {
        expectAs(definition, kernel, samples(std::size_t(len), unsigned(len)),
                 samples(std::size_t(len), unsigned(len) + 1000));
        if (::testing::Test::HasFatalFailure()) return;
    }
}

}  // namespace

class ElementWise : public LevelTest {};
VSPSC_EVERY_LEVEL(ElementWise);

TEST_P(ElementWise, MulCMatchesTheDefinition) {
    for (const Vsp32s sf : scaleFactors()) {
        const Vsp16s val = std::array<Vsp16s, 5>{-32768, 32767, -12345, 1, 30000}[std::size_t(sf) % 5];
        SCOPED_TRACE("value " + std::to_string(val) + ", scale factor " + std::to_string(sf));
        const auto definition = each([=](Vsp64s a, Vsp64s) { return saturate16(roundShift(a * val, sf)); });
        expectAsForEveryLength(definition, [&](auto a, auto b, auto dst, int len) {
            if (dst != b) return api.vspsMulC_NR_16s_Sfs(a, val, dst, len, sf);
            std::copy(a, a + len, dst);
            return api.vspsMulC_NR_16s_ISfs(val, dst, len, sf);
        });
    }
}

TEST_P(ElementWise, MulCMatchesTheDefinitionForEveryInput) {
    Vector every(65536);
    std::iota(every.begin(), every.end(), Vsp16s(-32768));
    for (const Vsp16s val : Vector{-32768, -32767, -1, 0, 1, 3, 16384, 32766, 32767})
        for (const Vsp32s sf : {0, 1, 14, 15, 16, 30, 31, 32, 47}) {
            const auto definition = each([=](Vsp64s a, Vsp64s) { return saturate16(roundShift(a * val, sf)); });
            Vector result(every.size());
            ASSERT_EQ(vspStsNoErr, api.vspsMulC_NR_16s_Sfs(every.data(), val, result.data(), 65536, sf));
            ASSERT_TRUE(definition(every, every) == result) << "value " << val << ", scale factor " << sf;
        }
}

TEST_P(ElementWise, MulMatchesTheDefinition) {
    for (const Vsp32s sf : scaleFactors()) {
        SCOPED_TRACE("scale factor " + std::to_string(sf));
        const auto definition = each([=](Vsp64s a, Vsp64s b) { return saturate16(roundShift(a * b, sf)); });
        expectAsForEveryLength(definition, [&](auto a, auto b, auto dst, int len) {
            return dst == b ? api.vspsMul_NR_16s_ISfs(a, dst, len, sf) : api.vspsMul_NR_16s_Sfs(a, b, dst, len, sf);
        });
    }
    Vector x = samples(100);  // both operands the same array
    const Vector squares = each([](Vsp64s a, Vsp64s b) { return saturate16(roundShift(a * b, 15)); })(x, x);
    ASSERT_EQ(vspStsNoErr, api.vspsMul_NR_16s_ISfs(x.data(), x.data(), 100, 15));
    EXPECT_EQ(squares, x);
}

TEST_P(ElementWise, MulPowerCMatchesTheDefinition) {
    for (const Vsp32s sf : scaleFactors())
        for (const Vsp16s val : Vector{-32768, 32767, 24576, -3}) {
            SCOPED_TRACE("value " + std::to_string(val) + ", scale factor " + std::to_string(sf));
            const auto definition = [=](const Vector& a, const Vector&) {
                Vector result = a;
                Vsp64s power = val;
                for (std::size_t i = 1; i < a.size(); i++) {
                    result[i] = Vsp16s(roundShift(a[i] * power, sf));
                    power = Vsp16s(roundShift(power * val, sf));
                }
                return result;
            };
            for (const int len : {1, 2, 3, 11, 40, 100})
                expectAs(
                    definition,
                    [&](auto a, auto b, auto dst, int n) {
                        if (dst == b) std::copy(a, a + n, dst);
                        return api.vspsMulPowerC_NR_16s_Sfs(dst == b ? dst : a, val, dst, n, sf);
                    },
                    samples(std::size_t(len)), samples(std::size_t(len)));
        }
}

TEST_P(ElementWise, InterpolationsMatchTheDefinition) {
    const auto halves = each([](Vsp64s a, Vsp64s b) { return (a >> 1) + (b >> 1); });
    expectAsForEveryLength(halves,
                           [&](auto a, auto b, auto dst, int len) { return api.vspsInterpolate_G729_16s(a, b, dst, len); });

    constexpr std::array<Vsp16s, 5> kWeights = {-32768, 32767, 13107, -1, 19661};
    for (const Vsp32s sf : scaleFactors()) {
        const Vsp16s w1 = kWeights[std::size_t(sf) % 5], w2 = kWeights[std::size_t(sf) / 2 % 5];
        SCOPED_TRACE("weights " + std::to_string(w1) + " and " + std::to_string(w2) + ", scale factor " +
                     std::to_string(sf));
        const auto truncated = each([=](Vsp64s a, Vsp64s b) {
            const int shift = std::min(sf, 31);
            return saturate16(wrap32((a * w1 >> shift) + (b * w2 >> shift)));
        });
        expectAsForEveryLength(truncated, [&](auto a, auto b, auto dst, int len) {
            return api.vspsInterpolateC_G729_16s_Sfs(a, w1, b, w2, dst, len, sf);
        });
        const auto rounded = each([=](Vsp64s a, Vsp64s b) { return saturate16(roundShift(a * w1 + b * w2, sf)); });
        expectAsForEveryLength(rounded, [&](auto a, auto b, auto dst, int len) {
            return api.vspsInterpolateC_NR_G729_16s_Sfs(a, w1, b, w2, dst, len, sf);
        });
    }
}

TEST_P(ElementWise, InterpolationWithTwoScaleFactorsMatchesTheDefinition) {
    const auto factors = scaleFactors();
    for (std::size_t k = 0; k < 5 * factors.size(); k++) {
        const Vsp32s sf1 = factors[k % factors.size()], sf2 = factors[k * 7 % factors.size()];
        const Vsp16s w1 = k % 3 == 0 ? -32768 : 32767, w2 = k % 2 == 0 ? -32768 : 12345;
        SCOPED_TRACE("scale factors " + std::to_string(sf1) + " and " + std::to_string(sf2));
        const auto definition = each([=](Vsp64s a, Vsp64s b) {
            const Vsp64s m = std::min(sf1, sf2);
            const Vsp64s sum = (a * w1 >> std::min<Vsp64s>(sf1 - m, 63)) + (b * w2 >> std::min<Vsp64s>(sf2 - m, 63));
            return m < 16 ? saturate16((sum + (1LL << (15 - m))) >> (16 - m))
                          : saturate16(saturate16(sum) * (1LL << std::min<Vsp64s>(m - 16, 16)));
        });
        for (const int len : {1, 2, 7, 8, 9, 15, 16, 17, 31, 32, 33, 40, 63, 64, 65, 100})
            expectAs(
                definition,
                [&](auto a, auto b, auto dst, int n) {
                    return api.vspsInterpolateC_NR_16s(a, w1, sf1, b, w2, sf2, dst, n);
                },
                samples(std::size_t(len), unsigned(k)), samples(std::size_t(len), unsigned(k) + 1));
    }
}

TEST_P(ElementWise, AutoScaleMatchesTheDefinition) {
    for (const int len : lengths())
        for (const Vsp32s wanted : {0, 1, 4, 14, 15, 16, 17, 29, 30, 31, 40, kHuge})
            for (const int shift : {0, 3, 9, 14, 15, 16}) {
                const auto random = samples(std::size_t(len), unsigned(len));
                Vector src(random.size());
                std::transform(random.begin(), random.end(), src.begin(), [&](Vsp16s x) { return Vsp16s(x >> shift); });
                if (shift == 16) src.assign(src.size(), 0);
                int largest = 0, left = 16;
                for (const int x : src) largest = std::max(largest, std::min(std::abs(x), 32767));
                if (largest > 0)
                    for (left = 0; largest << left < 0x4000;) left++;
                left -= wanted;
                Vector expected(src.size());
                std::transform(src.begin(), src.end(), expected.begin(), [&](Vsp16s x) {
                    return x == 0 ? Vsp16s(0) : left >= 0 ? Vsp16s(x * (1LL << left)) : Vsp16s(x >> std::min(-left, 15));
                });
                expectAs([&](const Vector&, const Vector&) { return expected; },
                         [&](auto a, auto b, auto dst, int n) {
                             Guarded<Vsp32s> factor(std::vector{wanted});
                             if (dst == b) std::copy(a, a + n, dst);
                             const VspStatus status = dst == b ? api.vspsAutoScale_16s_I(dst, n, factor.data())
                                                               : api.vspsAutoScale_16s(a, dst, n, factor.data());
                             EXPECT_EQ(left, factor[0]);
                             return status;
                         },
                         src, src);
                ASSERT_FALSE(HasFailure()) << "length " << len << ", scale " << wanted << ", shift " << shift;
            }
}

}  // namespace vsp::test
