/**
 * @file
 * ITU-T G.722.1 and its Annex C: 7 kHz and 14 kHz audio, a transform codec. A frame has 20 ms: 320 samples at 16 kHz, 640
 * at 32 kHz.
 */
#ifndef VSPSC_G7221_H
#define VSPSC_G7221_H

#include "vspsc/g7221/categorize.h"
#include "vspsc/g7221/coefficients.h"
#include "vspsc/g7221/concealment.h"
#include "vspsc/g7221/region_power.h"
#include "vspsc/g7221/transform.h"

#endif
