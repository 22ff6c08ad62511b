// Octets of coded speech from a file, a pipe or standard input.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

// Whatever prevents reading is a FileError; so is an empty file.
class OctetReader {
  public:
    explicit OctetReader(const std::string& file);

    const std::string& name() const { return name_; }     // for messages and reports
    std::uint64_t expected() const { return expected_; }  // octets; 0 if that is not known
    std::uint64_t count() const { return count_; }        // given out so far
    const std::string& first() const { return first_; }   // four octets, before any are given out

    // The next octets, or fewer at the end.
    std::string read(std::size_t count);

  private:
    struct Closer {
        void operator()(std::FILE* f) const {
            if (f != stdin) std::fclose(f);
        }
    };

    std::string name_;
    std::unique_ptr<std::FILE, Closer> file_;
    std::uint64_t expected_ = 0, count_ = 0;
    std::string first_;  // read to look at, not yet given out
};
