#include "echo/prototype_window.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace vspv {

namespace {

double sinc(double x) { return x == 0 ? 1 : std::sin(std::numbers::pi * x) / (std::numbers::pi * x); }

// The modified Bessel function of order 0, by its power series, for arguments of the size of Kaiser's parameters.
double besselI0(double x) {
    double term = 1, sum = 1;
    for (int k = 1; term > 1e-17 * sum; k++) {
        term *= x / (2 * k) * (x / (2 * k));
        sum += term;
    }
    return sum;
}

constexpr std::size_t kMaxBlocks = 3, kEquations = 2 * kMaxBlocks - 1;  // transforms in a window
constexpr std::size_t kMaxPlaces = 7;                                   // frames that reach a sample
using Vector = std::array<double, kEquations>;
using Square = std::array<Vector, kEquations>;

// Gauss-Jordan elimination with pivoting; equations that depend on others are left out.
Vector solve(Square a, Vector b) {
    constexpr std::size_t n = kEquations;
    std::array<std::size_t, n> pivotRow;
    pivotRow.fill(n);
    std::size_t row = 0;
    for (std::size_t column = 0; column < n && row < n; column++) {
        std::size_t best = row;
        for (std::size_t i = row; i < n; i++)
            if (std::abs(a[i][column]) > std::abs(a[best][column])) best = i;
        if (std::abs(a[best][column]) < 1e-12) continue;
        std::swap(a[row], a[best]);
        std::swap(b[row], b[best]);
        for (std::size_t i = 0; i < n; i++) {
            const double factor = i == row ? 0 : a[i][column] / a[row][column];
            for (std::size_t j = column; j < n; j++) a[i][j] -= factor * a[row][j];
            b[i] -= factor * b[row];
        }
        pivotRow[column] = row++;
    }
    Vector x{};
    for (std::size_t column = 0; column < n; column++)
        if (pivotRow[column] < n) x[column] = b[pivotRow[column]] / a[pivotRow[column]][column];
    return x;
}

using Prototype = std::array<double, kMaxWindow>;

Window rounded(const Prototype& from) {
    Window w;
    std::transform(from.begin(), from.end(), w.begin(), [](double v) { return static_cast<float>(v); });
    return w;
}

// The cutoff frequency in units of half the distance between bands, and the shape of the Kaiser window.
Prototype lowPass(const BankShape& shape, double cutoff, double beta) {
    Prototype w{};
    double energy = 0;
    for (int i = 0; i < shape.window / 2; i++) {
        const double t = i - (shape.window - 1) / 2.0;
        const double u = 2 * t / (shape.window - 1);
        const double v = sinc(cutoff * t / shape.transform()) * besselI0(beta * std::sqrt(1 - u * u));
        w[static_cast<std::size_t>(i)] = w[static_cast<std::size_t>(shape.window - 1 - i)] = v;
    }
    for (const double v : w) energy += v * v;
    const double scale = std::sqrt(shape.frame / energy);  // about the same gain in analysis and synthesis
    for (double& v : w) v *= scale;
    return w;
}

// Output sample n of the two together is the sum over j of x[n - delay + j * transform] * (sum of w[i + j * transform] *
// s[i]), i running over the positions that n has in the frames that reach it. The sums must be 1 for j = 0 and 0 else. With
// fewer equations than values, s = A^T (A A^T)^-1 b is the shortest solution.
Prototype synthesisPrototype(const BankShape& shape, const Prototype& analysis) {
    Prototype s{};
    const int length = shape.window, blocks = length / shape.transform();
    for (int first = 0; first < shape.frame; first++) {
        std::array<std::array<double, kMaxPlaces>, kEquations> a{};
        std::size_t places = 0;
        for (int i = first; i < length; i += shape.frame, places++)
            for (int j = 1 - blocks; j < blocks; j++) {
                const int k = i + j * shape.transform();
                if (k >= 0 && k < length)
                    a[static_cast<std::size_t>(j + blocks - 1)][places] = analysis[static_cast<std::size_t>(k)];
            }
        Square product{};
        for (std::size_t p = 0; p < kEquations; p++)
            for (std::size_t q = 0; q < kEquations; q++)
                for (std::size_t i = 0; i < places; i++) product[p][q] += a[p][i] * a[q][i];
        Vector b{};
        b[static_cast<std::size_t>(blocks - 1)] = 1;
        const Vector y = solve(product, b);
        for (std::size_t n = 0; n < places; n++)
            for (std::size_t p = 0; p < kEquations; p++)
                s[static_cast<std::size_t>(first) + n * static_cast<std::size_t>(shape.frame)] += a[p][n] * y[p];
    }
    std::reverse(s.begin(), s.begin() + length);
    return s;
}

}  // namespace

BankShape bankShape(int rate) {
    if (rate == 8000) return {.order = 8, .frame = 112, .window = 768};
    return {.order = 9, .frame = 224, .window = kMaxWindow};
}

Window farWindow(const BankShape& shape) { return rounded(lowPass(shape, 1.25, 8)); }

BankWindows bankWindows(const BankShape& shape) {
    const Prototype near = lowPass(shape, 0.85, 7.5);
    return {rounded(near), farWindow(shape), rounded(synthesisPrototype(shape, near))};
}

}  // namespace vspv
