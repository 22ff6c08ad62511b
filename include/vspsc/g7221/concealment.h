/**
 * @file
 * G.722.1: frames in error.
 */
#ifndef VSPSC_G7221_CONCEALMENT_H
#define VSPSC_G7221_CONCEALMENT_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif
