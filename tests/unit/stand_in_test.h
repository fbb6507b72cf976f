#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "stand_in.h"
#include "support/at_hand.h"
#include "support/shared_object.h"
#include "support/thrown_by.h"

using Calls = std::vector<std::string>;

inline const shared_object::Path standIn = std::filesystem::u8path(STAND_IN);

inline stand_in::Record& recordOf(const PythonLibHolder& library) {
  return stand_in::stateOf<stand_in::Record>(library.findSymbol("stand_in_state"));
}

/// The stand-in loaded, and the interface over it without the loader.
class StandInTest : public ::testing::Test {
 protected:
  PythonLibHolder library{standIn.u16string()};
  stand_in::Record& runtime = recordOf(library);
  PythonFuncs funcs{library};
  PythonThreeFuncs three{library};
  std::unique_ptr<python::IPythonAPI> api{createIPythonAPI(funcs, three)};
};

inline int load(const shared_object::Path& path = standIn, const std::u16string& version = u"2.7",
                const std::u16string& home = u"/home", const std::u16string& modules = u"") {
  return loader::attemptToLoadPython(version, path.u16string(), u"/prog", home, modules, true);
}
