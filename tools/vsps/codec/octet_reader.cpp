#include "codec/octet_reader.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "console/error.h"
#include "console/standard_streams.h"

OctetReader::OctetReader(const std::string& file)
    : name_(inputName(file)), file_(file == kStandardStream ? stdin : std::fopen(file.c_str(), "rbe")) {
    if (!file_) throw FileError(name_, std::strerror(errno));
    struct stat status {};
    if (fstat(fileno(file_.get()), &status) != 0) throw FileError(name_, std::strerror(errno));
    if (S_ISDIR(status.st_mode)) throw FileError(name_, "is a directory");
    if (S_ISREG(status.st_mode)) expected_ = std::uint64_t(status.st_size);
    first_ = read(4);
    count_ = 0;
    if (first_.empty()) throw FileError(name_, "the file is empty");
}

std::string OctetReader::read(std::size_t count) {
    std::string bytes(count, '\0');
    const std::size_t held = first_.copy(bytes.data(), count);
    first_.erase(0, held);
    bytes.resize(held + std::fread(bytes.data() + held, 1, count - held, file_.get()));
    if (std::ferror(file_.get()) != 0) throw FileError(name_, std::strerror(errno));
    count_ += bytes.size();
    return bytes;
}
