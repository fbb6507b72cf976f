// A host that catches each exception of the library by its own type, and asks a handle for its
// deleter. Where the C++ runtime tells types apart by address, as libc++ does, that takes type
// descriptions that host and library share.

#include <pelion_core/pelion_core.h>

#include <boost/exception/exception.hpp>
#include <boost/numeric/conversion/cast.hpp>
#include <cstdlib>
#include <iostream>
#include <typeinfo>

using namespace pelion_core;
using namespace pelion_core::api;

namespace {

template <class Type, class Action>
void expectCaught(Action action) {
  try {
    action();
  } catch (const Type&) {
    return;
  } catch (...) {
  }
  std::cerr << "not caught as " << typeid(Type).name() << '\n';
  std::exit(1);
}

template <class Raised, class Action>
void expectCaughtAsEveryLayer(Action action) {
  expectCaught<Raised>(action);
  expectCaught<foundation::Exception<foundation::IInternalException, std::exception>>(action);
  expectCaught<foundation::IInternalException>(action);
  expectCaught<foundation::IException>(action);
  expectCaught<boost::exception>(action);
  expectCaught<boost::exception_detail::clone_base>(action);
  expectCaught<std::exception>(action);
}

}  // namespace

int main() {
  expectCaughtAsEveryLayer<InternalPyException>([] { interpreter::pyIsOpen(); });
  expectCaughtAsEveryLayer<fetch::BadPythonName>([] { fetch::fetch(u"len"); });
  expectCaught<std::logic_error>([] { module::pyInvokeInt(nullptr); });

  if (loader::attemptToLoadPython(u"3.11", u"/usr/lib/x86_64-linux-gnu/libpython3.11.so.1.0",
                                  u"/usr/bin/python3", u"/usr", u"", true) != 0) {
    return 2;
  }
  expectCaughtAsEveryLayer<fetch::SearchFailure>([] { fetch::fetch(u"py.nosuch"); });
  const auto tooLarge = [] { sequence::pyTupleCreateSize(~std::uint64_t{0}); };
  expectCaught<boost::numeric::positive_overflow>(tooLarge);
  expectCaught<boost::numeric::bad_numeric_cast>(tooLarge);
  expectCaught<std::bad_cast>(tooLarge);
  const bool hasDeleter = boost::get_deleter<PyArrayReleaser>(primitive::pyCreateInt(1)) != nullptr;
  interpreter::pyClose();
  return hasDeleter ? 0 : 3;
}
