/**
 * @file
 * AMR-WB: LP analysis.
 */
#ifndef VSPSC_AMRWB_LP_ANALYSIS_H
#define VSPSC_AMRWB_LP_ANALYSIS_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif
