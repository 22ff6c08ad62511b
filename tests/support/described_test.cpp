// Every described function of the program: its recorded calls, its checks, and any arguments at all levels.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <random>
#include <sstream>

#include "support/level_test.h"
#include "support/recorded_calls.h"
#include "support/test_data.h"

namespace vsp::test {

namespace {

struct Level {
    std::string name;
    const Api* api;
};

// Those that the processor has, the last is the library.
const std::vector<Level>& levels() {
    static const auto all = [] {
        std::vector<Level> found;
        for (const std::string name : {"y8", "v3", "v4", "library"})
            if (apiOf(name) != nullptr) found.push_back({name, apiOf(name)});
        return found;
    }();
    return all;
}

std::string testName(std::string name) {
    for (char& c : name)
        if (!isalnum(static_cast<unsigned char>(c))) c = '_';
    return name;
}

struct Location {
    Guard guard;
    std::size_t gap;
};
constexpr Location kLocations[] = {{Guard::end, 0}, {Guard::begin, 0}, {Guard::begin, 1}, {Guard::end, 3}};

// Where results may be the same memory as other arguments, the call with the first or the last of these.
std::optional<Call> inPlace(const Call& call, bool last) {
    Call same = call;
    bool any = false;
    for (std::size_t i = 0; i < call.arrays.size(); i++) {
        const Argument& a = call.function->arguments[i];
        if (a.sources.empty() || !call.arrays[i] || a.kind != Argument::Kind::out) continue;
        const int source = last ? a.sources.back() : a.sources.front();
        if (!same.arrays[std::size_t(source)]) continue;
        same.same[i] = source;
        same.arrays[i].reset();
        any = true;
    }
    return any ? std::optional(same) : std::nullopt;
}

class Recorded : public ::testing::TestWithParam<RecordedFile> {};
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(Recorded);  // in families of which nothing is recorded

class Arguments : public ::testing::TestWithParam<const Function*> {
  protected:
    const Function& function = *GetParam();
};

}  // namespace

TEST_P(Recorded, Calls) {
    const RecordedFile& file = GetParam();
    const auto calls = file.calls();
    ASSERT_FALSE(calls.empty());
    for (const Level& level : levels()) {
        Bytes memory;  // the state of a stream
        for (std::size_t number = 0; number < calls.size(); number++) {
            RecordedCall recorded = calls[number];
            const Function& f = *recorded.call.function;
            SCOPED_TRACE(f.name + " at " + level.name + ", " + file.name + ", case " + std::to_string(number) + " " +
                         recorded.label);
            std::size_t state = 0;
            while (state < f.arguments.size() && f.arguments[state].kind != Argument::Kind::state) state++;
            if (file.stream()) {
                ASSERT_LT(state, f.arguments.size());
                const auto bytes = recorded.call.elements(state) * f.types[state].size;
                const auto user =
                    std::find_if(file.users.begin(), file.users.end(), [&](const auto& u) { return u.first == &f; });
                const Initialiser& own = user->second->initialise;
                const Initialiser& initialise = own ? own : f.arguments[state].initialise;
                if (recorded.start != 0) {
                    ASSERT_TRUE(initialise) << "the state has no initialiser";
                    Guarded<std::byte> fresh(bytes);
                    initialise(*level.api, recorded.start, fresh.data());
                    memory = fresh.values();
                }
                if (memory.empty() && user->second->startsWithKind) memory.resize(bytes, std::byte(0xA5));
                ASSERT_EQ(bytes, memory.size()) << "the stream has a state of another size";
                recorded.call.arrays[state] = memory;
            }
            for (const Location& place : kLocations) {
                const Result result = run(*level.api, recorded.call, place.guard, place.gap);
                ASSERT_EQ("", differenceOf(recorded, result));
                ASSERT_EQ("", problemOf(recorded.call, result));
                if (file.stream()) memory = result.arrays[state];
            }
            for (const bool last : {false, true})
                if (const auto same = inPlace(recorded.call, last)) {
                    ASSERT_EQ("", differenceOf(recorded, run(*level.api, *same, Guard::end))) << "in place";
                }
        }
    }
}

// The sanitizers see as many again when the fuzzers are replayed.
#ifdef VSPSC_NOT_OPTIMISED
constexpr std::size_t kFaultyCalls = 10, kLegalCalls = 300, kChoices = 300;
#else
constexpr std::size_t kFaultyCalls = 40, kLegalCalls = 1000, kChoices = 5000;
#endif
constexpr std::size_t kFirstCalls = 300;

// All single faults, all pairs of faults of two arguments, and some of more.
TEST_P(Arguments, FirstErrorInOrderIsReportedAndNothingIsTouched) {
    std::mt19937 random(1);
    States states;
    Draw draw([&] { return std::uint32_t(random()); }, states);
    const auto expectError = [&](const Call& call) {
        if (call.expectedError() == vspStsNoErr) return;
        for (const Level& level : levels()) {
            const Result result = run(*level.api, call, Guard::end);
            ASSERT_EQ("", problemOf(call, result)) << function.name << " at " << level.name;
        }
    };
    // The legal calls differ in which of their pointers are used and in limits that depend on other arguments.
    std::size_t tried = 0;
    for (std::size_t seed = 0; seed < kFaultyCalls && tried < 20000; seed++) {
        const Call legal = draw.call(function, seed * 2749, false);
        const auto faults = faultsOf(legal);
        const auto with = [&](std::initializer_list<const Fault*> chosen) {
            Call call = legal;
            for (const Fault* fault : chosen) fault->apply(call);
            ASSERT_NO_FATAL_FAILURE(expectError(call));
            tried++;
        };
        for (const Fault& fault : faults) ASSERT_NO_FATAL_FAILURE(with({&fault}));
        for (const Fault& one : faults)
            for (const Fault& other : faults)
                if (one.argument < other.argument && (seed == 0 || random() % 16 == 0) && tried < 20000) {
                    ASSERT_NO_FATAL_FAILURE(with({&one, &other}));
                }
        for (int i = 0; i < 100 && !faults.empty(); i++) {
            const auto any = [&] { return &faults[random() % faults.size()]; };
            ASSERT_NO_FATAL_FAILURE(with({any(), any(), any()}));
        }
    }
}

namespace {

// Of the results of many calls, to tell whether they are those of earlier versions (FNV-1a). Without states that hold
// addresses; all NaN are one.
class Digest {
  public:
    void add(const Function& f, const Result& result) {
        addBytes(&result.status, sizeof result.status);
        const bool floats = std::any_of(f.types.begin(), f.types.end(), [](const auto& t) { return t.type == 'f'; });
        for (std::size_t i = 0; i < result.arrays.size(); i++) {
            if (f.arguments[i].hasAddresses) continue;
            Bytes array = result.arrays[i];
            const char type = f.types[i].type == 's' && floats ? 'f' : f.types[i].type;
            for (std::size_t e = 0; !hasIntegers(type) && e < array.size() / widthOf(type); e++)
                if (std::isnan(numberAt(array, type, e))) setNumberAt(array, type, e, std::nan(""));
            addBytes(array.data(), array.size());
        }
    }
    std::string text() const {
        char digits[17];
        std::snprintf(digits, sizeof digits, "%016llx", value_);
        return digits;
    }

  private:
    void addBytes(const void* bytes, std::size_t n) {
        for (std::size_t i = 0; i < n; i++)
            value_ = (value_ ^ static_cast<const unsigned char*>(bytes)[i]) * 0x100000001B3u;
    }
    unsigned long long value_ = 0xCBF29CE484222325u;
};

// The function's line of <family>/data/results.txt: the digest of the first calls, that of all.
void expectPinned(const Function& f, const std::string& first, const std::string& all) {
    if (const char* file = std::getenv("VSPSC_PIN"); file != nullptr) {
        std::ofstream(file, std::ios::app) << f.family << ' ' << f.name << ' ' << first << ' ' << all << '\n';
        return;
    }
    const std::string file = f.family + "/results.txt";
    std::istringstream lines(testData(file));
    for (std::string name, pinnedFirst, pinnedAll; lines >> name >> pinnedFirst >> pinnedAll;) {
        if (name != f.name) continue;
        EXPECT_EQ(pinnedFirst, first) << "not the results that earlier versions gave";
        if constexpr (kLegalCalls > kFirstCalls) {
            EXPECT_EQ(pinnedAll, all) << "not the results that earlier versions gave";
        }
        return;
    }
    ADD_FAILURE() << f.name << " is not in " << file << ": tools/pin-results.sh";
}

}  // namespace

TEST_P(Arguments, AnyLegalOnesGiveTheSameAtEveryLevel) {
    std::mt19937 random(1);
    States states;
    Draw draw([&] { return std::uint32_t(random()); }, states);
    const auto& higher = levels();
    // What chooses among many candidates shows a small error seldom.
    const bool chooses =
        function.name.find("Search") != std::string::npos || function.name.find("Quant") != std::string::npos;
    const std::size_t calls = std::max(chooses ? kChoices : kLegalCalls, Draw::combinations(function));
    Digest digest;
    std::string first;
    for (std::size_t number = 0; number < calls; number++) {
        SCOPED_TRACE(function.name + ", call " + std::to_string(number));
        const Call call = draw.call(function, number, false);
        ASSERT_EQ(vspStsNoErr, call.expectedError());
        const Result baseline = run(kApi_y8, call, Guard::end);
        ASSERT_EQ("", problemOf(call, baseline));
        for (std::size_t i = 0; i < higher.size(); i++) {
            const Location& place = kLocations[(number + i) % std::size(kLocations)];
            Result result = run(*higher[i].api, call, place.guard, place.gap);
            for (std::size_t k = 0; k < result.arrays.size() && higher[i].name == "library"; k++)
                if (function.arguments[k].hasAddresses) result.arrays[k] = baseline.arrays[k];
            ASSERT_EQ("", differenceBetween(call, baseline, result)) << higher[i].name << " against y8";
            ASSERT_FALSE(result.upperHalves) << higher[i].name;
        }
        if (const auto same = inPlace(call, number % 2 == 0)) {
            const Result result = run(*higher.back().api, *same, Guard::end);
            for (std::size_t i = 0; i < same->same.size(); i++) {
                ASSERT_TRUE(!same->inPlace(i) || result.arrays[i] == baseline.arrays[i]) << "in place";
            }
        }
        draw.keep(call, baseline);
        digest.add(function, baseline);
        if (number + 1 == kFirstCalls) first = digest.text();
    }
    expectPinned(function, first, digest.text());
}

namespace {

std::vector<const Function*> everyFunction() {
    std::vector<const Function*> all;
    for (const Function& f : Described::all()) all.push_back(&f);
    return all;
}

std::string nameOfRecorded(const ::testing::TestParamInfo<RecordedFile>& test) {
    const std::string file = test.param.name.substr(0, test.param.name.find(".vec"));
    const std::string& function = test.param.users[0].first->name;
    return test.param.stream()              ? testName(file)
           : file.ends_with("/" + function) ? function
                                            : testName(function + "__" + file);
}

}  // namespace

INSTANTIATE_TEST_SUITE_P(, Recorded, ::testing::ValuesIn(recordedFiles()), nameOfRecorded);
INSTANTIATE_TEST_SUITE_P(, Arguments, ::testing::ValuesIn(everyFunction()),
                         [](const auto& test) { return test.param->name; });

}  // namespace vsp::test
