#include "console/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>

#include "console/error.h"

namespace {

// The temporaries that an interrupt has to remove.
std::array<std::atomic<const char*>, 4> g_temporaries;

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

}  // namespace

OutputFile::OutputFile(std::string file, std::string content) : file_(std::move(file)), content_(std::move(content)) {
    std::error_code error;
    target_ = std::filesystem::weakly_canonical(file_, error);
    struct stat status {};
    const bool exists = stat(file_.c_str(), &status) == 0;
    if (exists && S_ISDIR(status.st_mode)) throw FileError(file_, "is a directory");
    if (exists && access(file_.c_str(), W_OK) != 0) fail();
    if (exists && !S_ISREG(status.st_mode)) return;
    writeTemporary();
    if (exists) chmod(temporary_.c_str(), status.st_mode & 07777);
}

OutputFile::~OutputFile() {
    if (temporary_.empty()) return;
    unlink(temporary_.c_str());
    swapTemporary(temporary_.c_str(), nullptr);
}

void OutputFile::commit() {
    if (temporary_.empty()) return writeInPlace();
    if (rename(temporary_.c_str(), target_.c_str()) != 0) fail();
    swapTemporary(temporary_.c_str(), nullptr);
    temporary_.clear();
}

void OutputFile::writeTemporary() {
    watchInterrupts();
    temporary_ = target_ + ".part" + std::to_string(getpid());
    const int descriptor = open(temporary_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor < 0) {
        temporary_.clear();
        fail();
    }
    swapTemporary(nullptr, temporary_.c_str());
    try {
        write(descriptor);
    } catch (...) {
        unlink(temporary_.c_str());
        swapTemporary(temporary_.c_str(), nullptr);
        throw;
    }
}

void OutputFile::writeInPlace() const {
    const int descriptor = open(file_.c_str(), O_WRONLY | O_CLOEXEC);
    if (descriptor < 0) fail();
    write(descriptor);
}

// Writes the content and closes the descriptor.
void OutputFile::write(int descriptor) const {
    std::size_t done = 0;
    while (done < content_.size()) {
        const ssize_t count = ::write(descriptor, content_.data() + done, content_.size() - done);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) {
            const int reason = errno;
            close(descriptor);
            errno = reason;
            fail();
        }
        done += static_cast<std::size_t>(count);
    }
    if (close(descriptor) != 0) fail();
}

void OutputFile::fail() const { throw FileError(file_, std::string("cannot be written: ") + std::strerror(errno)); }

bool sameFile(const std::string& a, const std::string& b) {
    std::error_code error;
    return std::filesystem::weakly_canonical(a, error) == std::filesystem::weakly_canonical(b, error);
}
