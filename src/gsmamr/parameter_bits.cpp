#include "gsmamr/parameter_bits.h"

namespace vsp {

constexpr ParameterBits parameterBits[8] = {
    {17, {8, 8, 7, 8, 7, 2, 8, 4, 7, 2, 4, 7, 2, 8, 4, 7, 2}},
    {19, {8, 8, 7, 8, 7, 2, 6, 4, 7, 2, 6, 4, 7, 2, 6, 4, 7, 2, 6}},
    {19, {8, 9, 9, 8, 9, 2, 6, 4, 9, 2, 6, 8, 9, 2, 6, 4, 9, 2, 6}},
    {19, {8, 9, 9, 8, 11, 3, 7, 4, 11, 3, 7, 8, 11, 3, 7, 4, 11, 3, 7}},
    {19, {8, 9, 9, 8, 13, 4, 7, 5, 13, 4, 7, 8, 13, 4, 7, 5, 13, 4, 7}},
    {23, {9, 9, 9, 8, 13, 4, 4, 5, 6, 13, 4, 4, 5, 8, 13, 4, 4, 5, 6, 13, 4, 4, 5}},
    {39, {8, 9, 9, 8, 1, 1, 1,  1,  10, 10, 7, 7, 5, 1, 1, 1,  1,  10, 10, 7,
          7, 8, 1, 1, 1, 1, 10, 10, 7,  7,  5, 1, 1, 1, 1, 10, 10, 7,  7}},
    {57, {7, 8, 9, 8, 6, 9, 4, 4, 4, 4, 4, 4, 3, 3, 3, 3, 3, 5, 6, 4, 4, 4, 4, 4, 4, 3, 3, 3, 3,
          3, 5, 9, 4, 4, 4, 4, 4, 4, 3, 3, 3, 3, 3, 5, 6, 4, 4, 4, 4, 4, 4, 3, 3, 3, 3, 3, 5}},
};

static consteval int total(const ParameterBits& parameters) {
    int sum = 0;
    for (int i = 0; i < parameters.count; i++) sum += parameters.bits[i];
    return sum;
}
static_assert(total(parameterBits[0]) == 95 && total(parameterBits[1]) == 103 && total(parameterBits[2]) == 118);
static_assert(total(parameterBits[3]) == 134 && total(parameterBits[4]) == 148 && total(parameterBits[5]) == 159);
static_assert(total(parameterBits[6]) == 204 && total(parameterBits[7]) == 244);

}  // namespace vsp
