// Fixed codebooks against recorded calls.
#include <memory>

#include "support/guarded.h"
#include "support/level_test.h"
#include "support/vector_case.h"

namespace vsp::test {

namespace {

using Items = std::vector<Item>;

Guarded<Vsp16s> input(const Items& items, std::size_t i) { return Guarded<Vsp16s>(items.at(i).values<Vsp16s>()); }
Vsp16s value(const Items& items, std::size_t i) { return items.at(i).values<Vsp16s>().at(0); }

// Calls with outputs that are the last items, of which the first `inOut` begin as the last inputs.
void runCases(const std::string& file, std::size_t outputs, std::size_t inOut, auto call) {
    const auto cases = readItemCases("g729/" + file + ".vec");
    ASSERT_FALSE(cases.empty());
    for (std::size_t number = 0; number < cases.size(); number++) {
        SCOPED_TRACE(file + ", case " + std::to_string(number));
        const Items& items = cases[number];
        const std::size_t first = items.size() - outputs;
        std::vector<std::unique_ptr<Guarded<Vsp16s>>> results;
        for (std::size_t i = 0; i < outputs; i++) {
            const auto before = items[i < inOut ? first - inOut + i : first + i].values<Vsp16s>();
            results.push_back(std::make_unique<Guarded<Vsp16s>>(before));
            if (i >= inOut) std::fill(results.back()->begin(), results.back()->end(), Vsp16s(0x5A5A));
        }
        ASSERT_EQ(vspStsNoErr, call(items, [&](std::size_t i) { return results.at(i)->data(); }));
        for (std::size_t i = 0; i < outputs; i++) EXPECT_EQ(items[first + i].values<Vsp16s>(), results[i]->values()) << i;
    }
}

}  // namespace

class FixedCodebook : public LevelTest {};
VSPSC_EVERY_LEVEL(FixedCodebook);

TEST_P(FixedCodebook, RecordedCalls) {
    const auto search = [](auto function) {
        return [=](const Items& items, auto out) {
            return function(input(items, 0).data(), input(items, 1).data(), value(items, 2), value(items, 3), out(0),
                            out(1), out(2));
        };
    };
    runCases("vspsFixedCodebookSearch_G729_16s", 4, 1, [&](const Items& items, auto out) {
        return api.vspsFixedCodebookSearch_G729_16s(input(items, 0).data(), input(items, 1).data(), value(items, 2),
                                                    value(items, 3), value(items, 4), out(0), out(1), out(2), out(3));
    });
    runCases("vspsFixedCodebookSearch_G729A_16s", 3, 0, search(api.vspsFixedCodebookSearch_G729A_16s));
    runCases("vspsFixedCodebookSearch_G729D_16s", 3, 0, search(api.vspsFixedCodebookSearch_G729D_16s));
    const auto decode = [](auto function) {
        return [=](const Items& items, auto out) {
            return function(input(items, 0).data(), value(items, 1), value(items, 2), out(0));
        };
    };
    runCases("vspsFixedCodebookDecode_G729_16s", 1, 0, decode(api.vspsFixedCodebookDecode_G729_16s));
    runCases("vspsFixedCodebookDecode_G729D_16s", 1, 0, decode(api.vspsFixedCodebookDecode_G729D_16s));
    const auto withStatus = [](std::size_t status, auto call) {  // the recorded status stands before the outputs
        return [=](const Items& items, auto out) {
            EXPECT_EQ(vspStsNoErr, items.at(status).values<Vsp32s>().at(0));
            return call(items, out);
        };
    };
    runCases("vspsFixedCodebookSearch_G729E_16s", 3, 0, withStatus(6, [&](const Items& items, auto out) {
                 return api.vspsFixedCodebookSearch_G729E_16s(value(items, 0), input(items, 1).data(),
                                                              input(items, 2).data(), input(items, 3).data(),
                                                              value(items, 4), value(items, 5), out(0), out(1), out(2));
             }));
    runCases("vspsFixedCodebookDecode_G729E_16s", 1, 0, withStatus(4, [&](const Items& items, auto out) {
                 return api.vspsFixedCodebookDecode_G729E_16s(value(items, 0), input(items, 1).data(), value(items, 2),
                                                              value(items, 3), out(0));
             }));
    for (const auto& items : readItemCases("g729/vspsFixedCodebookRandom_G729E_16s.vec")) {
        Vsp16s seed = value(items, 0), index[5];
        EXPECT_EQ(vspStsNoErr, api.vspsFixedCodebookRandom_G729E_16s(&seed, index));
        EXPECT_EQ(value(items, 2), seed);
        EXPECT_EQ(items.at(3).values<Vsp16s>(), std::vector<Vsp16s>(index, index + 5));
    }
    for (const auto& items : readItemCases("g729/vspsFixedCodebookRandom_G729_16s.vec")) {
        Vsp16s seed = value(items, 0), seedD = seed, index[2], indexD[2];
        EXPECT_EQ(vspStsNoErr, api.vspsFixedCodebookRandom_G729_16s(&seed, index));
        EXPECT_EQ(vspStsNoErr, api.vspsFixedCodebookRandom_G729D_16s(&seedD, indexD));
        EXPECT_EQ(items.at(1).values<Vsp16s>(), std::vector<Vsp16s>(index, index + 2));
        EXPECT_EQ(items.at(2).values<Vsp16s>(), std::vector<Vsp16s>(indexD, indexD + 2));
        EXPECT_EQ(value(items, 3), seed);
        EXPECT_EQ(seed, seedD);
    }
}

}  // namespace vsp::test
