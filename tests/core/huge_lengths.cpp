// Every function with a length that may be as large as it likes, with 2^31 - 1 elements in memory that is the same pages
// over and over: nothing outside of the arrays may be touched, and the call must end. Label `slow`; VSPSC_HUGE_SECONDS of
// processor time for each, after which a call that has not ended (the square of the length takes for ever) is left.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>

#include "support/call.h"
#include "support/level_test.h"
#include "support/repeated_memory.h"

namespace vsp::test {

namespace {

struct Long {
    const Function* function;
    std::size_t length;  // the argument
};

std::vector<Long> everyLength() {
    std::vector<Long> all;
    for (const Function& f : Described::all())
        for (std::size_t i = 0; i < f.arguments.size() && f.direct == nullptr; i++) {
            const Argument& a = f.arguments[i];
            const bool isLength = a.kind == Argument::Kind::value && a.error == vspStsSizeErr && a.limits && !a.dependent;
            if (isLength && a.limits({}, 0).high == 0x7FFFFFFF) all.push_back({&f, i});
        }
    return all;
}

class HugeLengths : public ::testing::TestWithParam<Long> {};

// An array that ends at an unmapped page.
class Array {
  public:
    Array(std::size_t before, std::size_t bytes, const std::optional<Bytes>& contents) : pages_(before + bytes) {
        std::mt19937 random(1);
        for (std::size_t i = 0; i < RepeatedPages::kPeriod; i++)
            pages_.begin()[i] = std::byte(random() % 2 == 0 ? random() : 0);
        pointer_ = pages_.end() - bytes;
        if (contents && contents->size() == before + bytes)
            std::memcpy(pointer_ - before, contents->data(), before + bytes);
    }
    void* pointer() const { return pointer_; }

  private:
    RepeatedPages pages_;
    std::byte* pointer_;
};

}  // namespace

TEST_P(HugeLengths, EndWithinTheArrays) {
    const auto& [function, length] = GetParam();
    const char* limit = std::getenv("VSPSC_HUGE_SECONDS");
    const rlim_t seconds = limit != nullptr ? rlim_t(std::strtol(limit, nullptr, 10)) : 100;
    std::mt19937 random(1);
    States states;
    Draw draw([&] { return std::uint32_t(random()); }, states);
    Call call = draw.call(*function, 1, false);
    call.setInteger(length, 0x7FFFFFFF - 0x7FFFFFFF % function->arguments[length].step);
    const Values values = call.values();
    std::vector<std::unique_ptr<Array>> arrays;
    std::vector<Cell> cells = call.cells;
    for (std::size_t i = 0; i < cells.size(); i++) {
        const Argument& a = function->arguments[i];
        if (!a.pointer()) continue;
        ASSERT_FALSE(function->types[i].rows);
        cells[i].pointer = nullptr;
        if (!call.used(i)) continue;
        const std::size_t size = function->types[i].size, before = std::size_t(a.history(values)) * size;
        ASSERT_GT(a.elements(values), 0);
        arrays.push_back(std::make_unique<Array>(before, std::size_t(a.elements(values)) * size, call.arrays[i]));
        cells[i].pointer = arrays.back()->pointer();
    }
    const Api& library = *apiOf("library");
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        const rlimit time = {seconds, seconds};
        setrlimit(RLIMIT_CPU, &time);
        _exit(function->call(library, cells.data()) >= 0 ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    if (WIFSIGNALED(status) && (WTERMSIG(status) == SIGKILL || WTERMSIG(status) == SIGXCPU))
        GTEST_SKIP() << "no end within " << seconds << " seconds";
    ASSERT_TRUE(WIFEXITED(status)) << "signal " << WTERMSIG(status);
    EXPECT_EQ(0, WEXITSTATUS(status)) << "an error";
}

INSTANTIATE_TEST_SUITE_P(, HugeLengths, ::testing::ValuesIn(everyLength()), [](const auto& test) {
    return test.param.function->name + "_" + std::to_string(test.param.length);
});

}  // namespace vsp::test
