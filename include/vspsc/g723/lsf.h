/**
 * @file
 * G.723.1: line spectral frequencies.
 */
#ifndef VSPSC_G723_LSF_H
#define VSPSC_G723_LSF_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif
