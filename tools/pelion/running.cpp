#include "running.h"

#include <iostream>

namespace pelion {

namespace {

ExitStatus statusOf(py::LoadError::Reason reason) {
  switch (reason) {
    case py::LoadError::Reason::notLoaded:
      return notLoaded;
    case py::LoadError::Reason::alreadyRunning:
      return alreadyRunning;
    case py::LoadError::Reason::notFound:
      break;
  }
  return noPython;
}

int tell(const std::exception& failure, ExitStatus status) {
  std::cerr << "pelion: " << failure.what() << '\n';
  return status;
}

}  // namespace

int withPython(const py::Settings& given, const std::function<int(const py::Session&)>& work) {
  try {
    return work(py::Session(py::complete(given)));
  } catch (const py::Error& error) {
    std::cerr << error.traceback();
    return pythonRaised;
  } catch (const Failure& failure) {
    return tell(failure, failure.status());
  } catch (const py::LoadError& failure) {
    return tell(failure, statusOf(failure.reason()));
  }
}

}  // namespace pelion
