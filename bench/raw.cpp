// The work in the C API itself, linked as any program that embeds Python. With
// BENCH_LOCK_HANDED_OVER the lock is taken and given back around every operation, and around the
// release of every object that outlives one; else it is kept all the time.

#include <Python.h>

#include <cmath>
#include <cstring>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

#include "contender.h"

namespace {

using bench::Contender;
using bench::keep;
using bench::Task;

#if defined(BENCH_LOCK_HANDED_OVER)

PyThreadState* threadState = nullptr;

void giveLockBack() { threadState = PyEval_SaveThread(); }

template <class Operation>
auto locked(Operation operation) {
  struct Lock {
    Lock() { PyEval_RestoreThread(threadState); }
    ~Lock() { giveLockBack(); }
  } const lock;
  return operation();
}

constexpr const char* policy = ", lock handed over";

#else

void giveLockBack() {}

template <class Operation>
auto locked(Operation operation) {
  return operation();
}

constexpr const char* policy = ", lock kept";

#endif

/// A reference that outlives an operation.
class Object {
 public:
  explicit Object(PyObject* object) : object_(object) {
    if (object_ == nullptr) locked([] { return PyErr_Print(), std::abort(); });
  }
  Object(Object&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;
  Object& operator=(Object&&) = delete;
  ~Object() {
    if (object_ != nullptr) locked([this] { Py_DECREF(object_); });
  }
  operator PyObject*() const { return object_; }

 private:
  PyObject* object_;
};

/// The new reference that the operation returns.
template <class Operation>
Object make(Operation operation) {
  return Object(locked(operation));
}

[[maybe_unused]] Object subject(const Task& task) {
  return make([&] {
    PyObject* const globals = PyDict_New();
    PyObject* const size = PyLong_FromSize_t(task.size);
    PyDict_SetItemString(globals, "n", size);
    PyDict_SetItemString(globals, "__builtins__", PyEval_GetBuiltins());
    Py_XDECREF(PyRun_String(task.subject.c_str(), Py_file_input, globals, globals));
    PyObject* const x = PyDict_GetItemString(globals, "x");
    Py_XINCREF(x);
    Py_DECREF(size);
    Py_DECREF(globals);
    return x;
  });
}

Object text(const char* utf8) {
  return make([=] { return PyUnicode_InternFromString(utf8); });
}

// --- Columns ------------------------------------------------------------------------------------

#if defined(BENCH_LOCK_HANDED_OVER)

void columns(Contender& contender) {
  contender.row("timedelta64_create", [](const Task& task) {
    return [values = std::vector<double>(task.size, bench::aReal)] {
      const Object numpy = make([] { return PyImport_ImportModule("numpy"); });
      const Object timedelta64 = make([&] { return PyObject_GetAttrString(numpy, "timedelta64"); });
      const Object unit = text("us");
      const Object scalars =
          make([&] { return PyTuple_New(static_cast<Py_ssize_t>(values.size())); });
      for (std::size_t i = 0; i < values.size(); ++i) {
        locked([&] {
          PyObject* const count = PyLong_FromLongLong(std::llround(values[i] * 1000));
          PyTuple_SET_ITEM(
              scalars.operator PyObject*(), static_cast<Py_ssize_t>(i),
              PyObject_CallFunctionObjArgs(timedelta64, count, unit.operator PyObject*(), nullptr));
          Py_DECREF(count);
        });
      }
      keep(make([&] {
        return PyObject_CallMethod(numpy, "array", "(O)", scalars.operator PyObject*());
      }));
    };
  });
}

#else

using Columns = std::vector<std::vector<std::int64_t> >;

/// Calendar days from 1970 on, by Howard Hinnant's algorithm "civil_from_days".
struct Civil {
  std::int64_t year, month, day;
  explicit Civil(std::int64_t days) {
    days += 719468;
    const std::int64_t era = (days >= 0 ? days : days - 146096) / 146097;
    const std::int64_t dayOfEra = days - era * 146097;
    const std::int64_t yearOfEra =
        (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const std::int64_t shifted = (5 * dayOfYear + 2) / 153;
    day = dayOfYear - (153 * shifted + 2) / 5 + 1;
    month = shifted < 10 ? shifted + 3 : shifted - 9;
    year = yearOfEra + era * 400 + (month <= 2 ? 1 : 0);
  }
};

/// The block of `x.tobytes()`.
template <class Read>
void readBytes(PyObject* x, Read read) {
  PyObject* const bytes = PyObject_CallMethod(x, "tobytes", nullptr);
  const auto size = static_cast<std::size_t>(PyBytes_GET_SIZE(bytes)) / sizeof(std::int64_t);
  const char* const data = PyBytes_AS_STRING(bytes);
  read(size, [data](std::size_t i) {
    std::int64_t count = 0;
    std::memcpy(&count, data + i * sizeof count, sizeof count);
    return count;
  });
  Py_DECREF(bytes);
}

std::int64_t integerAttribute(PyObject* object, PyObject* name) {
  PyObject* const value = PyObject_GetAttr(object, name);
  const std::int64_t number = PyLong_AsLongLong(value);
  Py_DECREF(value);
  return number;
}

/// Reads attributes of every element of a list into columns.
void attributeColumns(Contender& contender, const char* row, std::vector<const char*> names) {
  contender.row(row, [names](const Task& task) {
    std::vector<Object> attributes;
    for (const char* const name : names) attributes.push_back(text(name));
    return [x = subject(task), attributes = std::move(attributes)] {
      const Py_ssize_t size = PyList_GET_SIZE(x.operator PyObject*());
      Columns columns(attributes.size(), std::vector<std::int64_t>(static_cast<std::size_t>(size)));
      for (Py_ssize_t i = 0; i < size; ++i) {
        PyObject* const element = PyList_GET_ITEM(x.operator PyObject*(), i);
        for (std::size_t k = 0; k < attributes.size(); ++k) {
          columns[k][static_cast<std::size_t>(i)] = integerAttribute(element, attributes[k]);
        }
      }
      keep(columns);
    };
  });
}

/// Asks `isinstance` of every element of a list.
void eachIs(Contender& contender, const char* row, const char* name) {
  contender.row(row, [name](const Task& task) {
    return [x = subject(task), name] {
      PyObject* const module = PyImport_ImportModule("datetime");
      PyObject* const cls = PyObject_GetAttrString(module, name);
      bool all = true;
      const Py_ssize_t size = PyList_GET_SIZE(x.operator PyObject*());
      for (Py_ssize_t i = 0; all && i < size; ++i) {
        all = PyObject_IsInstance(PyList_GET_ITEM(x.operator PyObject*(), i), cls) == 1;
      }
      keep(all);
      Py_DECREF(cls);
      Py_DECREF(module);
    };
  });
}

void columns(Contender& contender) {
  // One block of counts.
  contender.row("timedelta64_create", [](const Task& task) {
    return [values = std::vector<double>(task.size, bench::aReal)] {
      const auto size = static_cast<Py_ssize_t>(values.size() * sizeof(std::int64_t));
      PyObject* const bytes = PyBytes_FromStringAndSize(nullptr, size);
      char* data = PyBytes_AS_STRING(bytes);
      for (const double value : values) {
        const std::int64_t count = std::llround(value * 1000);
        std::memcpy(data, &count, sizeof count);
        data += sizeof count;
      }
      PyObject* const numpy = PyImport_ImportModule("numpy");
      PyObject* const view = PyObject_CallMethod(numpy, "frombuffer", "Os", bytes, "m8[us]");
      keep(Object(PyObject_CallMethod(numpy, "array", "O", view)));
      Py_DECREF(view);
      Py_DECREF(numpy);
      Py_DECREF(bytes);
    };
  });
  // Civil arithmetic over one block.
  contender.row("datetime64_array", [](const Task& task) {
    return [x = subject(task)] {
      constexpr std::int64_t nanosecondsPerSecond = 1'000'000'000;
      readBytes(x, [](std::size_t size, auto count) {
        Columns columns(6, std::vector<std::int64_t>(size));
        std::vector<double> milliseconds(size);
        for (std::size_t i = 0; i < size; ++i) {
          std::int64_t seconds = count(i) / nanosecondsPerSecond;
          std::int64_t nanoseconds = count(i) % nanosecondsPerSecond;
          if (nanoseconds < 0) nanoseconds += nanosecondsPerSecond, --seconds;
          std::int64_t days = seconds / 86400;
          seconds %= 86400;
          if (seconds < 0) seconds += 86400, --days;
          const Civil civil(days);
          const std::int64_t parts[] = {civil.year,     civil.month,       civil.day,
                                        seconds / 3600, seconds / 60 % 60, seconds % 60};
          for (std::size_t k = 0; k < columns.size(); ++k) columns[k][i] = parts[k];
          milliseconds[i] = static_cast<double>(nanoseconds) / 1e6;
        }
        keep(columns);
        keep(milliseconds);
      });
    };
  });
  contender.row("timedelta64_array", [](const Task& task) {
    return [x = subject(task)] {
      readBytes(x, [](std::size_t size, auto count) {
        std::vector<double> milliseconds(size);
        for (std::size_t i = 0; i < size; ++i) {
          milliseconds[i] = static_cast<double>(count(i)) / 1000;
        }
        keep(milliseconds);
      });
    };
  });
  attributeColumns(contender, "datetime_list",
                   {"year", "month", "day", "hour", "minute", "second", "microsecond"});
  attributeColumns(contender, "datetime_list_zones",
                   {"year", "month", "day", "hour", "minute", "second", "microsecond"});
  attributeColumns(contender, "timedelta_list", {"days", "seconds", "microseconds"});
  eachIs(contender, "each_is_datetime", "datetime");
  eachIs(contender, "each_is_timedelta", "timedelta");
}

#endif

// --- Names --------------------------------------------------------------------------------------

/// `path` looked up from a module on; null without an error when it does not lead anywhere.
PyObject* follow(const std::string& module, const std::string& path) {
  PyObject* object = PyImport_ImportModule(module.c_str());
  for (std::size_t begin = 0; object != nullptr && begin < path.size();) {
    const std::size_t end = std::min(path.find('.', begin), path.size());
    PyObject* const member =
        PyObject_GetAttrString(object, path.substr(begin, end - begin).c_str());
    Py_DECREF(object);
    object = member;
    begin = end + 1;
  }
  if (object == nullptr) PyErr_Clear();
  return object;
}

PyObject* find(const std::string& name) {
  PyObject* object = follow("builtins", name);
  for (std::size_t dot = name.find('.'); object == nullptr && dot != std::string::npos;
       dot = name.find('.', dot + 1)) {
    object = follow(name.substr(0, dot), name.substr(dot + 1));
  }
  return object;
}

void names(Contender& contender) {
  for (const auto& [row, name] : bench::names) {
    contender.row(row, [name = std::string(name)](const Task&) {
      return [name] { keep(make([&] { return find(name); })); };
    });
  }
  contender.row("imports", [](const Task&) {
    return [] {
      keep(make([] { return PyImport_ImportModule("builtins"); }));
      const Object math = make([] { return PyImport_ImportModule("math"); });
      keep(make([&] { return PyObject_GetAttrString(math, "hypot"); }));
    };
  });
}

}  // namespace

int main(int argc, char** argv) {
  Py_Initialize();
  giveLockBack();
  if (argc > 1 && std::strcmp(argv[1], "--start") == 0) std::_Exit(0);

  Contender contender;
  columns(contender);
  names(contender);
  contender.serve(std::string("C API of Python " PY_VERSION) + policy);
}
