/**
 * @file
 * G.723.1: pre-processing and LP analysis.
 */
#ifndef VSPSC_G723_LP_ANALYSIS_H
#define VSPSC_G723_LP_ANALYSIS_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif
