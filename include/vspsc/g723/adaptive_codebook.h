/**
 * @file
 * G.723.1: adaptive codebook, gains and taming.
 */
#ifndef VSPSC_G723_ADAPTIVE_CODEBOOK_H
#define VSPSC_G723_ADAPTIVE_CODEBOOK_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif
