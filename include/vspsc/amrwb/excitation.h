/**
 * @file
 * AMR-WB: excitation and its enhancement.
 */
#ifndef VSPSC_AMRWB_EXCITATION_H
#define VSPSC_AMRWB_EXCITATION_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif
