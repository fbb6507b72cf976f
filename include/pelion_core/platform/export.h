#pragma once

/// @file
/// The export macro, and what goes with it. Everything else in the library has hidden visibility.

/// @def PELION_CORE_EXPORT
/// Marks what the library offers to hosts.

/// @def PELION_CORE_EXPORT_TEMPLATE
/// Marks a class template whose type has to be the same one in the host and the library.

/// @def PELION_CORE_CLASSES_BEGIN
/// Stands before exported classes with members or bases of the standard library.

/// @def PELION_CORE_CLASSES_END
/// Stands after them.

#if defined(_WIN32)
#if defined(PELION_CORE_BUILDING)
#define PELION_CORE_EXPORT __declspec(dllexport)
#else
#define PELION_CORE_EXPORT __declspec(dllimport)
#endif
#else
#define PELION_CORE_EXPORT __attribute__((visibility("default")))
#endif

#if defined(_MSC_VER)
// It tells types apart by their names, and would look for all instances in the library.
#define PELION_CORE_EXPORT_TEMPLATE
// It warns that such members and bases are not exported. They need not be: the host and the library
// are built with one compiler and one standard library.
#define PELION_CORE_CLASSES_BEGIN __pragma(warning(push)) __pragma(warning(disable : 4251 4275))
#define PELION_CORE_CLASSES_END __pragma(warning(pop))
#else
#define PELION_CORE_EXPORT_TEMPLATE PELION_CORE_EXPORT
#define PELION_CORE_CLASSES_BEGIN
#define PELION_CORE_CLASSES_END
#endif
