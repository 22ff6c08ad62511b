/**
 * @file
 * G.723.1: erased frames.
 */
#ifndef VSPSC_G723_CONCEALMENT_H
#define VSPSC_G723_CONCEALMENT_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif
