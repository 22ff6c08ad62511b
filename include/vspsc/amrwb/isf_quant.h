/**
 * @file
 * AMR-WB: quantisers of the immittance spectral frequencies.
 */
#ifndef VSPSC_AMRWB_ISF_QUANT_H
#define VSPSC_AMRWB_ISF_QUANT_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif
