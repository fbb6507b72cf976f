#include "running.h"

#include <boost/locale/encoding_utf.hpp>
#include <iostream>

namespace pelion {

using namespace pelion_core;
using namespace pelion_core::api;
using host::LoadError;

namespace {

ExitStatus statusOf(LoadError::Reason reason) {
  switch (reason) {
    case LoadError::Reason::notLoaded:
      return notLoaded;
    case LoadError::Reason::alreadyRunning:
      return alreadyRunning;
    default:
      return noPython;
  }
}

class Running {
 public:
  explicit Running(const host::Settings& python) {
    const int result = loader::attemptToLoadPython(toUtf16(python.version), toUtf16(python.library),
                                                   toUtf16(python.program), toUtf16(python.home),
                                                   toUtf16(python.path), true);
    if (result != 0) {
      throw Failure(
          result == -1 ? notLoaded : alreadyRunning,
          python.library + " does not load as a Python 3 runtime: " + loader::whyNotLoaded());
    }
  }
  ~Running() { interpreter::pyClose(); }
  Running(const Running&) = delete;
  Running& operator=(const Running&) = delete;
};

}  // namespace

std::string toUtf8(const std::u16string& utf16) {
  return boost::locale::conv::utf_to_utf<char>(utf16);
}

std::u16string toUtf16(const std::string& utf8) {
  return boost::locale::conv::utf_to_utf<char16_t>(utf8);
}

PyHandle text(const std::string& utf8) { return primitive::pyCreateString(utf8); }

std::string textOf(const PyHandle& object) {
  const PyHandle string = object::pyStr(object.get());
  try {
    return toUtf8(object::get_ustring(string.get()));
  } catch (const InternalPyException&) {
    exception::pyErrorClear();
  }
  const PyHandle bytes = callMethod(string, "encode", {text("utf-8"), text("backslashreplace")});
  return toUtf8(object::get_ustring(callMethod(bytes, "decode").get()));
}

PyHandle member(const PyHandle& object, const char* name) {
  return object::pyGetMember(object.get(), name);
}

PyHandle callMethod(const PyHandle& object, const char* name, const PyArguments& args) {
  return object::pyInvoke(member(object, name).get(), args, PyKeywords{});
}

PyHandle callByName(const char16_t* name, const PyArguments& args) {
  return object::pyInvoke(fetch::fetch(name).get(), args, PyKeywords{});
}

std::string takeError(const InternalPyException& exception) {
  if (!exception::pyErrorOccurred()) return std::string(exception.what()) + '\n';
  const PyHandle error = exception::pyErrorFetch();
  PyArguments parts;
  for (std::uint64_t i = 0; i < 3; ++i) parts.push_back(sequence::pyGetItem(error.get(), i));
  const PyHandle lines = callByName(u"py.traceback.format_exception", parts);
  return textOf(callMethod(text(""), "join", {lines}));
}

int withPython(const host::Settings& given, const std::function<int()>& work) {
  try {
    const Running python(host::complete(given));
    try {
      return work();
    } catch (const InternalPyException& exception) {
      std::cerr << takeError(exception);
      return pythonRaised;
    }
  } catch (const Failure& failure) {
    std::cerr << "pelion: " << failure.what() << '\n';
    return failure.status();
  } catch (const LoadError& error) {
    std::cerr << "pelion: " << error.what() << '\n';
    return statusOf(error.reason());
  }
}

}  // namespace pelion
