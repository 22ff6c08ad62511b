#include "console/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <optional>
#include <set>
#include <utility>

#include "console/error.h"
#include "console/standard_streams.h"

namespace {

// The temporaries that an interrupt has to remove.
std::array<std::atomic<const char*>, 4096> g_temporaries;

extern "C" void removeAllAndDie(int number) {
    for (const auto& temporary : g_temporaries)
        if (const char* name = temporary.load()) unlink(name);
    std::signal(number, SIG_DFL);
    std::raise(number);
}

void swapTemporary(const char* from, const char* to) {
    for (auto& temporary : g_temporaries)
        if (const char* expected = from; temporary.compare_exchange_strong(expected, to)) return;
}

void watchInterrupts() {
    for (const int number : {SIGINT, SIGTERM, SIGHUP})
        if (std::signal(number, removeAllAndDie) == SIG_IGN) std::signal(number, SIG_IGN);
}

// What tells one file from another, if it is there.
std::optional<struct stat> statusOf(const std::string& file, int standardStream) {
    struct stat status {};
    const int result = file == kStandardStream ? fstat(standardStream, &status) : stat(file.c_str(), &status);
    return result == 0 ? std::optional(status) : std::nullopt;
}

// The same for all names of a file, also by links, whether it is there or not.
std::string identityOf(const std::string& file, int standardStream) {
    if (const auto status = statusOf(file, standardStream))
        return std::to_string(status->st_dev) + ':' + std::to_string(status->st_ino);
    std::error_code error;
    const std::string path = std::filesystem::weakly_canonical(file, error);
    return error ? file : path;
}

bool isDeviceOrPipe(const std::string& file) {
    const auto status = statusOf(file, STDOUT_FILENO);
    return status && !S_ISREG(status->st_mode) && !S_ISDIR(status->st_mode);
}

bool isStandardOutput(const std::string& file) {
    if (file == kStandardStream) return true;
    struct stat status {
    }, standard{};
    return stat(file.c_str(), &status) == 0 && fstat(STDOUT_FILENO, &standard) == 0 && !S_ISCHR(status.st_mode) &&
           status.st_dev == standard.st_dev && status.st_ino == standard.st_ino;
}

}  // namespace

OutputFile::OutputFile(const std::string& file) : file_(file) {
    if (file == kStandardStream) {
        descriptor_ = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0);
        if (descriptor_ < 0) fail(errno);
        return;
    }
    std::error_code error;
    target_ = std::filesystem::weakly_canonical(file_, error);
    const auto status = statusOf(file_, -1);
    if (status && S_ISDIR(status->st_mode)) throw FileError(file_, "is a directory");
    if (status && access(file_.c_str(), W_OK) != 0) fail(errno);
    if (status && !S_ISREG(status->st_mode)) {
        descriptor_ = open(file_.c_str(), O_WRONLY | O_CLOEXEC);
        if (descriptor_ < 0) fail(errno);
        return;
    }
    openTemporary();
    if (status) fchmod(descriptor_, status->st_mode & 07777);
}

OutputFile::~OutputFile() {
    if (descriptor_ >= 0) close(descriptor_);
    removeTemporary();
}

void OutputFile::openTemporary() {
    watchInterrupts();
    temporary_ = target_ + ".part" + std::to_string(getpid());
    swapTemporary(nullptr, temporary_.c_str());
    descriptor_ = open(temporary_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor_ >= 0) return;
    const int reason = errno;
    swapTemporary(temporary_.c_str(), nullptr);
    temporary_.clear();
    fail(reason);
}

void OutputFile::removeTemporary() {
    if (temporary_.empty()) return;
    unlink(temporary_.c_str());
    swapTemporary(temporary_.c_str(), nullptr);
    temporary_.clear();
}

void OutputFile::write(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(descriptor_, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) fail(errno);
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
}

void OutputFile::commit() {
    const int descriptor = std::exchange(descriptor_, -1);
    if (close(descriptor) != 0) fail(errno);
    if (temporary_.empty()) return;
    if (rename(temporary_.c_str(), target_.c_str()) != 0) fail(errno);
    swapTemporary(temporary_.c_str(), nullptr);
    temporary_.clear();
}

void OutputFile::fail(int reason) const {
    throw FileError(outputName(file_), std::string("cannot be written: ") + std::strerror(reason));
}

void refuseSameFiles(const std::vector<std::string>& inputs, const std::vector<std::string>& outputs) {
    if (std::count(inputs.begin(), inputs.end(), kStandardStream) > 1)
        throw FileError(inputName(kStandardStream), "can be only one of the inputs");
    if (std::count(outputs.begin(), outputs.end(), kStandardStream) > 1)
        throw FileError(outputName(kStandardStream), "is two outputs at once");
    std::set<std::string> read, written;
    for (const std::string& in : inputs)
        if (!in.empty()) read.insert(identityOf(in, STDIN_FILENO));
    for (const std::string& out : outputs) {
        if (out.empty() || isDeviceOrPipe(out)) continue;
        const std::string identity = identityOf(out, STDOUT_FILENO);
        if (read.contains(identity)) throw FileError(outputName(out), "is an input and an output at once");
        if (!written.insert(identity).second) throw FileError(outputName(out), "is two outputs at once");
    }
}

std::ostream& reportStream(const std::vector<std::string>& outputs) {
    return std::any_of(outputs.begin(), outputs.end(), isStandardOutput) ? std::cerr : std::cout;
}
