#pragma once

// For functions in headers: no out-of-line copy, so that the linker never merges the copies of two levels.
#define VSP_INLINE [[gnu::always_inline]] static inline

// Before a loop whose iterations do not touch what others write: it is vectorised without looking where its arrays lie.
#if defined(__clang__)
#define VSP_INDEPENDENT
#else
#define VSP_INDEPENDENT _Pragma("GCC ivdep")
#endif
