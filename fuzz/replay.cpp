// Runs a fuzzer without the fuzzing engine: over the files that are given; over those of a folder, if it is there, and then
// over a fixed sequence of random inputs.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
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

static bool replay(const std::filesystem::path& name) {
    std::ifstream file(name, std::ios::binary);
    if (!file) return std::fprintf(stderr, "cannot read %s\n", name.c_str()), false;
    const std::vector<char> bytes(std::istreambuf_iterator<char>(file), {});
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    return true;
}

int main(int argc, char** argv) {
    bool onlyFiles = argc > 1;
    std::vector<std::filesystem::path> files;
    for (int i = 1; i < argc; i++) {
        const std::filesystem::path name = argv[i];
        if (!std::filesystem::is_regular_file(name)) {  // a folder, perhaps missing
            onlyFiles = false;
            std::error_code missing;
            for (const auto& entry : std::filesystem::directory_iterator(name, missing)) files.push_back(entry.path());
        } else {
            files.push_back(name);
        }
    }
    std::sort(files.begin(), files.end());
    for (const auto& name : files)
        if (!replay(name)) return 1;
    if (onlyFiles) return 0;
    std::mt19937 random(1);
    for (int run = 0; run < kRuns; run++) {
        std::vector<std::uint8_t> bytes(random() % 600);
        for (std::uint8_t& byte : bytes) byte = std::uint8_t(random());
        LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    }
}
