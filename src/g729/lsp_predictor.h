// Steps that the LSP quantisers and decoders of the main body and of the silence frames share (G.729 3.2.4 and B.4.2). LSFs
// are in Q13, `previous` holds the coded vectors of the last four frames, the newest first.
#pragma once

#include "core/level.h"
#include "g729/lsp_tables.h"

namespace vsp::VSP_LEVEL {

constexpr Vsp16s kGap1 = 10, kGap2 = 5;  // Q13 of 0.0012 and 0.0006

// Get_wegt: weights of the squared errors, normalised so that the largest fills 16 bits.
void ownLspWeights(const Vsp16s* lsf, Vsp16s* weights);

// Lsp_expand_1_2: moves the neighbours first-1 and first .. last-1 and last apart that are closer than the gap.
void ownLspSpread(Vsp16s* lsf, int first, int last, Vsp16s gap);

// Lsp_prev_compose: the LSFs that a coded vector stands for.
void ownLspCompose(const LspPredictor<Vsp16s>& predictor, const Vsp16s* coded, const Vsp16s* previous, Vsp16s* lsf);

// Lsp_prev_extract: what would have to be coded for the LSFs.
void ownLspExtract(const LspPredictor<Vsp16s>& predictor, const Vsp16s* lsf, const Vsp16s* previous, Vsp16s* coded);

// Lsp_prev_update
void ownLspRemember(const Vsp16s* coded, Vsp16s* previous);

// Lsp_stability: orders the LSFs and keeps them apart and in range.
void ownLspStabilise(Vsp16s* lsf);

// Lsp_get_quant with Lsp_iqua_cs: the LSFs of a frame from the entries of the codebooks; moves `previous` on.
void ownLspReconstruct(int mode, int entry1, int entryLow, int entryHigh, Vsp16s* previous, Vsp16s* lsf);

}  // namespace vsp::VSP_LEVEL
