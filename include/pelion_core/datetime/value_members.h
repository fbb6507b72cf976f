#pragma once

/// @file
/// What makes the component classes values that a host can copy and move. Declared rather than left
/// to the compiler, so that the members are exported like all others.

/// Declares the five members; the library defines each as the language would.
#define PELION_CORE_VALUE_MEMBERS(Class)    \
  Class(const Class& other);                \
  Class(Class&& other) noexcept;            \
  Class& operator=(const Class& other);     \
  Class& operator=(Class&& other) noexcept; \
  ~Class();
