#pragma once

// For functions in headers: no out-of-line copy, so that the linker never merges the copies of two levels.
#define VSP_INLINE [[gnu::always_inline]] static inline
