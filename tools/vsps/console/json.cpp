#include "console/json.h"

#include <cmath>
#include <nlohmann/json.hpp>

struct Json::Value {
    nlohmann::ordered_json json;
};

Json::Json(std::nullptr_t) : value_(new Value{nullptr}) {}
Json::Json(bool value) : value_(new Value{value}) {}
Json::Json(int value) : value_(new Value{value}) {}
Json::Json(unsigned value) : value_(new Value{value}) {}
Json::Json(std::size_t value) : value_(new Value{value}) {}
Json::Json(double value) : value_(new Value{value}) {}
Json::Json(const char* text) : value_(new Value{text}) {}
Json::Json(const std::string& text) : value_(new Value{text}) {}

Json::Json(std::initializer_list<Member> members) : value_(new Value{nlohmann::ordered_json::object()}) {
    for (const Member& m : members) add(m.name, m.value);
}

Json Json::array() {
    Json list(nullptr);
    list.value_->json = nlohmann::ordered_json::array();
    return list;
}

Json::Json(const Json& other) : value_(new Value(*other.value_)) {}
Json::Json(Json&& other) noexcept = default;
Json& Json::operator=(Json other) noexcept {
    value_ = std::move(other.value_);
    return *this;
}
Json::~Json() = default;

void Json::append(const Json& element) { value_->json.push_back(element.value_->json); }

void Json::add(const std::string& name, const Json& member) { value_->json[name] = member.value_->json; }

std::string Json::text() const {
    return value_->json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + '\n';
}

Json number(double value) { return std::isfinite(value) ? Json(std::round(value * 1000) / 1000) : Json(nullptr); }

Json nameOrNull(const std::string& file) { return file.empty() ? Json(nullptr) : Json(file); }
