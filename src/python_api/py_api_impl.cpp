#include "python_api/py_api_impl.h"

#include <cstring>
#include <memory>

#include "pelion_core/python_api/internal_py_exception.h"
#include "platform/text.h"

namespace pelion_core::detail {

PyObject* PyAPIImpl::importOrNull(const std::u16string& name) {
  PyObject* const text = PyUnicode_DecodeUTF16(name);
  passed(text);
  PyObject* const module = funcs_.PyImport_Import(text);
  Py_DecRef(text);
  return module;
}

void* PyAPIImpl::PyCapsule_Import(const std::u16string& name) {
  return funcs_.PyCapsule_Import(platform::toUtf8(name).c_str());
}

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

}  // namespace pelion_core::detail
