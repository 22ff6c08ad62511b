// Line spectral pairs of the silence descriptor (G.729 B.4.2).
#include "arithmetic/standard_ops.h"
#include "g729/comfort_noise.h"
#include "g729/exports.h"
#include "g729/lsp_predictor.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kCandidates = 4;

struct Candidate {
    int mode, entry;
};

// Reads the entries of the second stage for both halves.
Vsp16s secondStage(int entry, int j) { return lspcb2[PtrTab_2[j < kLspHalf ? 0 : 1][entry]][j]; }

void reconstruct(int mode, int entry1, int entry2, Vsp16s* previous, Vsp16s* lsp) {
    Vsp16s coded[kLspOrder], lsf[kLspOrder];
    for (int j = 0; j < kLspOrder; j++) coded[j] = Add_16s(lspcb1[PtrTab_1[entry1]][j], secondStage(entry2, j));
    ownLspSpread(coded, 1, kLspOrder - 1, kGap1);
    ownLspCompose(noisePredictors[mode], coded, previous, lsf);
    ownLspRemember(coded, previous);
    ownLspStabilise(lsf);
    vspsLSFToLSP_G729_16s(lsf, lsp);
}

// Keeps the frequencies twice as far apart as those of speech.
void separate(Vsp16s* lsf) {
    constexpr Vsp16s kLowest = 40, kDistance = 642, kHighest = 25681;
    if (lsf[0] < kLowest) lsf[0] = kLowest;
    for (int j = 1; j < kLspOrder; j++)
        if (lsf[j] - lsf[j - 1] < kDistance) lsf[j] = Add_16s(lsf[j - 1], kDistance);
    Vsp16s& last = lsf[kLspOrder - 1];
    if (last > kHighest) last = kHighest;
    if (last < lsf[kLspOrder - 2]) lsf[kLspOrder - 2] = Sub_16s(last, kDistance / 2);
}

// The entries of the first stage, of either predictor, with the smallest errors; of equal ones the first.
void findCandidates(const Vsp16s (&targets)[2][kLspOrder], Candidate (&best)[kCandidates]) {
    Vsp16s errors[2 * kNoiseEntries1];
    for (int mode = 0; mode < 2; mode++)
        for (int i = 0; i < kNoiseEntries1; i++) {
            Vsp32s sum = 0;
            for (int j = 0; j < kLspOrder; j++) {
                const Vsp16s error = Sub_16s(targets[mode][j], lspcb1[PtrTab_1[i]][j]);
                sum = mac_32s(sum, error, error);
            }
            errors[mode * kNoiseEntries1 + i] = Mul_16s(high_32s(sum), Mp[mode]);
        }
    for (Candidate& candidate : best) {
        int smallest = 0;
        for (int i = 1; i < 2 * kNoiseEntries1; i++)
            if (errors[i] < errors[smallest]) smallest = i;
        errors[smallest] = kMax16;
        candidate = {smallest / kNoiseEntries1, smallest % kNoiseEntries1};
    }
}

}  // namespace

void ownQuantiseNoiseLSP(const Vsp16s* lsp, Vsp16s* quantised, Vsp16s* previous, Vsp16s* index) {
    Vsp16s lsf[kLspOrder], weights[kLspOrder], targets[2][kLspOrder];
    vspsLSPToLSF_G729_16s(lsp, lsf);
    separate(lsf);
    ownLspWeights(lsf, weights);
    for (int mode = 0; mode < 2; mode++) ownLspExtract(noisePredictors[mode], lsf, previous, targets[mode]);
    Candidate candidates[kCandidates];
    findCandidates(targets, candidates);

    Candidate winner = candidates[0];
    int entry2 = 0;
    Vsp16s smallest = kMax16;
    for (const Candidate& candidate : candidates)
        for (int i = 0; i < kNoiseEntries2; i++) {
            Vsp32s sum = 0;
            for (int j = 0; j < kLspOrder; j++) {
                const Vsp16s share = noisePredictors[candidate.mode].sum[j];
                const Vsp16s weight = Mul_16s(high_32s(Mul4_32s(Mul2_16s32s(share, share))), weights[j]);
                const Vsp16s error =
                    Sub_16s(Sub_16s(targets[candidate.mode][j], lspcb1[PtrTab_1[candidate.entry]][j]), secondStage(i, j));
                sum = mac_32s(sum, high_32s(shl_32s(Mul2_16s32s(weight, error), 3)), error);
            }
            if (high_32s(sum) >= smallest) continue;
            smallest = high_32s(sum);
            winner = candidate;
            entry2 = i;
        }
    reconstruct(winner.mode, winner.entry, entry2, previous, quantised);
    index[0] = Vsp16s(winner.mode);
    index[1] = Vsp16s(winner.entry);
    index[2] = Vsp16s(entry2);
}

void ownDecodeNoiseLSP(const Vsp16s* index, Vsp16s* previous, Vsp16s* lsp) {
    reconstruct(index[0], index[1], index[2], previous, lsp);
}

}  // namespace vsp::VSP_LEVEL
