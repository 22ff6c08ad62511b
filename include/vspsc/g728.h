/**
 * @file
 * ITU-T G.728: LD-CELP at 16 kbit/s in the fixed-point arithmetic of Annex G, with the concealment of Annex I. A vector has
 * 5 samples at 8 kHz, four vectors make a cycle of adaptation.
 */
#ifndef VSPSC_G728_H
#define VSPSC_G728_H

#include "vspsc/g728/adaptation.h"
#include "vspsc/g728/decoder.h"
#include "vspsc/g728/encoder.h"
#include "vspsc/g728/post_filter.h"

#endif
