/**
 * @file
 * G.722.1: categories of the regions.
 */
#ifndef VSPSC_G7221_CATEGORIZE_H
#define VSPSC_G7221_CATEGORIZE_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Categories of the regions, which both sides derive from the powers (`categorize`, `rate_adjust_categories`).
 *
 * A category from 0 to 7 stands for a step size; 7 codes nothing. The categories that are expected to fill the frame are
 * changed region by region into 16 categorisations (32 for 14 kHz), from the one that takes most bits to the one that takes
 * least; the next one raises the category of one region, the balance. control selects one of them.
 *
 * @param[in]  pIndex     regions indices of powers
 * @param[in]  bits       what the frame has for coefficients
 * @param[in]  control    0 .. 15 for 14 regions, 0 .. 31 for 28; encoders pass 0
 * @param[in]  regions    14 (7 kHz) or 28 (14 kHz)
 * @param[out] pCategory  regions categories; those of a corrupt frame may be outside 0 .. 7
 * @param[out] pBalance   15 or 31 regions
 * @retval vspStsNullPtrErr  pIndex, pCategory or pBalance is null
 * @retval vspStsSizeErr     regions is neither, or control is out of range
 *
 * ITU-T G.722.1 3.3, Annex C.
 */
VspStatus vspsCategorize_G722_16s(const Vsp16s* pIndex, Vsp32s bits, Vsp32s control, Vsp32s regions, Vsp16s* pCategory,
                                  Vsp16s* pBalance);

#ifdef __cplusplus
}
#endif

#endif
