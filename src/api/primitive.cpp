#include "pelion_core/api/primitive.h"

#include "api/reference.h"

namespace pelion_core::api::primitive {

using namespace detail;

PyHandle pyCreateBool(bool value) { return make<&PyAPIImpl::PyBool_FromLong>(value); }
PyHandle pyCreateInt(HostLong value) { return make<&PyAPIImpl::intFromLong>(value); }
PyHandle pyCreateLong(std::int64_t value) { return make<&PyAPIImpl::PyLong_FromLongLong>(value); }
PyHandle pyCreateULong(std::uint64_t value) {
  return make<&PyAPIImpl::PyLong_FromUnsignedLongLong>(value);
}
PyHandle pyCreateFloat(double value) { return make<&PyAPIImpl::PyFloat_FromDouble>(value); }
PyHandle pyCreateComplex(double real, double imaginary) {
  return make<&PyAPIImpl::PyComplex_FromDoubles>(real, imaginary);
}
PyHandle pyCreateNone() { return make<&PyAPIImpl::getNone>(); }
PyHandle pyCreateString(const std::string& utf8) {
  return make<&PyAPIImpl::PyUnicode_FromStringAndSize>(utf8.data(), utf8.size());
}
PyHandle pyCreateString(const std::u16string& utf16) {
  return make<&PyAPIImpl::PyUnicode_DecodeUTF16>(utf16);
}

bool pyIsBool(pyArray* object) { return perform<&PyAPIImpl::PyBool_Check>(object); }
bool pyIsInt(pyArray* object) { return perform<&PyAPIImpl::isInt>(object); }
bool pyIsLong(pyArray* object) { return perform<&PyAPIImpl::PyLong_Check>(object); }
bool pyIsFloat(pyArray* object) { return perform<&PyAPIImpl::PyFloat_Check>(object); }
bool pyIsComplex(pyArray* object) { return perform<&PyAPIImpl::PyComplex_Check>(object); }
bool pyIsString(pyArray* object) {
  const Frame api;
  return api->isString(toPyObject(object)) || api->PyUnicode_Check(toPyObject(object));
}

bool pyBoolGetData(pyArray* object) { return perform<&PyAPIImpl::PyObject_IsTrue>(object); }
HostLong pyIntGetData(pyArray* object) { return perform<&PyAPIImpl::intAsLong>(object); }
void pyLongGetData(pyArray* object, std::int64_t* out) {
  *out = perform<&PyAPIImpl::PyLong_AsLongLong>(object);
}
void pyLongGetDataU(pyArray* object, std::uint64_t* out) {
  *out = perform<&PyAPIImpl::PyLong_AsUnsignedLongLong>(object);
}
double pyFloatGetData(pyArray* object) { return perform<&PyAPIImpl::PyFloat_AsDouble>(object); }
void pyComplexGetData(pyArray* object, double* real, double* imaginary) {
  const Frame api;
  *real = api->PyComplex_RealAsDouble(toPyObject(object));
  *imaginary = api->PyComplex_ImagAsDouble(toPyObject(object));
}
const char* pyStringGetData(pyArray* object) { return perform<&PyAPIImpl::getChars>(object); }

}  // namespace pelion_core::api::primitive
