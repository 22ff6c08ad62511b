// Helpers of the reports.
#pragma once

#include <array>
#include <cmath>
#include <cstdio>
#include <string>

// A line as printf writes it.
template <typename... Values>
std::string format(const char* pattern, Values... values) {
    std::array<char, 512> line;
    std::snprintf(line.data(), line.size(), pattern, values...);
    return line.data();
}

inline std::string decibels(double value, const char* unit) {
    return std::isfinite(value) ? format("%.1f %s", value, unit) : "-";
}
