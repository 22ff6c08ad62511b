/**
 * @file
 * G.723.1: Annex A: detector, silence descriptors, comfort noise.
 */
#ifndef VSPSC_G723_SILENCE_H
#define VSPSC_G723_SILENCE_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif
