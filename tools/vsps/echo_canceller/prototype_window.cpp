#include "echo_canceller/prototype_window.h"

#include <cmath>
#include <numbers>
#include <utility>

namespace {

double sinc(double x) { return x == 0 ? 1 : std::sin(std::numbers::pi * x) / (std::numbers::pi * x); }

using Matrix = std::vector<std::vector<double>>;

// Gauss-Jordan elimination with pivoting; equations that depend on others are left out.
std::vector<double> solve(Matrix a, std::vector<double> b) {
    const std::size_t n = b.size();
    std::vector<std::size_t> pivotRow(n, n);
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
    std::vector<double> x(n);
    for (std::size_t column = 0; column < n; column++)
        if (pivotRow[column] < n) x[column] = b[pivotRow[column]] / a[pivotRow[column]][column];
    return x;
}

// The cutoff frequency in units of half the distance between bands, and the shape of the Kaiser window.
std::vector<double> lowPass(const BankShape& shape, double cutoff, double beta) {
    std::vector<double> w(static_cast<std::size_t>(shape.window));
    double energy = 0;
    for (std::size_t i = 0; i < w.size(); i++) {
        const double t = static_cast<double>(i) - (shape.window - 1) / 2.0;
        const double u = 2 * t / (shape.window - 1);
        w[i] = sinc(cutoff * t / shape.transform()) * std::cyl_bessel_i(0.0, beta * std::sqrt(1 - u * u));
        energy += w[i] * w[i];
    }
    const double scale = std::sqrt(shape.frame / energy);  // about the same gain in analysis and synthesis
    for (double& v : w) v *= scale;
    return w;
}

}  // namespace

BankShape bankShape(int rate) {
    if (rate == 8000) return {.order = 8, .frame = 112, .window = 768};
    return {.order = 9, .frame = 224, .window = 1536};
}

std::vector<double> nearWindow(const BankShape& shape) { return lowPass(shape, 0.85, 7.5); }

std::vector<double> farWindow(const BankShape& shape) { return lowPass(shape, 1.25, 8); }

// Output sample n of the two together is the sum over j of x[n - delay + j * transform] * (sum of w[i + j * transform] *
// s[i]), i running over the positions that n has in the frames that reach it. The sums must be 1 for j = 0 and 0 else. With
// fewer equations than values, s = A^T (A A^T)^-1 b is the shortest solution.
std::vector<double> synthesisWindow(const BankShape& shape, const std::vector<double>& analysis) {
    const int length = shape.window, blocks = length / shape.transform();
    std::vector<double> s(analysis.size());
    for (int first = 0; first < shape.frame; first++) {
        Matrix a;
        for (int j = 1 - blocks; j < blocks; j++) {
            a.emplace_back();
            for (int i = first; i < length; i += shape.frame) {
                const int k = i + j * shape.transform();
                a.back().push_back(k >= 0 && k < length ? analysis[static_cast<std::size_t>(k)] : 0);
            }
        }
        Matrix product(a.size(), std::vector<double>(a.size()));
        for (std::size_t p = 0; p < a.size(); p++)
            for (std::size_t q = 0; q < a.size(); q++)
                for (std::size_t i = 0; i < a[p].size(); i++) product[p][q] += a[p][i] * a[q][i];
        std::vector<double> b(a.size());
        b[static_cast<std::size_t>(blocks - 1)] = 1;
        const std::vector<double> y = solve(product, b);
        for (int i = first, n = 0; i < length; i += shape.frame, n++)
            for (std::size_t p = 0; p < a.size(); p++)
                s[static_cast<std::size_t>(i)] += a[p][static_cast<std::size_t>(n)] * y[p];
    }
    return s;
}
