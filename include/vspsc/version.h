/**
 * @file
 * Version query.
 */
#ifndef VSPSC_VERSION_H
#define VSPSC_VERSION_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Tells which library this is.
 *
 * Name ends in "+" if the processor and the operating system support AVX2, so that the library runs on a level above
 * its baseline, and is the plain file name otherwise. All other fields are the same in both records.
 *
 * @return one of two constant records, always the same one on a machine; never null
 */
const VspLibraryVersion* vspscGetLibVersion(void);

#ifdef __cplusplus
}
#endif

#endif
