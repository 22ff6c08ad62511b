/**
 * @file
 * AMR-WB: discontinuous transmission, the encoder's side.
 */
#ifndef VSPSC_AMRWB_DTX_H
#define VSPSC_AMRWB_DTX_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif
