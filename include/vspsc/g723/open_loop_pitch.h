/**
 * @file
 * G.723.1: weighting, open-loop pitch and harmonic noise shaping.
 */
#ifndef VSPSC_G723_OPEN_LOOP_PITCH_H
#define VSPSC_G723_OPEN_LOOP_PITCH_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif
