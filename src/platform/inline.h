#pragma once

/// @def PELION_CORE_ALWAYS_INLINE
/// Before a function whose inlining is most of what a small call saves.
#if defined(_MSC_VER)
#define PELION_CORE_ALWAYS_INLINE __forceinline
#else
#define PELION_CORE_ALWAYS_INLINE [[gnu::always_inline]] inline
#endif
