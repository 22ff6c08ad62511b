/**
 * @file
 * G.723.1: fixed codebooks.
 */
#ifndef VSPSC_G723_FIXED_CODEBOOK_H
#define VSPSC_G723_FIXED_CODEBOOK_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif
