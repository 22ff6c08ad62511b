/**
 * @file
 * Ready-to-call voice processing, put together from the building blocks of vspsc.h: speech codecs, an echo canceller, a
 * denoiser, level control, the detection of speech and of answer tones, and the pitch.
 *
 * The application owns every buffer and every object: it asks for the size, provides that much memory (what malloc
 * returns is aligned for all of them), initialises it and passes it to each call. The functions keep nothing, allocate
 * nothing, print nothing and may be called from any number of threads at once, as long as no two calls share an object
 * or an output buffer. Unless its comment says otherwise an object holds no pointers into itself: it may be copied to other
 * memory, and goes on there.
 *
 * Status codes are those of vspsc.h. Arguments are checked before anything is written, in the order in which a function's
 * comment lists its codes, and after an error every output and every object is what it was.
 */
#ifndef VSPSVOICE_H
#define VSPSVOICE_H

#include "vspsvoice/amr.h"
#include "vspsvoice/amrwb.h"
#include "vspsvoice/codec.h"
#include "vspsvoice/denoiser.h"
#include "vspsvoice/echo_canceller.h"
#include "vspsvoice/g723.h"
#include "vspsvoice/g728.h"
#include "vspsvoice/level.h"
#include "vspsvoice/pitch.h"
#include "vspsvoice/speech_detector.h"
#include "vspsvoice/tone.h"

#endif
