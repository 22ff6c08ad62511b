// The level control written down plainly, one step after the other, in single precision. Its state has the layout of the
// library's, so that the bytes can be compared.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

#include "vspsc/types.h"

namespace vsp::test {

struct AlcReference {
    float T = 1623.4912f, L = 32767.0f, Nmin = 4.125246f, Nmax = 65.38f, Gmax = 3.80189f, rIdle = 0.02f, rMin = 0.0033333f;
    float hangover = 200.0f, step = 0.01f;
    Vsp16s h = 200, c = 0, k = 0, A = 0;
    float m = 0, E = 0, Pk = 0, S = 0, N = 65.38f, theta = 65.38f, V = 32767.0f, p = 0, P = 0, r = 0.1f;
    float Lambda = 0, lambda = 0.7f, G = 0.03125f, gamma = 0, g = 0, a = 1.0f, b = 0;
    float savedP = 0, savedG = 0.03125f, savedR = 0.1f;

    static float positiveNormal(double x) {
        using Limits = std::numeric_limits<float>;
        return float(std::clamp<double>(x, Limits::min(), Limits::max()));
    }
    void setLevel(float target, float limit) {
        T = positiveNormal(32768.0 / std::pow(10.0, target / 20.0));
        L = positiveNormal(32768.0 / std::pow(10.0, limit / 20.0));
    }
    void setGain(float gain) { Gmax = positiveNormal(std::pow(10.0, gain / 20.0)); }

    void block(const Vsp16s* x, Vsp16s* y) {
        float sum = 0, squares = 0;
        b = 0;
        for (int i = 0; i < 8; i++) {
            const float xi = x[i];
            sum += std::fabs(xi);
            squares += xi * xi;
            b = std::max(b, std::fabs(xi));
        }
        m = sum * 0.125f;
        E = 0.8f * m + 0.2f * E;
        Pk = std::max(E, 0.99f * Pk);

        float noise = N;
        if (N > E)
            noise = 0.9f * N + 0.1f * E;
        else if (2 * N > E)
            noise = 0.99f * N + 0.01f * E;
        noise = std::max(Nmin, noise);
        float t = 0;
        if (c >= 2 || (c == 1 && k >= 501 && r < 0.0025f)) t = Lambda * 1456.7665f;
        N = std::min(Nmax, std::max(t, noise));
        theta = 4 * N;

        V = V > E ? 0.7f * V + 0.3f * E : 0.99f * V + 0.01f * E;
        V = std::max(N, V);

        if (m > theta) k = Vsp16s(std::min(k + 1, 16383));

        if (Pk > theta) {
            h = 0;
            if (A == 0) {
                A = 1;
                c = Vsp16s(std::min(c + 1, 16383));
                lambda = 0.7f;
                savedP = P;
                savedG = G;
                savedR = r;
            }
        } else if (A == 1) {
            h = Vsp16s(std::min(h + 1, 16383));
            if (float(h) == hangover) {
                A = 0;
                if (k < 50) {
                    r = savedR;
                    P = savedP;
                    G = savedG;
                    c = Vsp16s(c - 1);
                }
            }
        }
        if (A == 0) k = 0;

        gamma = step;
        if (c == 1 && k < 10) gamma = 0;
        if (c == 1 && k >= 10 && k < 500 && 3 * V > E) gamma = 0;
        if (A == 1) {
            if (Pk > S)
                S = Pk;
            else if (Pk > theta)
                S = 0.001f * Pk + 0.999f * S;
        } else {
            S = c == 0 ? Pk : Lambda;
        }

        p = squares * 0.125f;
        if (A == 1) {
            if (c == 1 && k < 500 && 0.1f * p > P) r = std::max(0.05f, r);
            if (theta > E) {
                if (k < 500) lambda = 0.7f;
            } else if (m >= theta || k >= 20) {
                r = r - r * r;
                P = P + (p - P) * r;
            }
        } else {
            r = c == 0 ? 0.1f : std::max(rIdle, r);
        }
        r = std::max(rMin, r);

        Lambda = float(std::sqrt(double(P))) * lambda;
        if (k < 500) lambda = std::min(0.89f, lambda + 0.000461f * lambda);

        if (A == 1) {
            float goal = T / Lambda, cap = T / Lambda;
            if (T > Lambda * Gmax) {
                goal = T > Gmax * S ? Gmax : T / S;
                cap = Gmax;
            }
            G = std::min(cap, G + gamma * goal);
        }

        g = std::min(G, g + (G - g) * a);
        if (g * b > L) {
            g = L / b;
            a = 0.001f;
        } else {
            a = std::min(1.0f, 1.1f * a);
        }
        for (int i = 0; i < 8; i++) y[i] = Vsp16s(std::clamp(g * float(x[i]), -32768.0f, 32767.0f));
    }
};
static_assert(sizeof(AlcReference) == 124);

}  // namespace vsp::test
