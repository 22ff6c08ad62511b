/**
 * @file
 * GSM-AMR (narrow band), 3GPP TS 26.071. A frame has 160 samples, a subframe 40, at 8 kHz.
 */
#ifndef VSPSC_GSMAMR_H
#define VSPSC_GSMAMR_H

#include "vspsc/gsmamr/adaptive_codebook.h"
#include "vspsc/gsmamr/algebraic_codebook.h"
#include "vspsc/gsmamr/cng.h"
#include "vspsc/gsmamr/concealment.h"
#include "vspsc/gsmamr/dtx.h"
#include "vspsc/gsmamr/excitation.h"
#include "vspsc/gsmamr/gain.h"
#include "vspsc/gsmamr/lp_analysis.h"
#include "vspsc/gsmamr/lsp.h"
#include "vspsc/gsmamr/lsp_quant.h"
#include "vspsc/gsmamr/open_loop_pitch.h"
#include "vspsc/gsmamr/post_filter.h"
#include "vspsc/gsmamr/pre_post_process.h"
#include "vspsc/gsmamr/vad.h"

#endif
