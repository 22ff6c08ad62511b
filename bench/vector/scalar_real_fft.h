#pragma once

namespace bench {

// Spectrum of n = 2^order real values, radix 2, with the n/2 factors exp(-j 2 pi k / n): re and im of bins 0 to n/2.
// work has n values.
void scalarRealFft(const float* src, float* dst, int order, const float* factors, float* work);

}  // namespace bench
