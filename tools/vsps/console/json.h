// JSON to print. Only json.cpp includes the library that does it.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <memory>
#include <string>

class Json {
  public:
    struct Member;

    Json(std::nullptr_t);
    Json(bool value);
    Json(int value);
    Json(unsigned value);
    Json(std::size_t value);
    Json(double value);
    Json(const char* text);
    Json(const std::string& text);
    Json(std::initializer_list<Member> members);  // an object: {{"name", value}, ...}, in this order
    static Json array();

    Json(const Json& other);
    Json(Json&& other) noexcept;
    Json& operator=(Json other) noexcept;
    ~Json();

    void append(const Json& element);                       // to an array
    void add(const std::string& name, const Json& member);  // to an object

    // As it is printed; bytes that are not UTF-8, as in file names, are replaced.
    std::string text() const;

  private:
    struct Value;
    std::unique_ptr<Value> value_;
};

struct Json::Member {
    std::string name;
    Json value;
};

// With three decimals; null for what is not finite.
Json number(double value);
Json nameOrNull(const std::string& file);
