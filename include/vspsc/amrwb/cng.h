/**
 * @file
 * AMR-WB: comfort noise and frame types, the decoder's side.
 */
#ifndef VSPSC_AMRWB_CNG_H
#define VSPSC_AMRWB_CNG_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif
