// A host that catches each exception of the library by its own type, and asks a handle for its
// deleter. Where the C++ runtime tells types apart by address, as libc++ does, that takes type
// descriptions that host and library share.

#include <pelion_core/pelion_core.h>

#include <boost/exception/exception.hpp>
#include <boost/numeric/conversion/cast.hpp>
#include <cstdlib>
#include <iostream>

using namespace pelion_core;
using namespace pelion_core::api;

namespace {

template <class Type, class Action>
void expectCaught(const char* name, Action action) {
  try {
    action();
  } catch (const Type&) {
    return;
  } catch (...) {
  }
  std::cerr << "not caught as " << name << '\n';
  std::exit(1);
}

#define EXPECT_CAUGHT(type, expression) \
  expectCaught<type>(#type, [&] { static_cast<void>(expression); })

template <class Raised, class Action>
void expectCaughtAsEveryLayer(Action action) {
  using Layer = foundation::Exception<foundation::IInternalException, std::exception>;
  EXPECT_CAUGHT(Raised, action());
  EXPECT_CAUGHT(Layer, action());
  EXPECT_CAUGHT(foundation::IInternalException, action());
  EXPECT_CAUGHT(foundation::IException, action());
  EXPECT_CAUGHT(boost::exception, action());
  EXPECT_CAUGHT(boost::exception_detail::clone_base, action());
  EXPECT_CAUGHT(std::exception, action());
}

}  // namespace

int main() {
  expectCaughtAsEveryLayer<InternalPyException>([] { interpreter::pyIsOpen(); });
  expectCaughtAsEveryLayer<fetch::BadPythonName>([] { fetch::fetch(u"len"); });
  EXPECT_CAUGHT(std::logic_error, module::pyInvokeInt(nullptr));

  if (loader::attemptToLoadPython(u"3.11", u"/usr/lib/x86_64-linux-gnu/libpython3.11.so.1.0",
                                  u"/usr/bin/python3", u"/usr", u"", true) != 0) {
    return 2;
  }
  expectCaughtAsEveryLayer<fetch::SearchFailure>([] { fetch::fetch(u"py.nosuch"); });
  const auto tooLarge = [] { sequence::pyTupleCreateSize(~std::uint64_t{0}); };
  EXPECT_CAUGHT(boost::numeric::positive_overflow, tooLarge());
  EXPECT_CAUGHT(boost::numeric::bad_numeric_cast, tooLarge());
  EXPECT_CAUGHT(std::bad_cast, tooLarge());
  const bool hasDeleter = boost::get_deleter<PyArrayReleaser>(primitive::pyCreateInt(1)) != nullptr;
  interpreter::pyClose();
  return hasDeleter ? 0 : 3;
}
