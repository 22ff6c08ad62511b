#include "plot/gnuplot.h"

#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <system_error>

#include "audio/extension.h"
#include "console/error.h"
#include "console/standard_streams.h"

namespace {

// A file in memory that a child process reads or writes.
class MemoryFile {
  public:
    explicit MemoryFile(const char* name, const std::string& content = {}) : descriptor_(memfd_create(name, MFD_CLOEXEC)) {
        if (descriptor_ < 0) throw std::system_error(errno, std::generic_category(), name);
        for (std::size_t done = 0; done < content.size();) {
            const ssize_t count = write(descriptor_, content.data() + done, content.size() - done);
            if (count < 0) throw std::system_error(errno, std::generic_category(), name);
            done += static_cast<std::size_t>(count);
        }
        lseek(descriptor_, 0, SEEK_SET);
    }
    ~MemoryFile() { close(descriptor_); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    int descriptor() const { return descriptor_; }

    std::string content() const {
        std::string all;
        std::array<char, 1 << 16> part;
        lseek(descriptor_, 0, SEEK_SET);
        for (ssize_t n; (n = read(descriptor_, part.data(), part.size())) > 0;) all.append(part.data(), std::size_t(n));
        return all;
    }

  private:
    int descriptor_;
};

struct Outcome {
    bool success;
    std::string output, firstError;
};

Outcome runGnuplot(const std::string& commands, const std::string& file) {
    const MemoryFile in("commands", commands), out("picture"), errors("errors");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, in.descriptor(), STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, out.descriptor(), STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errors.descriptor(), STDERR_FILENO);
    char name[] = "gnuplot", defaults[] = "-d";  // no settings of the user
    char* arguments[] = {name, defaults, nullptr};
    pid_t pid = 0;
    const int error = posix_spawnp(&pid, name, &actions, nullptr, arguments, environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error == ENOENT) throw FileError(file, "a plot needs gnuplot, which is not installed (package gnuplot-nox)");
    if (error != 0) throw FileError(file, std::string("gnuplot: ") + std::strerror(error));
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    std::string message = errors.content();
    message.erase(0, message.find_first_not_of(" \n^"));
    return {WIFEXITED(status) && WEXITSTATUS(status) == 0, out.content(), message.substr(0, message.find('\n'))};
}

std::string terminal(const std::string& kind, int width, int height) {
    const std::string pixels = std::to_string(width) + "," + std::to_string(height);
    if (kind == ".png") return "set terminal pngcairo size " + pixels + " font 'sans,11'\n";
    if (kind == ".svg") return "set terminal svg size " + pixels + " font 'sans,14' background 'white'\n";
    return "set terminal pdfcairo size " + std::to_string(width / 120.0) + "in," + std::to_string(height / 120.0) +
           "in font 'sans,10'\n";
}

}  // namespace

Gnuplot::Gnuplot(std::string file) : file_(std::move(file)), kind_(file_ == kStandardStream ? ".png" : extensionOf(file_)) {
    if (kind_ != ".png" && kind_ != ".svg" && kind_ != ".pdf")
        throw FileError(file_, "unknown extension for a plot; use one of .png .svg .pdf");
    if (!runGnuplot("", file_).success) throw FileError(file_, "gnuplot does not run");
}

std::string Gnuplot::draw(const std::string& commands, int width, int height) const {
    Outcome outcome = runGnuplot(terminal(kind_, width, height) + commands, file_);
    if (!outcome.success || outcome.output.empty()) throw FileError(file_, "gnuplot failed: " + outcome.firstError);
    return std::move(outcome.output);
}

std::string quoted(const std::string& text) {
    std::string result = "'";
    for (const char c : text) {
        if (c == '\'') result += '\'';
        result += static_cast<unsigned char>(c) < ' ' ? ' ' : c;
    }
    return result + "'";
}

std::string dataBlock(const std::string& name, const std::string& data) {
    return '$' + name + " << EOD\n" + data + "EOD\n";
}

const char* const kPlotStyle =
    "set datafile missing 'nan'\nset grid xtics ytics lt 1 lw 0.6 lc rgb '#dddddd'\nset border 3 lc rgb '#555555'\n"
    "set tics nomirror out\nset key above right horizontal\nset lmargin 9\nset rmargin 3\n";
