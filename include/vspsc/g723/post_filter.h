/**
 * @file
 * G.723.1: synthesis and post-filters.
 */
#ifndef VSPSC_G723_POST_FILTER_H
#define VSPSC_G723_POST_FILTER_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif
