// Every exported function is described, so that nothing escapes the checks that the descriptions drive; and all of them at
// the same time.
#include <algorithm>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "support/call.h"
#include "support/level_test.h"

namespace vsp::test {

namespace {

// Those that are tested by hand: the version query, and the filter bank, whose states point into themselves. New functions
// are described: this list only gets shorter.
const std::vector<std::string> kNotDescribed = {
    "vspsSubbandProcessGetSize_32f", "vspsSubbandProcessGetSize_16s",    "vspsSubbandProcessInit_32f",
    "vspsSubbandProcessInit_16s",    "vspsSubbandAnalysis_32f32fc",      "vspsSubbandAnalysis_16s32sc_Sfs",
    "vspsSubbandSynthesis_32fc32f",  "vspsSubbandSynthesis_32sc16s_Sfs", "vspscGetLibVersion",
};

}  // namespace

TEST(Descriptions, EveryExportedFunctionHasOne) {
    std::vector<std::string> described;
    for (const Function& f : Described::all()) described.push_back(f.name);
    const auto contains = [](const std::vector<std::string>& names, const std::string& name) {
        return std::find(names.begin(), names.end(), name) != names.end();
    };
    for (const std::string name : {
#define VSPSC_EXPORT(family, name) #name,
#include "core/exports.def"
#undef VSPSC_EXPORT
         }) {
        if (contains(described, name))
            EXPECT_FALSE(contains(kNotDescribed, name)) << name << " is described: take it off the list";
        else
            EXPECT_TRUE(contains(kNotDescribed, name)) << name << " is not described";
    }
}

class Threads : public LevelTest {};
VSPSC_EVERY_LEVEL(Threads);

// Each thread calls all functions in an order and with arguments and states of its own.
TEST_P(Threads, DoNotDisturbEachOther) {
    const auto work = [this](unsigned seed) {
        std::mt19937 random(seed);
        States states;
        Draw draw([&] { return std::uint32_t(random()); }, states);
        const auto& functions = Described::all();
        std::vector<Result> results;
        for (std::size_t i = 0; i < 3 * functions.size(); i++) {
            const Call call = draw.call(functions[random() % functions.size()], random(), false);
            results.push_back(run(api, call, Guard::end));
            draw.keep(call, results.back());
        }
        return results;
    };
    constexpr unsigned kThreads = 8;
    std::vector<std::vector<Result>> results(kThreads);
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < kThreads; i++) threads.emplace_back([&, i] { results[i] = work(i); });
    for (std::thread& thread : threads) thread.join();
    for (unsigned i = 0; i < kThreads; i++) EXPECT_TRUE(work(i) == results[i]) << "thread " << i;
    EXPECT_FALSE(results[0] == results[1]);
}

}  // namespace vsp::test
