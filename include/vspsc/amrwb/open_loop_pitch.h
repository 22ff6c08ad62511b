/**
 * @file
 * AMR-WB: open-loop pitch.
 */
#ifndef VSPSC_AMRWB_OPEN_LOOP_PITCH_H
#define VSPSC_AMRWB_OPEN_LOOP_PITCH_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif
