/**
 * @file
 * AMR-WB: gains and their limits.
 */
#ifndef VSPSC_AMRWB_GAIN_H
#define VSPSC_AMRWB_GAIN_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif
