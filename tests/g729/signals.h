// Signals that are hard on sums: loud, periodic, sparse, recorded.
#pragma once

#include "g729/reference.h"

namespace vsp::test::g729 {

// One argument of every case of a file of recorded calls, moved down by `shift` bits.
inline std::vector<Signal> recorded(const std::string& file, const std::string& argument, int shift = 0) {
    std::vector<Signal> signals;
    for (const VectorCase& c : readVectorCases("g729/" + file + ".vec"))
        for (const RecordedArgument& a : c.arguments)
            if (a.name == argument && a.count > 0) {
                signals.push_back(a.inputs<Vsp16s>());
                for (Vsp16s& s : signals.back()) s = Vsp16s(s >> shift);
            }
    return signals;
}

// Random, constant, alternating, square and sparse signals of n samples from silence to full scale.
inline std::vector<Signal> synthetic(std::size_t n, unsigned seed) {
    std::vector<Signal> signals = {Signal(n, -32768), Signal(n, 0), samples(n, seed)};
    std::mt19937 random(seed);
    for (int amplitude = 1; amplitude <= 32767; amplitude = amplitude * 3 / 2 + 1) {
        Signal noise(n), alternating(n), square(n), pulses(n), halves(n);
        const std::size_t period = 18 + random() % 130;
        for (std::size_t i = 0; i < n; i++) {
            noise[i] = Vsp16s(int(random() % unsigned(2 * amplitude + 1)) - amplitude);
            alternating[i] = Vsp16s(i % 2 == 0 ? amplitude : -amplitude - 1);
            square[i] = Vsp16s(i % period < period / 2 ? amplitude : -amplitude - 1);
            pulses[i] = Vsp16s(i % period == 0 ? -amplitude - 1 : 0);
            halves[i] = Vsp16s((i < n / 2 ? amplitude : -amplitude) - int(random() % 3));
        }
        for (const Signal& s : {noise, alternating, square, pulses, halves}) signals.push_back(s);
    }
    return signals;
}

}  // namespace vsp::test::g729
