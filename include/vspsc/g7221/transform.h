/**
 * @file
 * G.722.1: modulated lapped transform.
 */
#ifndef VSPSC_G7221_TRANSFORM_H
#define VSPSC_G7221_TRANSFORM_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif
