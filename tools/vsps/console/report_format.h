// Helpers of the reports.
#pragma once

#include <array>
#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>
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

// With three decimals; null for what is not finite.
inline nlohmann::ordered_json number(double value) {
    return std::isfinite(value) ? nlohmann::ordered_json(std::round(value * 1000) / 1000) : nlohmann::ordered_json(nullptr);
}

inline nlohmann::ordered_json nameOrNull(const std::string& file) {
    return file.empty() ? nlohmann::ordered_json(nullptr) : nlohmann::ordered_json(file);
}

// How JSON is printed; bytes in file names that are not UTF-8 are replaced.
inline std::string toString(const nlohmann::ordered_json& json) {
    return json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + '\n';
}
