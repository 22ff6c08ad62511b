// Output files that are either complete or not there.
#pragma once

#include <string>
#include <string_view>

// A file whose whole content goes to a temporary beside it, which commit() puts in its place. Without commit(), after an
// error or on an interrupt, the temporary is removed and what was there before stays. A target that is not a regular file
// (a device, a pipe) gets the content in commit().
class OutputFile {
  public:
    OutputFile(std::string file, std::string content);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    void commit();

  private:
    void write(int descriptor) const;
    void writeTemporary();
    void writeInPlace() const;
    [[noreturn]] void fail() const;  // with the reason in errno

    std::string file_, content_;
    std::string target_;     // file_ with symbolic links resolved
    std::string temporary_;  // empty if there is none
};

// True if both names lead to one file, which need not exist.
bool sameFile(const std::string& a, const std::string& b);
