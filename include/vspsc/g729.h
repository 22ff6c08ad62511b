/**
 * @file
 * G.729 and its annexes. A frame has 80 samples, a subframe 40, at 8 kHz.
 */
#ifndef VSPSC_G729_H
#define VSPSC_G729_H

#include "vspsc/g729/backward_lp.h"
#include "vspsc/g729/delay.h"
#include "vspsc/g729/excitation.h"
#include "vspsc/g729/filters.h"
#include "vspsc/g729/fixed_codebook.h"
#include "vspsc/g729/gain.h"
#include "vspsc/g729/lp_analysis.h"
#include "vspsc/g729/lpc_mode.h"
#include "vspsc/g729/lsp.h"
#include "vspsc/g729/lsp_quant.h"
#include "vspsc/g729/pitch.h"
#include "vspsc/g729/post_filter.h"
#include "vspsc/g729/pre_post_process.h"
#include "vspsc/g729/silence.h"

#endif
