// Runs a function over every case of a file of recorded calls.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <set>
#include <tuple>
#include <utility>

#include "support/guarded.h"
#include "support/upper_halves.h"
#include "support/vector_case.h"

namespace vsp::test {

// A parameter of the function under test: a value, or a pointer into a guarded buffer.
template <class P>
class Parameter {
  public:
    Parameter(const RecordedArgument& a, Guard)
        : value_(a.type == 'f'   ? P(a.inputs<Vsp32f>().at(0))
                 : a.type == 'i' ? P(a.inputs<Vsp32s>().at(0))
                                 : P(a.inputs<Vsp16s>().at(0))) {}
    P pass() const { return value_; }
    void check(const VectorCase&, const RecordedArgument&, bool) const {}

  private:
    P value_;
};

template <class T>
class Parameter<T*> {
    using Element = std::remove_const_t<T>;
    static constexpr bool kFloat = std::is_same_v<Element, Vsp32f>;
    static constexpr char kType = kFloat ? 'f' : sizeof(T) == 2 ? 'h' : 'i';

  public:
    Parameter(const RecordedArgument& a, Guard guard) : offset_(a.offset) {
        EXPECT_EQ(kType, a.type) << a.name;
        EXPECT_NE('v', a.kind) << a.name;
        if (a.count < 0) return;
        buffer_ = std::make_unique<Guarded<Element>>(std::size_t(a.count), guard);
        const auto input = a.inputs<Element>();
        std::copy(input.begin(), input.end(), buffer_->begin());
        before_ = buffer_->values();
    }

    T* pass() const { return buffer_ ? buffer_->data() + offset_ : nullptr; }

    void check(const VectorCase& c, const RecordedArgument& a, bool compareOutputs) const {
        if (!buffer_) return;
        EXPECT_FALSE(buffer_->changedOutside()) << a.name;
        const std::size_t bytes = before_.size() * sizeof(T);
        if (a.kind == 'i' || c.status < 0) {
            EXPECT_TRUE(bytes == 0 || std::memcmp(before_.data(), buffer_->data(), bytes) == 0) << a.name << " changed";
        } else if (compareOutputs) {
            const auto expected = a.outputs<Element>();
            for (std::size_t i = 0; i < expected.size(); i++) {
                const bool close = kFloat ? std::fabs(double(expected[i]) - double((*buffer_)[i])) <= double(a.tolerance)
                                          : expected[i] == (*buffer_)[i];
                if (!close) {
                    ADD_FAILURE() << a.name << "[" << i << "] is " << (*buffer_)[i] << ", expected " << expected[i];
                    break;
                }
            }
        }
    }

  private:
    std::unique_ptr<Guarded<Element>> buffer_;
    std::vector<Element> before_;
    Vsp32s offset_;
};

// Calls the function with the arguments of every case, each array once ending and once beginning at an unmapped page.
// Inputs must stay unchanged, outputs too where an error is expected. Advisory cases whose labels are listed keep to the
// status and the inputs.
template <class... P>
void runVectors(const std::string& file, VspStatus (*function)(P...), const std::set<std::string>& otherOutputs = {}) {
    int number = 0;
    for (const VectorCase& c : readVectorCases(file)) {
        SCOPED_TRACE(file + ", case " + std::to_string(number++) + ": " + c.label + (c.advisory ? " (advisory)" : ""));
        ASSERT_EQ(sizeof...(P), c.arguments.size());
        const bool compareOutputs = !(c.advisory && otherOutputs.contains(c.label));
        for (const Guard guard : {Guard::end, Guard::begin}) [&]<std::size_t... I>(std::index_sequence<I...>) {
                const std::tuple<Parameter<P>...> parameters(Parameter<P>(c.arguments[I], guard)...);
                const VspStatus status = function(std::get<I>(parameters).pass()...);
                EXPECT_FALSE(upperHalvesInUse());
                EXPECT_EQ(c.status, status);
                (std::get<I>(parameters).check(c, c.arguments[I], compareOutputs), ...);
            }
        (std::index_sequence_for<P...>());
    }
    ASSERT_GT(number, 0);
}

}  // namespace vsp::test
