/**
 * @file
 * AMR-WB: between 16 kHz and the core's 12.8 kHz.
 */
#ifndef VSPSC_AMRWB_RESAMPLING_H
#define VSPSC_AMRWB_RESAMPLING_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif
