// Conformance data: the two binary layouts that tests/README.md describes.
#pragma once

#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

#include "vspsc/types.h"

namespace vsp::test {

template <class T>
std::vector<T> elementsOf(const std::vector<std::byte>& bytes) {
    std::vector<T> elements(bytes.size() / sizeof(T));
    if (!elements.empty()) std::memcpy(elements.data(), bytes.data(), elements.size() * sizeof(T));
    return elements;
}

// One argument of a call. Type: h Vsp16s, i Vsp32s, f Vsp32f. Kind: v value, i input, o output, b both.
struct RecordedArgument {
    std::string name;
    char type, kind;
    Vsp32s count;   // elements, -1 for a null pointer
    Vsp32s offset;  // element that the pointer points at
    Vsp32f tolerance;
    std::vector<std::byte> input, expected;

    template <class T>
    std::vector<T> inputs() const {
        return elementsOf<T>(input);
    }
    template <class T>
    std::vector<T> outputs() const {
        return elementsOf<T>(expected);
    }
};

// One call of a function: arguments in the order of its argument list.
struct VectorCase {
    VspStatus status;
    bool advisory;  // the outputs are one of several that can be defended
    std::string label;
    std::vector<RecordedArgument> arguments;
};

// One array of a case whose meaning is given by its place.
struct Item {
    char type;  // h, i, f, d for Vsp64f, or B for Vsp8u
    std::vector<std::byte> bytes;

    template <class T>
    std::vector<T> values() const {
        return elementsOf<T>(bytes);
    }
};

// Files are named as for testData. A missing or truncated one throws.
std::vector<VectorCase> readVectorCases(const std::string& file);
std::vector<std::vector<Item>> readItemCases(const std::string& file);

}  // namespace vsp::test
