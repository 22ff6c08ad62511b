// vsps: what the library can do, on recordings. Exit codes: 0 done, 1 a file that cannot be used, 2 bad usage.
#include <csignal>
#include <iostream>
#include <new>

#include "commands.h"
#include "console/error.h"
#include "vspsc.h"

namespace {

constexpr int kBadFile = 1, kBadUsage = 2;

int run(int argc, char** argv) {
    CommandLine vsps(
        "vsps",
        "Speech-coding primitives on recordings: codecs, level control, cancellation of echo and noise, pitch, speech "
        "and tone detection.",
        std::string("vsps ") + vspscGetLibVersion()->Version);
    vsps.footer(
        "Exit codes: 0 done, 1 a file that cannot be used (one line says which and why), 2 bad usage.\n"
        "\"vsps COMMAND --help\" explains a command.");
    addCodecs(vsps);
    addDecode(vsps);
    addDenoise(vsps);
    addEcho(vsps);
    addEncode(vsps);
    addG168(vsps);
    addInfo(vsps);
    addLevel(vsps);
    addPitch(vsps);
    addSimulateEcho(vsps);
    addTone(vsps);
    addVad(vsps);
    if (!vsps.run(argc, argv)) return kBadUsage;
    std::cout.flush();
    if (!std::cout) throw FileError("standard output", "cannot be written");
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    std::signal(SIGPIPE, SIG_IGN);  // a reader that has gone and a file size limit are write errors like any other
    std::signal(SIGXFSZ, SIG_IGN);
    try {
        return run(argc, argv);
    } catch (const ErrorsReported&) {
    } catch (const std::bad_alloc&) {
        std::cerr << "vsps: out of memory\n";
    } catch (const std::exception& e) {
        std::cerr << "vsps: " << e.what() << '\n';
    }
    return kBadFile;
}
