/**
 * @file
 * G.722.1: categories of the regions.
 */
#ifndef VSPSC_G7221_CATEGORIZE_H
#define VSPSC_G7221_CATEGORIZE_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif
