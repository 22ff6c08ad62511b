#define BENCH_G728_CHECKED
#include "g728/scalar_g728.cpp"  // NOLINT(bugprone-suspicious-include): once more, with checks
