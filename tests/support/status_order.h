// Checks which error a function reports when several of its arguments are bad.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "support/guarded.h"
#include "support/samples.h"
#include "vspsc/types.h"

namespace vsp::test {

// The values that a parameter takes: a good one, and bad ones with the errors that they cause.
template <class P>
struct Choices {
    P good;
    std::vector<std::pair<P, VspStatus>> bad;
};

// Of any pointer type: null is bad, and behind the good one there is nothing, so that a read or a write faults.
struct PointerChoices {
    template <class T>
    operator Choices<T*>() const {
        static const GuardedPages pages(1);
        return {reinterpret_cast<T*>(pages.end()), {{nullptr, vspStsNullPtrErr}}};
    }
};

// Of any arithmetic type, never bad.
struct ValueChoices {
    template <class T>
    operator Choices<T>() const {
        return {T(1), {}};
    }
};

inline const PointerChoices pointer;
inline const ValueChoices value;
inline const Choices<Vsp32s> length{8, {{0, vspStsSizeErr}, {-1, vspStsSizeErr}, {kLowest, vspStsSizeErr}}};
inline const Choices<Vsp32s> scale{1, {{-1, vspStsScaleRangeErr}, {kLowest, vspStsScaleRangeErr}}};

// Calls the function with every combination of good and bad values that has at least one bad one. The error must be the
// first in order of those that the bad values cause, and no memory may be touched.
template <class... P>
void expectStatusOrder(VspStatus (*function)(P...), const std::vector<VspStatus>& order,
                       const Choices<std::type_identity_t<P>>&... choices) {
    const std::tuple<const Choices<P>&...> all(choices...);
    std::tuple<P...> chosen(choices.good...);
    const auto place = [&](VspStatus status) { return std::find(order.begin(), order.end(), status) - order.begin(); };
    const auto choose = [&]<std::size_t I = 0>(const auto& self, std::ptrdiff_t first, std::index_sequence<I>)->void {
        if constexpr (I == sizeof...(P)) {
            if (first < std::ssize(order)) {
                EXPECT_EQ(order[std::size_t(first)], std::apply(function, chosen));
            }
        } else {
            const auto& choice = std::get<I>(all);
            std::get<I>(chosen) = choice.good;
            self(self, first, std::index_sequence<I + 1>());
            for (const auto& [bad, status] : choice.bad) {
                ASSERT_LT(place(status), std::ssize(order));
                std::get<I>(chosen) = bad;
                self(self, std::min(first, place(status)), std::index_sequence<I + 1>());
            }
        }
    };
    choose(choose, std::ssize(order), std::index_sequence<0>());
}

}  // namespace vsp::test
