#pragma once

/// Defines what `PELION_CORE_VALUE_MEMBERS` declares.
#define PELION_CORE_DEFINE_VALUE_MEMBERS(Class)              \
  Class::Class(const Class& other) = default;                \
  Class::Class(Class&& other) noexcept = default;            \
  Class& Class::operator=(const Class& other) = default;     \
  Class& Class::operator=(Class&& other) noexcept = default; \
  Class::~Class() = default;
