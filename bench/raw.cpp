// The work in the C API itself, linked as any program that embeds Python. With
// BENCH_LOCK_HANDED_OVER the lock is taken and given back around every operation, and around the
// release of every object that outlives one; else it is kept all the time.

#include <Python.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "contender.h"
#include "subject.h"

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

#else

void giveLockBack() {}

template <class Operation>
auto locked(Operation operation) {
  return operation();
}

#endif

/// A reference that outlives an operation.
class Object {
 public:
  explicit Object(PyObject* object) : object_(object) {
    if (object_ == nullptr) std::abort();  // no row fails
  }
  Object(Object&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;
  Object& operator=(Object&&) = delete;
  ~Object() {
    if (object_ != nullptr) locked([this] { Py_DECREF(object_); });
  }
  operator PyObject*() const { return object_; }
  PyObject* get() const { return object_; }

 private:
  PyObject* object_;
};

/// The new reference that the operation returns.
template <class Operation>
Object make(Operation operation) {
  return Object(locked(operation));
}

Object subject(const Task& task) {
  return make([&] { return bench::newSubject(task); });
}

Object text(const char* utf8) {
  return make([=] { return PyUnicode_InternFromString(utf8); });
}

/// A row with an operation on its subject.
template <class Operation>
void on(Contender& contender, const char* name, Operation operation) {
  contender.row(name, [operation](const Task& task) {
    return [operation, x = subject(task)] { operation(x); };
  });
}

using Parts = std::vector<Object>;

/// A row with an operation on the items of its subject, a tuple.
template <class Operation>
void onParts(Contender& contender, const char* name, Operation operation) {
  contender.row(name, [operation](const Task& task) {
    const Object x = subject(task);
    Parts parts;
    const auto size = static_cast<std::size_t>(PyTuple_GET_SIZE(x.get()));
    for (std::size_t i = 0; i < size; ++i) {
      parts.push_back(make([&] { return bench::newPart(x, i); }));
    }
    return [operation, parts = std::move(parts)] { operation(parts); };
  });
}

void values(Contender& contender) {
  contender.plain("make_bool", [] { keep(make([] { return PyBool_FromLong(1); })); });
  contender.plain("make_integer",
                  [] { keep(make([] { return PyLong_FromLongLong(bench::anInteger); })); });
  contender.plain("make_real", [] { keep(make([] { return PyFloat_FromDouble(bench::aReal); })); });
  contender.plain("make_complex",
                  [] { keep(make([] { return PyComplex_FromDoubles(bench::aReal, 2); })); });
  contender.plain("make_none", [] { keep(make([] { return Py_NewRef(Py_None); })); });
  contender.plain("make_text", [] {
    keep(make([] {
      return PyUnicode_FromStringAndSize(bench::aText.data(),
                                         static_cast<Py_ssize_t>(bench::aText.size()));
    }));
  });
  contender.plain("make_wide_text", [] {
    keep(make([] {
      return PyUnicode_DecodeUTF16(reinterpret_cast<const char*>(bench::aWideText.data()),
                                   static_cast<Py_ssize_t>(bench::aWideText.size() * 2), nullptr,
                                   nullptr);
    }));
  });

  on(contender, "read_bool",
     [](PyObject* x) { keep(locked([=] { return PyObject_IsTrue(x) == 1; })); });
  on(contender, "read_integer",
     [](PyObject* x) { keep(locked([=] { return PyLong_AsLongLong(x); })); });
  on(contender, "read_real",
     [](PyObject* x) { keep(locked([=] { return PyFloat_AsDouble(x); })); });
  on(contender, "read_complex",
     [](PyObject* x) { keep(locked([=] { return PyComplex_AsCComplex(x); })); });
  on(contender, "read_text",
     [](PyObject* x) { keep(locked([=] { return PyUnicode_AsUTF8(x); })); });
  on(contender, "read_wide_text", [](PyObject* x) {
    keep(locked([=] {
      PyObject* const bytes = PyUnicode_AsUTF16String(x);  // begins with a byte-order mark
      const auto size = static_cast<std::size_t>(PyBytes_GET_SIZE(bytes)) / 2 - 1;
      std::u16string text(size, u'\0');
      std::memcpy(text.data(), PyBytes_AS_STRING(bytes) + 2, size * 2);
      Py_DECREF(bytes);
      return text;
    }));
  });
}

void containers(Contender& contender) {
  onParts(contender, "tuple_10", [](const Parts& x) {
    keep(make([&] {
      PyObject* const tuple = PyTuple_New(static_cast<Py_ssize_t>(x.size()));
      for (std::size_t i = 0; i < x.size(); ++i) {
        PyTuple_SET_ITEM(tuple, static_cast<Py_ssize_t>(i), Py_NewRef(x[i].get()));
      }
      return tuple;
    }));
  });
  onParts(contender, "dict_10", [](const Parts& x) {
    keep(make([&] {
      PyObject* const dict = PyDict_New();
      for (std::size_t i = 0; i < x.size(); i += 2) PyDict_SetItem(dict, x[i], x[i + 1]);
      return dict;
    }));
  });
  contender.row("items", [](const Task& task) {
    return [x = subject(task), size = static_cast<Py_ssize_t>(task.size)] {
      for (Py_ssize_t i = 0; i < size; ++i) keep(make([&] { return PySequence_GetItem(x, i); }));
    };
  });
  onParts(contender, "dict_get",
          [](const Parts& x) { keep(make([&] { return PyObject_GetItem(x[0], x[1]); })); });
  onParts(contender, "dict_set",
          [](const Parts& x) { locked([&] { return PyObject_SetItem(x[0], x[1], x[2]); }); });
}

void members(Contender& contender) {
  on(contender, "member",
     [](PyObject* x) { keep(make([=] { return PyObject_GetAttrString(x, "hypot"); })); });
  on(contender, "member_absent", [](PyObject* x) {
    locked([=] {
      keep(PyObject_GetAttrString(x, "absent"));
      PyErr_Clear();
    });
  });
  on(contender, "has_member",
     [](PyObject* x) { keep(locked([=] { return PyObject_HasAttrString(x, "hypot"); })); });
  on(contender, "has_member_absent",
     [](PyObject* x) { keep(locked([=] { return PyObject_HasAttrString(x, "absent"); })); });
  onParts(contender, "set_member",
          [](const Parts& x) { locked([&] { return PyObject_SetAttr(x[0], x[1], x[2]); }); });
  contender.plain("import_member", [] {
    const Object math = make([] { return PyImport_ImportModule("math"); });
    keep(make([&] { return PyObject_GetAttrString(math, "hypot"); }));
  });

  onParts(contender, "call_0",
          [](const Parts& x) { keep(make([&] { return PyObject_CallNoArgs(x[0]); })); });
  onParts(contender, "call_2", [](const Parts& x) {
    keep(make([&] {
      PyObject* const args[] = {x[1], x[2]};
      return PyObject_Vectorcall(x[0], args, 2, nullptr);
    }));
  });
  onParts(contender, "call_keyword", [](const Parts& x) {
    keep(make([&] {
      PyObject* const args = PyTuple_Pack(1, x[1].get());
      PyObject* const kwargs = PyDict_New();
      PyDict_SetItem(kwargs, x[2], x[3]);
      PyObject* const result = PyObject_Call(x[0], args, kwargs);
      Py_DECREF(kwargs);
      Py_DECREF(args);
      return result;
    }));
  });
  on(contender, "text_of", [](PyObject* x) { keep(make([=] { return PyObject_Str(x); })); });
}

int isInstanceOf(PyObject* x, const char* moduleName, const char* name) {
  PyObject* const module = PyImport_ImportModule(moduleName);
  PyObject* const cls = PyObject_GetAttrString(module, name);
  const int result = PyObject_IsInstance(x, cls);
  Py_DECREF(cls);
  Py_DECREF(module);
  return result;
}

void typeTests(Contender& contender) {
  on(contender, "is_real", [](PyObject* x) { keep(locked([=] { return PyFloat_Check(x); })); });
  onParts(contender, "is_instance",
          [](const Parts& x) { keep(locked([&] { return PyObject_IsInstance(x[0], x[1]); })); });
  on(contender, "is_numeric_array",
     [](PyObject* x) { keep(locked([=] { return isInstanceOf(x, "array", "array"); })); });
  on(contender, "is_datetime",
     [](PyObject* x) { keep(locked([=] { return isInstanceOf(x, "datetime", "datetime"); })); });
}

/// An `array.array` with a copy of the values.
PyObject* newBlock(const std::vector<double>& values) {
  PyObject* const module = PyImport_ImportModule("array");
  PyObject* const block = PyObject_CallMethod(module, "array", "s", "d");
  PyObject* const view =
      PyMemoryView_FromMemory(const_cast<char*>(reinterpret_cast<const char*>(values.data())),
                              static_cast<Py_ssize_t>(values.size() * sizeof(double)), PyBUF_READ);
  Py_XDECREF(PyObject_CallMethod(block, "frombytes", "O", view));
  Py_DECREF(view);
  Py_DECREF(module);
  return block;
}

PyObject* newFrame(const std::vector<double>& values) {
  PyObject* const numpy = PyImport_ImportModule("numpy");
  PyObject* const pandas = PyImport_ImportModule("pandas");
  PyObject* const columns = PyDict_New();
  for (const char* const label : bench::labels) {
    PyObject* const block = newBlock(values);
    PyObject* const array = PyObject_CallMethod(numpy, "asarray", "O", block);
    PyDict_SetItemString(columns, label, array);
    Py_DECREF(array);
    Py_DECREF(block);
  }
  PyObject* const cls = PyObject_GetAttrString(pandas, "DataFrame");
  PyObject* const frame = PyObject_CallMethod(cls, "from_dict", "O", columns);
  Py_DECREF(cls);
  Py_DECREF(columns);
  Py_DECREF(pandas);
  Py_DECREF(numpy);
  return frame;
}

void readColumn(PyObject* frame, const char* label, std::vector<double>& values) {
  PyObject* const series = PyObject_CallMethod(frame, "get", "s", label);
  PyObject* const array = PyObject_CallMethod(series, "to_numpy", nullptr);
  Py_buffer buffer = {};
  PyObject_GetBuffer(array, &buffer, PyBUF_STRIDES);
  PyBuffer_ToContiguous(values.data(), &buffer, buffer.len, 'C');
  PyBuffer_Release(&buffer);
  Py_DECREF(array);
  Py_DECREF(series);
}

void blocks(Contender& contender) {
  contender.row("block_in", [](const Task& task) {
    return [values = std::vector<double>(task.size, bench::aReal)] {
      keep(make([&] { return newBlock(values); }));
    };
  });
  on(contender, "block_out", [](PyObject* x) {
    locked([=] {
      Py_buffer buffer = {};
      PyObject_GetBuffer(x, &buffer, PyBUF_SIMPLE);
      keep(buffer.buf);
      PyBuffer_Release(&buffer);
    });
  });
  contender.row("frame_in", [](const Task& task) {
    return [values = std::vector<double>(task.size, bench::aReal)] {
      keep(make([&] { return newFrame(values); }));
    };
  });
  contender.row("frame_out", [](const Task& task) {
    return [x = subject(task), values = std::vector<double>(task.size)]() mutable {
      for (const char* const label : bench::labels) {
        locked([&] { readColumn(x, label, values); });
        keep(values);
      }
    };
  });
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
          PyTuple_SET_ITEM(scalars.get(), static_cast<Py_ssize_t>(i),
                           PyObject_CallFunctionObjArgs(timedelta64, count, unit.get(), nullptr));
          Py_DECREF(count);
        });
      }
      keep(make([&] { return PyObject_CallMethod(numpy, "array", "(O)", scalars.get()); }));
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
      const Py_ssize_t size = PyList_GET_SIZE(x.get());
      Columns columns(attributes.size(), std::vector<std::int64_t>(static_cast<std::size_t>(size)));
      for (Py_ssize_t i = 0; i < size; ++i) {
        PyObject* const element = PyList_GET_ITEM(x.get(), i);
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
      const Py_ssize_t size = PyList_GET_SIZE(x.get());
      for (Py_ssize_t i = 0; all && i < size; ++i) {
        all = PyObject_IsInstance(PyList_GET_ITEM(x.get(), i), cls) == 1;
      }
      keep(all);
      Py_DECREF(cls);
      Py_DECREF(module);
    };
  });
}

void columns(Contender& contender) {
  // What bounds a block.
  contender.row("memcpy", [](const Task& task) {
    return [from = std::vector<double>(task.size, bench::aReal),
            to = std::vector<double>(task.size)]() mutable {
      std::memcpy(to.data(), from.data(), from.size() * sizeof(double));
      keep(to);
    };
  });
  // One block of counts.
  contender.row("timedelta64_create", [](const Task& task) {
    return [values = std::vector<double>(task.size, bench::aReal)] {
      const auto size = static_cast<Py_ssize_t>(values.size() * sizeof(std::int64_t));
      PyObject* const bytes = PyBytes_FromStringAndSize(nullptr, size);
      char* data = PyBytes_AS_STRING(bytes);
      for (const double value : values) {
        const auto count = static_cast<std::int64_t>(value * 1000 + std::copysign(0.5, value));
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
  values(contender);
  containers(contender);
  members(contender);
  typeTests(contender);
  blocks(contender);
  columns(contender);
  names(contender);
  contender.serve("Python " PY_VERSION);
}
