/**
 * @file
 * AMR-WB: algebraic codebook.
 */
#ifndef VSPSC_AMRWB_ALGEBRAIC_CODEBOOK_H
#define VSPSC_AMRWB_ALGEBRAIC_CODEBOOK_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif
