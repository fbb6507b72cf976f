// The least that a host does with the library, given the path of a runtime library or none.

#include <pelion_core/pelion_core.h>

#include <boost/numeric/conversion/cast.hpp>
#include <cstdint>
#include <filesystem>
#include <iostream>
#include <string>

namespace {

namespace api = pelion_core::api;

int failures = 0;

void expect(bool holds, const char* what) {
  if (holds) return;
  std::cerr << "failed: " << what << '\n';
  ++failures;
}

/// Whether `action` throws an `Error` as this program knows the type, not as the library does.
template <class Error, class Action>
bool throws(Action action) {
  try {
    action();
  } catch (const Error&) {
    return true;
  }
  return false;
}

int load(const std::u16string& library) {
  return loader::attemptToLoadPython(u"3.11", library, u"/bin/python3", u"/usr", u"", true);
}

void withoutInterpreter() {
  expect(throws<pelion_core::InternalPyException>([] { api::primitive::pyCreateInt(1); }),
         "InternalPyException");
  expect(load(u"/there/is/no/libpython3.so") == -1, "a missing library gives -1");
  expect(!loader::isPythonLoaded(), "nothing is loaded");
}

void withInterpreter() {
  const pelion_core::PyHandle name = api::primitive::pyCreateString(u"name");
  expect(name != nullptr, "a text is made");
  expect(throws<boost::numeric::positive_overflow>(
             [&] { api::sequence::pyGetItem(name.get(), UINT64_MAX); }),
         "boost::numeric::positive_overflow");
}

}  // namespace

int main(int count, char** arguments) {
  withoutInterpreter();
  if (count > 1) {
    const std::u16string library = std::filesystem::u8path(arguments[1]).u16string();
    expect(load(library) == 0, "the library loads");
    withInterpreter();
    expect(load(library) == -2, "a second start gives -2");
  }
  return failures;
}
