// Runs a fuzzer without the fuzzing engine: over the files that are given, or over a fixed sequence of random inputs.
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <random>
#include <vector>

#ifdef VSPSC_NOT_OPTIMISED
static constexpr int kRuns = 1000;
#else
static constexpr int kRuns = 5000;
#endif

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argc, char** argv) {
    for (int i = 1; i < argc; i++) {
        std::ifstream file(argv[i], std::ios::binary);
        if (!file) return std::fprintf(stderr, "cannot read %s\n", argv[i]), 1;
        const std::vector<char> bytes(std::istreambuf_iterator<char>(file), {});
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }
    if (argc > 1) return 0;
    std::mt19937 random(1);
    for (int run = 0; run < kRuns; run++) {
        std::vector<std::uint8_t> bytes(random() % 600);
        for (std::uint8_t& byte : bytes) byte = std::uint8_t(random());
        LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    }
}
