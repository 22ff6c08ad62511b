// The extension of a file name, which says the format.
#pragma once

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <string>

// With its dot, in lower case: ".wav"; empty if there is none.
inline std::string extensionOf(const std::string& file) {
    std::string extension = std::filesystem::path(file).extension();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension;
}
