/**
 * @file
 * G.722.1: coefficients and frames.
 */
#ifndef VSPSC_G7221_COEFFICIENTS_H
#define VSPSC_G7221_COEFFICIENTS_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif
