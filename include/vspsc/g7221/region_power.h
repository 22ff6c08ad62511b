/**
 * @file
 * G.722.1: region powers.
 */
#ifndef VSPSC_G7221_REGION_POWER_H
#define VSPSC_G7221_REGION_POWER_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif
