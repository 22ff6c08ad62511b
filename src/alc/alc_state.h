// The state of the level control, with the values that initialisation gives it. Levels and powers are linear amplitudes and
// squares; the letters are those of the formulas of the method.
#pragma once

#include "vspsc/alc.h"

struct VspALCState_G169_16s {
    Vsp32f target = 1623.4912f;      // T
    Vsp32f peakLimit = 32767.0f;     // L
    Vsp32f noiseFloor = 4.125246f;   // smallest noise level
    Vsp32f noiseCeiling = 65.38f;    // largest noise level
    Vsp32f maxGain = 3.80189f;       // Gmax
    Vsp32f idleRateFloor = 0.02f;    // smallest adaptation rate between bursts
    Vsp32f rateFloor = 0.0033333f;   // smallest adaptation rate
    Vsp32f hangover = 200.0f;        // blocks that a burst lasts after its last loud block
    Vsp32f stepRate = 0.01f;         // gain step per block
    Vsp16s hangoverCount = 200;      // h
    Vsp16s burstCount = 0;           // c
    Vsp16s activeBlocks = 0;         // k
    Vsp16s speechActive = 0;         // A
    Vsp32f blockMean = 0;            // m
    Vsp32f envelope = 0;             // E
    Vsp32f peakEnvelope = 0;         // Pk
    Vsp32f speechLevel = 0;          // S
    Vsp32f noiseLevel = 65.38f;      // N
    Vsp32f threshold = 65.38f;       // theta
    Vsp32f slowEnvelope = 32767.0f;  // V
    Vsp32f blockPower = 0;           // p
    Vsp32f power = 0;                // P
    Vsp32f rate = 0.1f;              // r
    Vsp32f level = 0;                // Lambda
    Vsp32f levelScale = 0.7f;        // lambda
    Vsp32f gain = 0.03125f;          // G
    Vsp32f gainStep = 0;             // gamma
    Vsp32f appliedGain = 0;          // g
    Vsp32f attack = 1.0f;            // a
    Vsp32f blockPeak = 0;            // b
    Vsp32f savedPower = 0;           // P, G and r as they were when the burst began
    Vsp32f savedGain = 0.03125f;
    Vsp32f savedRate = 0.1f;
};
static_assert(sizeof(VspALCState_G169_16s) == 124 && alignof(VspALCState_G169_16s) == 4);
