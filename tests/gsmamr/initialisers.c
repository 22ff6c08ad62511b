/* The initialisers of the records as a C program uses them. */
#include "vspsc.h"

extern const VspGSMAMRVad1State vad1InitialisedInC;
extern const VspGSMAMRVad2State vad2InitialisedInC;

const VspGSMAMRVad1State vad1InitialisedInC = VSP_GSMAMR_VAD1_STATE_INIT;
const VspGSMAMRVad2State vad2InitialisedInC = VSP_GSMAMR_VAD2_STATE_INIT;
