// What ends the program with exit code 1.
#pragma once

#include <exception>
#include <stdexcept>
#include <string>

// A file that cannot be used as asked, reported as the one line "vsps: FILE: reason".
class FileError : public std::runtime_error {
  public:
    FileError(const std::string& file, const std::string& reason) : std::runtime_error(file + ": " + reason) {}
};

// Files that cannot be used have been reported, the others are done.
class ErrorsReported : public std::exception {};
