// Output files that are either complete or not there.
#pragma once

#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

// A file that grows as a temporary beside its final name, where commit() puts it. Without commit(), after an error or on
// an interrupt, the temporary is removed and what was there before stays. Standard output ("-") and a target that is not a
// regular file (a device, a pipe) get what is written as it comes.
class OutputFile {
  public:
    explicit OutputFile(const std::string& file);
    OutputFile(const std::string& file, std::string_view content) : OutputFile(file) { write(content); }
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    void write(std::string_view bytes);
    void commit();

    int descriptor() const { return descriptor_; }
    bool isStream() const { return temporary_.empty(); }
    [[noreturn]] void fail(int reason) const;  // that it cannot be written; reason is a value of errno

  private:
    void openTemporary();
    void removeTemporary();

    std::string file_;
    std::string target_;     // file_ with symbolic links resolved
    std::string temporary_;  // empty if there is none
    int descriptor_ = -1;
};

// Ends with a FileError if an output is one of the inputs or another output. Empty names are left out, "-" is standard
// input among the inputs, which can be there once, and standard output among the outputs. Devices and pipes may be both.
void refuseSameFiles(const std::vector<std::string>& inputs, const std::vector<std::string>& outputs);

// Where the report of a command with these outputs goes: to standard error if one of them goes to standard output.
std::ostream& reportStream(const std::vector<std::string>& outputs);
