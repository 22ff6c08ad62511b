/**
 * @file
 * G.723.1: impulse response and ringing of the combined filter.
 */
#ifndef VSPSC_G723_RINGING_H
#define VSPSC_G723_RINGING_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif
