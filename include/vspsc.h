/**
 * @file
 * Speech-coding primitives for telephony: one step of a speech standard per function.
 *
 * The application owns every buffer and every state object; the functions keep nothing, allocate nothing, print nothing
 * and may be called from any number of threads at once, as long as no two calls share a state object or an output
 * buffer. A pointer may have any alignment that its element type has. Unless a comment says otherwise an output must
 * not overlap an input.
 *
 * Names: vsps + operation + _ + standard (or none) + _ + type codes + suffix. The suffix _I works in place, _Sfs scales
 * the result by 2^-scaleFactor, _ISfs does both.
 */
#ifndef VSPSC_H
#define VSPSC_H

#include "vspsc/alc.h"
#include "vspsc/amrwb.h"
#include "vspsc/common.h"
#include "vspsc/ec.h"
#include "vspsc/g722.h"
#include "vspsc/g7221.h"
#include "vspsc/g723.h"
#include "vspsc/g726.h"
#include "vspsc/g728.h"
#include "vspsc/g729.h"
#include "vspsc/g7291.h"
#include "vspsc/gsmamr.h"
#include "vspsc/gsmfr.h"
#include "vspsc/rta.h"
#include "vspsc/types.h"
#include "vspsc/version.h"

#endif
