/**
 * @file
 * AMR-WB: immittance spectral pairs and frequencies.
 */
#ifndef VSPSC_AMRWB_ISP_H
#define VSPSC_AMRWB_ISP_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif
