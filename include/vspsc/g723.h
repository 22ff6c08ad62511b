/**
 * @file
 * ITU-T G.723.1: 5.3 and 6.3 kbit/s. A frame has 240 samples, a subframe 60, at 8 kHz.
 */
#ifndef VSPSC_G723_H
#define VSPSC_G723_H

#include "vspsc/g723/adaptive_codebook.h"
#include "vspsc/g723/concealment.h"
#include "vspsc/g723/fixed_codebook.h"
#include "vspsc/g723/lp_analysis.h"
#include "vspsc/g723/lsf.h"
#include "vspsc/g723/open_loop_pitch.h"
#include "vspsc/g723/post_filter.h"
#include "vspsc/g723/ringing.h"
#include "vspsc/g723/silence.h"

#endif
