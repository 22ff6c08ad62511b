// vsps info: which library this is and what it offers.
#include <iostream>
#include <map>
#include <memory>

#include "commands.h"
#include "console/json.h"
#include "console/report_format.h"
#include "core/cpu.h"
#include "vspsc.h"

namespace {

struct Export {
    const char *family, *name;
};

constexpr Export kExports[] = {
#define VSPSC_EXPORT(family, name) {#family, #name},
#include "core/exports.def"
#undef VSPSC_EXPORT
};

const char* levelName() {
    switch (vsp::bestLevel(vsp::readCpuRegisters())) {
        case vsp::Level::v4: return "v4 (x86-64-v4, AVX-512)";
        case vsp::Level::v3: return "v3 (x86-64-v3, AVX2)";
        default: return "y8 (x86-64-v2, the baseline)";
    }
}

struct Family {
    std::size_t functions = 0, sizeQueries = 0;

    // What the states of a codec will need is known before the codec is there.
    bool isBuilt() const { return sizeQueries < functions; }
};

// vspsEncodeGetStateSize_G726_16s8u
bool isSizeQuery(const std::string& name) { return name.find("Size_") != std::string::npos; }

std::map<std::string, Family> families() {
    std::map<std::string, Family> all;
    for (const Export& e : kExports) {
        Family& family = all[e.family];
        family.functions++;
        family.sizeQueries += isSizeQuery(e.name);
    }
    return all;
}

std::string targetCpu(const VspLibraryVersion& v) {
    return std::string(v.targetCpu, std::find(v.targetCpu, v.targetCpu + sizeof v.targetCpu, '\0'));
}

void printJson(const VspLibraryVersion& v) {
    Json counts{}, unbuilt = Json::array();
    for (const auto& [name, family] : families()) {
        counts.add(name, family.functions);
        if (!family.isBuilt()) unbuilt.append(name);
    }
    const Json result{{"library",
                       {{"name", v.Name},
                        {"version", v.Version},
                        {"build_date", v.BuildDate},
                        {"major", v.major},
                        {"minor", v.minor},
                        {"major_build", v.majorBuild},
                        {"build", v.build},
                        {"target_cpu", targetCpu(v)}}},
                      {"level", std::string(levelName()).substr(0, 2)},
                      {"exported_functions", std::size(kExports)},
                      {"families", counts},
                      {"families_of_sizes_only", unbuilt}};
    std::cout << result.text();
}

void printText(const VspLibraryVersion& v) {
    std::cout << "library             " << v.Name << '\n'
              << "version             " << v.Version << " (" << v.major << '.' << v.minor << '.' << v.majorBuild << '.'
              << v.build << ")\n"
              << "date                " << v.BuildDate << '\n'
              << "baseline processor  " << targetCpu(v) << '\n'
              << "level in use        " << levelName() << '\n'
              << "exported functions  " << std::size(kExports) << '\n';
    for (const auto& [name, family] : families())
        std::cout << format("  %-18s%zu", name.c_str(), family.functions)
                  << (family.isBuilt() ? "" : "  not built yet: tells the sizes of its states only") << '\n';
}

}  // namespace

void addInfo(CommandLine& vsps) {
    Command command =
        vsps.add("info", "Version of the library, instruction-set level in use, exported functions by family.");
    const auto json = std::make_shared<bool>(false);
    command.flag("--json", *json, "Print a JSON object instead of text.");
    command.run([json] {
        const VspLibraryVersion& version = *vspscGetLibVersion();
        if (*json)
            printJson(version);
        else
            printText(version);
    });
}
