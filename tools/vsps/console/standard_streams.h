// Standard input and standard output in place of files.
#pragma once

#include <string>

// In place of the name of an input or output.
inline const std::string kStandardStream = "-";

// As messages and reports name them.
inline std::string inputName(const std::string& file) { return file == kStandardStream ? "standard input" : file; }
inline std::string outputName(const std::string& file) { return file == kStandardStream ? "standard output" : file; }
