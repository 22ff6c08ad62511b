/**
 * @file
 * AMR-WB: the band above 6.4 kHz.
 */
#ifndef VSPSC_AMRWB_HIGH_BAND_H
#define VSPSC_AMRWB_HIGH_BAND_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif
