#include "python_api/py_api_impl.h"

#include <cstring>
#include <memory>

#include "pelion_core/python_api/internal_py_exception.h"
#include "platform/text.h"
#include "python_api/checks.h"

namespace python {

IPythonAPI::~IPythonAPI() = default;

}  // namespace python

namespace pelion_core {
namespace checks {

void fail(const char* message) { throw InternalPyException(message); }

}  // namespace checks

using namespace checks;
using Funcs = PythonFuncs;
using Three = PythonThreeFuncs;

python::IPythonAPI* createIPythonAPI(const PythonFuncs& funcs, const PythonThreeFuncs& threeFuncs) {
  return new PyAPIImpl(funcs, threeFuncs);
}

// Lifetime

bool PyAPIImpl::Py_IsInitialized() { return funcs_.Py_IsInitialized() != 0; }

void PyAPIImpl::Py_Finalize() {
  lock_.finalised();
  funcs_.Py_Finalize();
}

void PyAPIImpl::Py_IncRef(PyObject* object) {
  passed(object);
  funcs_.Py_IncRef(object);
}

void PyAPIImpl::Py_DecRef(PyObject* object) {
  passed(object);
  funcs_.Py_DecRef(object);
}

// Modules

bool PyAPIImpl::PyModule_Check(PyObject* object) {
  return predicate<&Funcs::PyModule_Check>(funcs_, object);
}

std::u16string PyAPIImpl::getBuiltinsName() { return u"builtins"; }

PyObject* PyAPIImpl::importBuiltins() { return importModule(getBuiltinsName()); }

PyObject* PyAPIImpl::importModule(const std::u16string& name) {
  PyObject* const text = PyUnicode_DecodeUTF16(name);
  passed(text);
  PyObject* const module = funcs_.PyImport_Import(text);
  Py_DecRef(text);
  return returned(module);
}

void* PyAPIImpl::PyCapsule_Import(const std::u16string& name) {
  return funcs_.PyCapsule_Import(platform::toUtf8(name).c_str());
}

// The pending error

void PyAPIImpl::PyErr_Clear() { funcs_.PyErr_Clear(); }

bool PyAPIImpl::PyErr_Occurred() { return funcs_.PyErr_Occurred() != nullptr; }

PyObject* PyAPIImpl::fetchError() {
  PyObject* parts[3] = {};
  funcs_.PyErr_Fetch(&parts[0], &parts[1], &parts[2]);
  funcs_.PyErr_NormalizeException(&parts[0], &parts[1], &parts[2]);
  PyObject* const none = getNone();
  passed(none);
  Py_DecRef(none);  // borrowed from here on: None outlives the call

  PyObject* const tuple = funcs_.PyTuple_New(3);
  for (std::int64_t i = 0; i < 3; ++i) {
    PyObject* item = parts[i];
    if (item == nullptr) {
      funcs_.Py_IncRef(none);
      item = none;
    }
    funcs_.PyTuple_SetItem(tuple, i, item);  // takes the reference over
  }
  return returned(tuple);
}

// Objects

bool PyAPIImpl::PyObject_HasAttr(PyObject* object, PyObject* name) {
  return predicate<&Funcs::PyObject_HasAttr>(funcs_, object, name);
}

bool PyAPIImpl::PyObject_HasAttrString(PyObject* object, const char* name) {
  return predicate<&Funcs::PyObject_HasAttrString>(funcs_, object, name);
}

PyObject* PyAPIImpl::PyObject_GetAttr(PyObject* object, PyObject* name) {
  return producer<&Funcs::PyObject_GetAttr>(funcs_, object, name);
}

PyObject* PyAPIImpl::PyObject_GetAttrString(PyObject* object, const char* name) {
  return producer<&Funcs::PyObject_GetAttrString>(funcs_, object, name);
}

int PyAPIImpl::PyObject_SetAttr(PyObject* object, PyObject* name, PyObject* value) {
  return setter<&Funcs::PyObject_SetAttr>(funcs_, object, name, value);
}

int PyAPIImpl::PyObject_SetAttrString(PyObject* object, const char* name, PyObject* value) {
  return setter<&Funcs::PyObject_SetAttrString>(funcs_, object, name, value);
}

PyObject* PyAPIImpl::PyObject_GetItem(PyObject* object, PyObject* key) {
  return producer<&Funcs::PyObject_GetItem>(funcs_, object, key);
}

int PyAPIImpl::PyObject_SetItem(PyObject* object, PyObject* key, PyObject* value) {
  return setter<&Funcs::PyObject_SetItem>(funcs_, object, key, value);
}

bool PyAPIImpl::PyObject_RichCompareBool(PyObject* left, PyObject* right) {
  constexpr int pyEq = 2;  // Py_EQ, https://docs.python.org/3/c-api/typeobj.html#c.Py_EQ
  return predicate<&Funcs::PyObject_RichCompareBool>(funcs_, left, right, pyEq);
}

PyObject* PyAPIImpl::PyObject_Str(PyObject* object) {
  return producer<&Funcs::PyObject_Str>(funcs_, object);
}

PyObject* PyAPIImpl::PyObject_Dir(PyObject* object) {
  return producer<&Funcs::PyObject_Dir>(funcs_, object);
}

PyObject* PyAPIImpl::PyObject_Type(PyObject* object) {
  return producer<&Funcs::PyObject_Type>(funcs_, object);
}

bool PyAPIImpl::PyObject_IsInstance(PyObject* object, PyObject* cls) {
  return predicate<&Funcs::PyObject_IsInstance>(funcs_, object, cls);
}

bool PyAPIImpl::PyObject_IsSubclass(PyObject* derived, PyObject* cls) {
  return predicate<&Funcs::PyObject_IsSubclass>(funcs_, derived, cls);
}

bool PyAPIImpl::PyCallable_Check(PyObject* object) {
  return predicate<&Funcs::PyCallable_Check>(funcs_, object);
}

PyObject* PyAPIImpl::PyObject_Call(PyObject* callable, PyObject* args, PyObject* kwargs) {
  if (args == nullptr) fail("Arguments required to invoke Python callable.");
  passed(callable);
  return returned(funcs_.PyObject_Call(callable, args, kwargs));
}

bool PyAPIImpl::PyType_Check(PyObject* object) {
  return predicate<&Funcs::PyType_Check>(funcs_, object);
}

// Sequences

bool PyAPIImpl::PySequence_Check(PyObject* object) {
  return predicate<&Funcs::PySequence_Check>(funcs_, object);
}

bool PyAPIImpl::PyList_Check(PyObject* object) {
  return predicate<&Funcs::PyList_Check>(funcs_, object);
}

bool PyAPIImpl::PyTuple_Check(PyObject* object) {
  return predicate<&Funcs::PyTuple_Check>(funcs_, object);
}

std::int64_t PyAPIImpl::PySequence_Length(PyObject* object) {
  passed(object);
  const std::int64_t length = funcs_.PySequence_Length(object);
  if (length == -1) fail("PySequence_Length failed.");
  return length;
}

PyObject* PyAPIImpl::PySequence_GetItem(PyObject* object, std::int64_t index) {
  return producer<&Funcs::PySequence_GetItem>(funcs_, object, index);
}

PyObject* PyAPIImpl::PySequence_List(PyObject* object) {
  return producer<&Funcs::PySequence_List>(funcs_, object);
}

PyObject* PyAPIImpl::PyTuple_New(std::int64_t size) {
  return maker<&Funcs::PyTuple_New>(funcs_, size);
}

int PyAPIImpl::setTupleItem(PyObject* tuple, std::int64_t index, PyObject* item) {
  passed(item);
  funcs_.Py_IncRef(item);
  passed(tuple);
  return setter<&Funcs::PyTuple_SetItem>(funcs_, tuple, index, item);
}

// Mappings

bool PyAPIImpl::PyMapping_Check(PyObject* object) {
  return predicate<&Funcs::PyMapping_Check>(funcs_, object);
}

bool PyAPIImpl::PyDict_Check(PyObject* object) {
  return predicate<&Funcs::PyDict_Check>(funcs_, object);
}

PyObject* PyAPIImpl::PyDict_New() { return maker<&Funcs::PyDict_New>(funcs_); }

// None, bool, numbers

bool PyAPIImpl::isNone(PyObject* object) {
  PyObject* const none = getNone();
  passed(object);
  passed(none);
  Py_DecRef(none);
  return object == none;
}

PyObject* PyAPIImpl::getNone() {
  PyObject* const builtins = importBuiltins();
  PyObject* const none = PyObject_GetAttrString(builtins, "None");
  Py_DecRef(builtins);
  return none;
}

bool PyAPIImpl::PyBool_Check(PyObject* object) {
  return predicate<&Funcs::PyBool_Check>(funcs_, object);
}

PyObject* PyAPIImpl::PyBool_FromLong(bool value) {
  return maker<&Funcs::PyBool_FromLong>(funcs_, HostLong{value});
}

bool PyAPIImpl::PyObject_IsTrue(PyObject* object) {
  return predicate<&Funcs::PyObject_IsTrue>(funcs_, object);
}

bool PyAPIImpl::isInt(PyObject*) { return false; }

PyObject* PyAPIImpl::intFromLong(HostLong value) {
  return maker<&Funcs::PyLong_FromLongLong>(funcs_, std::int64_t{value});
}

HostLong PyAPIImpl::intAsLong(PyObject* object) {
  return static_cast<HostLong>(
      static_cast<std::uint32_t>(extractor<&Funcs::PyLong_AsLongLong>(funcs_, object)));
}

bool PyAPIImpl::PyLong_Check(PyObject* object) {
  return predicate<&Funcs::PyLong_Check>(funcs_, object);
}

PyObject* PyAPIImpl::PyLong_FromUnsignedLongLong(std::uint64_t value) {
  return maker<&Funcs::PyLong_FromUnsignedLongLong>(funcs_, value);
}

PyObject* PyAPIImpl::PyLong_FromLongLong(std::int64_t value) {
  return maker<&Funcs::PyLong_FromLongLong>(funcs_, value);
}

std::int64_t PyAPIImpl::PyLong_AsLongLong(PyObject* object) {
  return extractor<&Funcs::PyLong_AsLongLong>(funcs_, object);
}

std::uint64_t PyAPIImpl::PyLong_AsUnsignedLongLong(PyObject* object) {
  return extractor<&Funcs::PyLong_AsUnsignedLongLong>(funcs_, object);
}

bool PyAPIImpl::PyFloat_Check(PyObject* object) {
  return predicate<&Funcs::PyFloat_Check>(funcs_, object);
}

PyObject* PyAPIImpl::PyFloat_FromDouble(double value) {
  return maker<&Funcs::PyFloat_FromDouble>(funcs_, value);
}

double PyAPIImpl::PyFloat_AsDouble(PyObject* object) {
  return extractor<&Funcs::PyFloat_AsDouble>(funcs_, object);
}

bool PyAPIImpl::PyComplex_Check(PyObject* object) {
  return predicate<&Funcs::PyComplex_Check>(funcs_, object);
}

PyObject* PyAPIImpl::PyComplex_FromDoubles(double real, double imaginary) {
  return maker<&Funcs::PyComplex_FromDoubles>(funcs_, real, imaginary);
}

double PyAPIImpl::PyComplex_RealAsDouble(PyObject* object) {
  return extractor<&Funcs::PyComplex_RealAsDouble>(funcs_, object);
}

double PyAPIImpl::PyComplex_ImagAsDouble(PyObject* object) {
  return extractor<&Funcs::PyComplex_ImagAsDouble>(funcs_, object);
}

// Text, bytes, memory

bool PyAPIImpl::isString(PyObject* object) {
  return predicate<&Funcs::PyUnicode_Check>(funcs_, object);
}

bool PyAPIImpl::PyUnicode_Check(PyObject* object) {
  return predicate<&Funcs::PyUnicode_Check>(funcs_, object);
}

PyObject* PyAPIImpl::PyUnicode_FromStringAndSize(const char* utf8, std::uint64_t size) {
  return maker<&Three::PyUnicode_FromStringAndSize>(threeFuncs_, utf8, cSize(size));
}

const char* PyAPIImpl::getChars(PyObject* object) {
  return PyUnicode_Check(object) ? threeFuncs_.PyUnicode_AsUTF8AndSize(object, nullptr)
                                 : threeFuncs_.PyBytes_AsString(object);
}

int PyAPIImpl::bytesToString(PyObject* object, std::string& out) {
  passed(object);
  char* data = nullptr;
  std::int64_t size = 0;
  const int result = threeFuncs_.PyBytes_AsStringAndSize(object, &data, &size);
  if (result != -1) out.assign(data, static_cast<std::size_t>(size));
  return result;
}

int PyAPIImpl::bytesToUString(PyObject* object, std::u16string& out) {
  std::string utf8;
  const int result = bytesToString(object, utf8);
  if (result != -1) out = platform::toUtf16(utf8);
  return result;
}

PyObject* PyAPIImpl::PyUnicode_DecodeUTF16(const std::u16string& utf16) {
  const std::int64_t byteCount = cSize(std::uint64_t{2} * utf16.size());
  const char* const data = reinterpret_cast<const char*>(utf16.data());
  return returned(threeFuncs_.PyUnicode_DecodeUTF16(data, byteCount, nullptr, nullptr));
}

int PyAPIImpl::unicodeToUString(PyObject* object, std::u16string& out) {
  passed(object);
  const auto release = [this](PyObject* bytes) { funcs_.Py_DecRef(bytes); };
  const std::unique_ptr<PyObject, decltype(release)> bytes(
      threeFuncs_.PyUnicode_AsUTF16String(object), release);
  if (bytes == nullptr) return -1;

  char* data = nullptr;
  std::int64_t signedSize = 0;
  const int result = threeFuncs_.PyBytes_AsStringAndSize(bytes.get(), &data, &signedSize);
  if (result == -1) return -1;

  // The encoder always writes a byte-order mark first.
  constexpr std::size_t markSize = sizeof(char16_t);
  auto size = static_cast<std::size_t>(signedSize);
  if (size >= markSize) {
    data += markSize;
    size -= markSize;
  }
  out.resize(size / sizeof(char16_t));
  if (!out.empty()) std::memcpy(out.data(), data, out.size() * sizeof(char16_t));
  return result;
}

PyObject* PyAPIImpl::PyMemoryView_FromMemory(std::uint64_t size, char* data) {
  constexpr int pyBufWrite = 0x200;  // https://docs.python.org/3/c-api/memoryview.html
  return maker<&Three::PyMemoryView_FromMemory>(threeFuncs_, data, cSize(size), pyBufWrite);
}

bool PyAPIImpl::callInspectPredicate(PyObject* object, const std::string& predicateName) {
  // Module, function, arguments and result are left behind on purpose: callers rely on it.
  try {
    PyObject* const inspect = importModule(u"inspect");
    PyObject* const function = PyObject_GetAttrString(inspect, predicateName.c_str());
    PyObject* const arguments = PyTuple_New(1);
    setTupleItem(arguments, 0, object);
    PyObject* const result = PyObject_Call(function, arguments, nullptr);
    return PyBool_Check(result) && PyObject_IsTrue(result);
  } catch (const InternalPyException&) {
    return false;
  }
}

}  // namespace pelion_core
