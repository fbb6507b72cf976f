#include <boost/exception_ptr.hpp>
#include <type_traits>

#include "support.h"

namespace {

using fetch::BadPythonName;
using fetch::SearchFailure;
using foundation::IException;
using foundation::IInternalException;

const IException& asInterface(const IException& error) { return error; }

TEST(InternalException, ReportsItsMessageAsUtf8AndUtf16) {
  const std::tuple<const char*, const char*, std::u16string> rows[] = {
      {"", "Unknown InternalPyException", u""},
      {"plain", "plain", u"plain"},
      {"caf\xC3\xA9 \xF0\x9F\x90\x8D", "caf\xC3\xA9 \xF0\x9F\x90\x8D", u"caf\u00e9 \U0001F40D"},
      {"bad \xC3(", "bad \xC3(", u"bad \uFFFD("},
  };
  for (const auto& [message, what, text] : rows) {
    const InternalPyException error(message);
    EXPECT_STREQ(error.what(), what);
    EXPECT_STREQ(static_cast<const std::exception&>(error).what(), what);
    EXPECT_EQ(asInterface(error).ToUstringImpl(), text);

    InternalPyException assigned("before");
    assigned = error;
    assigned = static_cast<const InternalPyException&>(assigned);
    EXPECT_STREQ(assigned.what(), what);
    EXPECT_STREQ(InternalPyException(error).what(), what);
  }
}

template <class... Bases, class Thrown>
void expectCaughtAs(const Thrown& thrown) {
  const auto caught = [&](auto* base) {
    try {
      throw thrown;
    } catch (const std::remove_pointer_t<decltype(base)>&) {
      return true;
    } catch (...) {
      return false;
    }
  };
  EXPECT_TRUE((caught(static_cast<Bases*>(nullptr)) && ...)) << thrown.what();
}

// A clone, a rethrown object and what Boost carries all are the type that was thrown.
template <class Thrown>
void expectTravels(const Thrown& thrown) {
  const std::unique_ptr<const boost::exception_detail::clone_base> clone(
      static_cast<const boost::exception_detail::clone_base&>(thrown).clone());
  boost::exception_ptr carried;
  try {
    clone->rethrow();
  } catch (...) {
    carried = boost::current_exception();
  }
  try {
    boost::rethrow_exception(carried);
    ADD_FAILURE();
  } catch (const Thrown& arrived) {
    EXPECT_STREQ(arrived.what(), thrown.what());
    EXPECT_EQ(asInterface(arrived).ToUstringImpl(), asInterface(thrown).ToUstringImpl());
  }
}

TEST(Exceptions, AreCaughtAsEveryBaseAndTravelThroughBoost) {
  const auto expectAll = [](const auto& thrown) {
    expectCaughtAs<std::decay_t<decltype(thrown)>,
                   foundation::Exception<IInternalException, std::exception>, IInternalException,
                   IException, boost::exception_detail::clone_base, boost::exception,
                   std::exception>(thrown);
    expectTravels(thrown);
  };
  expectAll(InternalPyException("carried"));
  expectAll(BadPythonName());
  expectAll(SearchFailure());
  EXPECT_STREQ(BadPythonName().what(), std::exception().what());
  EXPECT_STREQ(SearchFailure().what(), std::exception().what());
}

}  // namespace
