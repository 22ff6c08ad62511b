// A call of a described function: its arguments, drawn or recorded, and what becomes of them.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "support/described.h"
#include "support/guarded.h"

namespace vsp::test {

using Bytes = std::vector<std::byte>;

// Values and arrays by their place in the argument list.
struct Call {
    explicit Call(const Function& f);

    const Function* function;
    std::vector<Cell> cells;                   // of values
    std::vector<std::optional<Bytes>> arrays;  // with the history; none: a null pointer
    std::vector<int> same;                     // the argument that the pointer is the same as, or -1

    Values values() const;
    bool used(std::size_t argument) const;
    std::size_t elements(std::size_t argument) const;  // of an array, with its history; 0 where it is not used
    std::size_t history(std::size_t argument) const;   // of these, before the pointer
    std::size_t rows(std::size_t argument) const;      // that the elements are in, where the pointer is one to pointers
    double number(std::size_t argument) const;         // a value
    bool inPlace(std::size_t argument) const { return same[argument] >= 0; }
    void setInteger(std::size_t argument, Vsp64s x) { cells[argument].integer = x; }

    // The error that the function must report, or vspStsNoErr.
    VspStatus expectedError() const;
    bool mayGive(VspStatus error) const;  // by what the state has
};

struct Result {
    VspStatus status;
    std::vector<Bytes> arrays;  // afterwards
    bool upperHalves;           // of registers are in use

    bool operator==(const Result& other) const { return status == other.status && arrays == other.arrays; }
};

// Calls the function with every array at an unmapped page; what lies outside of the arrays must stay as it is, or the
// program ends. Arrays that the function must not touch, because an argument is bad, are not mapped at all if they have no
// contents to check. gap: elements between the arrays and the page.
Result run(const Api& api, const Call& call, Guard guard, std::size_t gap = 0);

// What is wrong with the result whatever the arguments: changed inputs, anything changed after an error, the wrong error.
std::string problemOf(const Call& call, const Result& result);

// The first element that is another one, or nothing.
std::string differenceBetween(const Call& call, const Result& expected, const Result& result);

// Where the arguments of a call come from: random numbers, or the bytes of a fuzzer.
using Random = std::function<std::uint32_t()>;

// The states that one call hands to the next.
using States = std::map<std::size_t, Bytes>;

class Draw {
  public:
    Draw(Random random, States& states) : random_(std::move(random)), states_(states) {}

    // Any arguments. Where the values of all arguments with few of them are few together, number counts through them.
    // With faults some are illegal.
    Call call(const Function& function, std::size_t number, bool faults);
    void keep(const Call& call, const Result& result);  // its state

    // The calls that number tells apart, 0 if these are too many.
    static std::size_t combinations(const Function& function);

  private:
    Vsp64s integer(const Function& f, std::size_t argument, Limits limits);
    double real(const Argument& a);
    Bytes contents(const Call& call, std::size_t argument, bool faults);
    bool oneIn(unsigned n) { return random_() % n == n - 1; }

    Random random_;
    States& states_;
};

// Changes of one legal call that make an argument bad.
struct Fault {
    std::size_t argument;
    std::function<void(Call&)> apply;
};
std::vector<Fault> faultsOf(const Call& legal);

// Numbers in an array of a type: h, i, u, f, d, B; s for bytes.
Vsp64s integerAt(const Bytes& bytes, char type, std::size_t i);
double numberAt(const Bytes& bytes, char type, std::size_t i);
void setNumberAt(Bytes& bytes, char type, std::size_t i, double x);
std::size_t widthOf(char type);
bool hasIntegers(char type);

}  // namespace vsp::test
