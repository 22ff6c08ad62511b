/**
 * @file
 * AMR-WB, 3GPP TS 26.171 (ITU-T G.722.2). A frame has 320 samples at 16 kHz, 256 at the core's 12.8 kHz, a subframe 64.
 */
#ifndef VSPSC_AMRWB_H
#define VSPSC_AMRWB_H

#include "vspsc/amrwb/adaptive_codebook.h"
#include "vspsc/amrwb/adaptive_codebook_decode.h"
#include "vspsc/amrwb/algebraic_codebook.h"
#include "vspsc/amrwb/cng.h"
#include "vspsc/amrwb/dtx.h"
#include "vspsc/amrwb/enhancement.h"
#include "vspsc/amrwb/excitation.h"
#include "vspsc/amrwb/filters.h"
#include "vspsc/amrwb/gain.h"
#include "vspsc/amrwb/gain_decode.h"
#include "vspsc/amrwb/high_band.h"
#include "vspsc/amrwb/isf_quant.h"
#include "vspsc/amrwb/isp.h"
#include "vspsc/amrwb/lp_analysis.h"
#include "vspsc/amrwb/open_loop_pitch.h"
#include "vspsc/amrwb/resampling.h"
#include "vspsc/amrwb/vad.h"

#endif
