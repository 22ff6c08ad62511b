/**
 * @file
 * Element types, status codes and the version record that every family shares.
 *
 * A type code in a function name stands for an element type: `16s` is Vsp16s, `32sc` is Vsp32sc, and so on. A 16-bit
 * value in format Qn stands for value / 2^n.
 */
#ifndef VSPSC_TYPES_H
#define VSPSC_TYPES_H

#ifdef __cplusplus
extern "C" {
#endif

typedef unsigned char Vsp8u;   /**< coded bytes, bit-stream octets */
typedef signed short Vsp16s;   /**< the common fixed-point sample: Q15, Q12, ... */
typedef unsigned short Vsp16u; /**< unsigned 16-bit value */
typedef signed int Vsp32s;     /**< double-precision fixed point, energies, lengths */
typedef unsigned int Vsp32u;   /**< packed codes */
#ifdef __GNUC__
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wlong-long" /* C89 and C++98 have none */
#endif
typedef signed long long Vsp64s; /**< 64-bit accumulator */
#ifdef __GNUC__
#pragma GCC diagnostic pop
#endif
typedef float Vsp32f;  /**< IEEE single precision */
typedef double Vsp64f; /**< IEEE double precision */

/** Complex value of two Vsp16s. */
typedef struct {
    Vsp16s re; /**< real part */
    Vsp16s im; /**< imaginary part */
} Vsp16sc;

/** Complex value of two Vsp32s. */
typedef struct {
    Vsp32s re; /**< real part */
    Vsp32s im; /**< imaginary part */
} Vsp32sc;

/** Complex value of two Vsp32f. */
typedef struct {
    Vsp32f re; /**< real part */
    Vsp32f im; /**< imaginary part */
} Vsp32fc;

/**
 * Result of every function except the version query: 0 is success, negative values are errors, positive values are
 * warnings with the outputs written.
 *
 * Arguments are checked before anything is read or written, pointers first, in the order in which a function's comment
 * lists its codes. After an error every output and every state object is bit for bit what it was, except for
 * vspStsTransformErr, vspStsRootSearchErr and vspStsLevinsonErr, which arise part-way through a computation.
 */
typedef Vsp32s VspStatus;

enum {
    vspStsNoErr = 0,            /**< success */
    vspStsTransformErr = -2,    /**< an internal transform failed; the function stopped there */
    vspStsBadArgErr = -5,       /**< a mode, rate or configuration outside its set */
    vspStsSizeErr = -6,         /**< a length or count is below 1 or not supported */
    vspStsRangeErr = -7,        /**< an order, index, rate, level or lag bound outside its range */
    vspStsNullPtrErr = -8,      /**< a pointer that the function needs is null */
    vspStsCodeRangeErr = -11,   /**< a coded parameter (pitch delay, predictor mode) outside its legal set */
    vspStsScaleRangeErr = -13,  /**< a scale factor that the function does not accept */
    vspStsRootSearchErr = -114, /**< fewer LSP polynomial roots than the filter order; output incomplete */
    vspStsLevinsonErr = -117,   /**< ill-conditioned Levinson-Durbin stage at a low order; output incomplete */
    vspStsCountRangeErr = -119, /**< number of sub-bands outside its range */
    vspStsOverflow = 12,        /**< warning: saturated, or the documented fallback was taken */
    vspStsUnstableLSF = 13,     /**< warning: decoded LSFs still unordered after ten corrections */
    vspStsWinHybridWarn = 17    /**< warning of the hybrid-window autocorrelation */
};

/** Identity of the library, constant data. */
typedef struct {
    Vsp32s major;          /**< major release */
    Vsp32s minor;          /**< minor release */
    Vsp32s majorBuild;     /**< build of the major release */
    Vsp32s build;          /**< build */
    char targetCpu[4];     /**< code of the baseline processor, zero padded */
    const char* Name;      /**< file name; a trailing "+" says that an instruction-set level above the baseline runs */
    const char* Version;   /**< release and build as text */
    const char* BuildDate; /**< date of the release */
} VspLibraryVersion;

#ifdef __cplusplus
}
#endif

#endif
