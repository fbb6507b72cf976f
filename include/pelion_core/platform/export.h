#pragma once

/// @file
/// The one export macro. Everything else in the library has hidden visibility.

/// @def PELION_CORE_EXPORT
/// Marks what the library offers to hosts.

#if defined(_WIN32)
#if defined(PELION_CORE_BUILDING)
#define PELION_CORE_EXPORT __declspec(dllexport)
#else
#define PELION_CORE_EXPORT __declspec(dllimport)
#endif
#else
#define PELION_CORE_EXPORT __attribute__((visibility("default")))
#endif
