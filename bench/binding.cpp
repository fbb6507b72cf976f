// The work in pybind11 or, with BENCH_NANOBIND, in nanobind, whose interfaces are alike. The lock
// is taken and given back for every operation, and for the release of every object that outlives
// one, by their own guards, as a host does whose threads come and go.

#if defined(BENCH_NANOBIND)
#include <nanobind/nanobind.h>
#include <nanobind/ndarray.h>
#include <nanobind/stl/complex.h>
#include <nanobind/stl/string_view.h>
namespace py = nanobind;
#else
#include <pybind11/complex.h>
#include <pybind11/embed.h>
#include <pybind11/numpy.h>
namespace py = pybind11;
#endif

#include <complex>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "contender.h"
#include "subject.h"

// --- Where the two differ -----------------------------------------------------------------------

#if defined(BENCH_NANOBIND)

#define BENCH_STRING(x) BENCH_STRING_OF(x)
#define BENCH_STRING_OF(x) #x

// What makes nanobind ready is the import of a module of its own.
NB_MODULE(bench_start, module) { (void)module; }

namespace {

using Error = py::python_error;
constexpr const char* about = "nanobind " BENCH_STRING(NB_VERSION_MAJOR) "." BENCH_STRING(
    NB_VERSION_MINOR) "." BENCH_STRING(NB_VERSION_PATCH);

void startPython() {
  PyImport_AppendInittab("bench_start", PyInit_bench_start);
  Py_Initialize();
  py::module_::import_("bench_start").release();
}

py::object import(const char* name) { return py::module_::import_(name); }
py::object stolen(PyObject* object) { return py::steal(object); }
template <class Type = py::object>
Type borrowed(py::handle object) {
  return py::borrow<Type>(object);
}

py::object newTuple(const std::vector<py::object>& items) {
  py::tuple_builder tuple(items.size());
  for (const py::object& item : items) tuple.put(item);
  return tuple.commit();
}

py::object newArray(const std::vector<double>& values) {
  return py::cast(py::ndarray<const double, py::numpy, py::ndim<1>>(values.data(), {values.size()}),
                  py::rv_policy::copy);
}

using Block = py::ndarray<const double, py::ndim<1>, py::c_contig, py::device::cpu>;

const void* dataOf(py::handle array) { return py::cast<Block>(array).data(); }

}  // namespace

#else

namespace {

using Error = py::error_already_set;
constexpr const char* about =
    "pybind11 " PYBIND11_TOSTRING(PYBIND11_VERSION_MAJOR) "." PYBIND11_TOSTRING(
        PYBIND11_VERSION_MINOR) "." PYBIND11_TOSTRING(PYBIND11_VERSION_PATCH);

void startPython() { py::initialize_interpreter(); }

py::object import(const char* name) { return py::module_::import(name); }
py::object stolen(PyObject* object) { return py::reinterpret_steal<py::object>(object); }
template <class Type = py::object>
Type borrowed(py::handle object) {
  return py::reinterpret_borrow<Type>(object);
}

py::object newTuple(const std::vector<py::object>& items) {
  py::tuple tuple(items.size());
  for (std::size_t i = 0; i < items.size(); ++i) tuple[i] = items[i];
  return std::move(tuple);
}

py::object newArray(const std::vector<double>& values) {
  return py::array_t<double>(static_cast<py::ssize_t>(values.size()), values.data());
}

const void* dataOf(py::handle array) { return borrowed<py::buffer>(array).request().ptr; }

}  // namespace

#endif

namespace {

using bench::Contender;
using bench::keep;
using bench::Task;

// --- The lock, and what outlives an operation ---------------------------------------------------

template <class Operation>
auto locked(Operation operation) {
  const py::gil_scoped_acquire lock;
  return operation();
}

class Object {
 public:
  explicit Object(py::object object) : object_(std::move(object)) {}
  Object(Object&&) = default;
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;
  Object& operator=(Object&&) = delete;
  ~Object() {
    if (object_) locked([this] { object_ = py::object(); });
  }
  const py::object& operator*() const { return object_; }

 private:
  py::object object_;
};

/// The object that the operation returns.
template <class Operation>
Object make(Operation operation) {
  return Object(locked([&]() -> py::object { return operation(); }));
}

Object subject(const Task& task) {
  return make([&] {
    PyObject* const x = bench::newSubject(task);
    if (x == nullptr) std::abort();
    return stolen(x);
  });
}

/// A row with an operation on its subject.
template <class Operation>
void on(Contender& contender, const char* name, Operation operation) {
  contender.row(name, [operation](const Task& task) {
    return [operation, x = subject(task)] { operation(*x); };
  });
}

/// The items of a subject, a tuple. They live as long as the process.
using Parts = std::vector<py::object>;

/// A row with an operation on the items of its subject.
template <class Operation>
void onParts(Contender& contender, const char* name, Operation operation) {
  contender.row(name, [operation](const Task& task) {
    auto* const parts = new Parts;
    const Object x = subject(task);
    locked([&] {
      for (const py::handle item : *x) parts->push_back(borrowed(item));
    });
    return [operation, parts] { operation(*parts); };
  });
}

// --- Rows ---------------------------------------------------------------------------------------

void values(Contender& contender) {
  contender.plain("make_bool", [] { keep(make([] { return py::bool_(true); })); });
  contender.plain("make_integer", [] { keep(make([] { return py::int_(bench::anInteger); })); });
  contender.plain("make_real", [] { keep(make([] { return py::float_(bench::aReal); })); });
  contender.plain("make_complex", [] {
    keep(make([] { return py::cast(std::complex<double>(bench::aReal, 2)); }));
  });
  contender.plain("make_none", [] { keep(make([] { return py::none(); })); });
  contender.plain("make_text", [] {
    keep(make([] { return py::str(bench::aText.data(), bench::aText.size()); }));
  });

  on(contender, "read_bool",
     [](const py::object& x) { keep(locked([&] { return py::cast<bool>(x); })); });
  on(contender, "read_integer",
     [](const py::object& x) { keep(locked([&] { return py::cast<std::int64_t>(x); })); });
  on(contender, "read_real",
     [](const py::object& x) { keep(locked([&] { return py::cast<double>(x); })); });
  on(contender, "read_complex",
     [](const py::object& x) { keep(locked([&] { return py::cast<std::complex<double>>(x); })); });
  on(contender, "read_text",
     [](const py::object& x) { keep(locked([&] { return py::cast<std::string_view>(x); })); });
#if !defined(BENCH_NANOBIND)  // has no UTF-16
  contender.plain("make_wide_text", [text = std::u16string(bench::aWideText)] {
    keep(make([&] { return py::cast(text); }));
  });
  on(contender, "read_wide_text",
     [](const py::object& x) { keep(locked([&] { return py::cast<std::u16string>(x); })); });
#endif
}

void containers(Contender& contender) {
  onParts(contender, "tuple_10", [](const Parts& x) { keep(make([&] { return newTuple(x); })); });
  onParts(contender, "dict_10", [](const Parts& x) {
    keep(make([&] {
      py::dict dict;
      for (std::size_t i = 0; i < x.size(); i += 2) dict[x[i]] = x[i + 1];
      return dict;
    }));
  });
  contender.row("items", [](const Task& task) {
    return [x = subject(task), size = task.size] {
      for (std::size_t i = 0; i < size; ++i) keep(make([&] { return borrowed<py::list>(*x)[i]; }));
    };
  });
  onParts(contender, "dict_get", [](const Parts& x) { keep(make([&] { return x[0][x[1]]; })); });
  onParts(contender, "dict_set", [](const Parts& x) { locked([&] { x[0][x[1]] = x[2]; }); });
}

void members(Contender& contender) {
  on(contender, "member", [](const py::object& x) { keep(make([&] { return x.attr("hypot"); })); });
  on(contender, "member_absent", [](const py::object& x) {
    locked([&] {
      try {
        keep(py::getattr(x, "absent"));
      } catch (const Error&) {
      }
    });
  });
  on(contender, "has_member",
     [](const py::object& x) { keep(locked([&] { return py::hasattr(x, "hypot"); })); });
  on(contender, "has_member_absent",
     [](const py::object& x) { keep(locked([&] { return py::hasattr(x, "absent"); })); });
  onParts(contender, "set_member",
          [](const Parts& x) { locked([&] { py::setattr(x[0], x[1], x[2]); }); });
  contender.plain("import_member", [] {
    const Object math = make([] { return import("math"); });
    keep(make([&] { return (*math).attr("hypot"); }));
  });

  onParts(contender, "call_0", [](const Parts& x) { keep(make([&] { return x[0](); })); });
  onParts(contender, "call_2",
          [](const Parts& x) { keep(make([&] { return x[0](x[1], x[2]); })); });
  onParts(contender, "call_keyword",
          [](const Parts& x) { keep(make([&] { return x[0](x[1], py::arg("base") = x[3]); })); });
  on(contender, "text_of", [](const py::object& x) { keep(make([&] { return py::str(x); })); });
}

void typeTests(Contender& contender) {
  on(contender, "is_real",
     [](const py::object& x) { keep(locked([&] { return py::isinstance<py::float_>(x); })); });
  onParts(contender, "is_instance",
          [](const Parts& x) { keep(locked([&] { return py::isinstance(x[0], x[1]); })); });
  on(contender, "is_numeric_array", [](const py::object& x) {
    keep(locked([&] { return py::isinstance(x, import("array").attr("array")); }));
  });
  on(contender, "is_datetime", [](const py::object& x) {
    keep(locked([&] { return py::isinstance(x, import("datetime").attr("datetime")); }));
  });
}

/// `path` looked up from a module on; None when it does not lead anywhere.
py::object follow(const std::string& module, const std::string& path) {
  py::object object = import(module.c_str());
  for (std::size_t begin = 0; !object.is_none() && begin < path.size();) {
    const std::size_t end = std::min(path.find('.', begin), path.size());
    object = py::getattr(object, path.substr(begin, end - begin).c_str(), py::none());
    begin = end + 1;
  }
  return object;
}

py::object find(const std::string& name) {
  py::object object = follow("builtins", name);
  for (std::size_t dot = name.find('.'); object.is_none() && dot != std::string::npos;
       dot = name.find('.', dot + 1)) {
    object = follow(name.substr(0, dot), name.substr(dot + 1));
  }
  return object;
}

void names(Contender& contender) {
  for (const auto& [row, name] : bench::names) {
    contender.plain(row, [name = std::string(name)] { keep(make([&] { return find(name); })); });
  }
}

void blocks(Contender& contender) {
  contender.row("block_in", [](const Task& task) {
    return [values = std::vector<double>(task.size, bench::aReal)] {
      keep(make([&] { return newArray(values); }));
    };
  });
  on(contender, "block_out", [](const py::object& x) { keep(locked([&] { return dataOf(x); })); });
  contender.row("frame_in", [](const Task& task) {
    return [values = std::vector<double>(task.size, bench::aReal)] {
      keep(make([&] {
        py::dict columns;
        for (const char* const label : bench::labels) columns[label] = newArray(values);
        return import("pandas").attr("DataFrame").attr("from_dict")(columns);
      }));
    };
  });
  contender.row("frame_out", [](const Task& task) {
    return [x = subject(task), values = std::vector<double>(task.size)]() mutable {
      for (const char* const label : bench::labels) {
        locked([&] {
          const py::object array = (*x).attr("get")(label).attr("to_numpy")();
          std::memcpy(values.data(), dataOf(array), values.size() * sizeof(double));
        });
        keep(values);
      }
    };
  });
}

}  // namespace

int main(int argc, char** argv) {
  startPython();
  PyEval_SaveThread();
  if (argc > 1 && std::strcmp(argv[1], "--start") == 0) std::_Exit(0);

  Contender contender;
  values(contender);
  containers(contender);
  members(contender);
  typeTests(contender);
  names(contender);
  blocks(contender);
  contender.serve(about);
  std::_Exit(0);  // objects outlive the lock's last holder
}
