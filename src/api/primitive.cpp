#include "pelion_core/api/primitive.h"

#include "api/wrap.h"

namespace pelion_core::api::primitive {

PyHandle pyCreateBool(bool value) {
  const Frame api;
  return wrap(api->PyBool_FromLong(value));
}

PyHandle pyCreateInt(HostLong value) {
  const Frame api;
  return wrap(api->intFromLong(value));
}

PyHandle pyCreateLong(std::int64_t value) {
  const Frame api;
  return wrap(api->PyLong_FromLongLong(value));
}

PyHandle pyCreateULong(std::uint64_t value) {
  const Frame api;
  return wrap(api->PyLong_FromUnsignedLongLong(value));
}

PyHandle pyCreateFloat(double value) {
  const Frame api;
  return wrap(api->PyFloat_FromDouble(value));
}

PyHandle pyCreateComplex(double real, double imaginary) {
  const Frame api;
  return wrap(api->PyComplex_FromDoubles(real, imaginary));
}

PyHandle pyCreateNone() {
  const Frame api;
  return wrap(api->getNone());
}

PyHandle pyCreateString(const std::string& utf8) {
  const Frame api;
  return wrap(api->PyUnicode_FromStringAndSize(utf8.data(), utf8.size()));
}

PyHandle pyCreateString(const std::u16string& utf16) {
  const Frame api;
  return wrap(api->PyUnicode_DecodeUTF16(utf16));
}

bool pyIsBool(pyArray* object) {
  const Frame api;
  return api->PyBool_Check(toPyObject(object));
}

bool pyIsInt(pyArray* object) {
  const Frame api;
  return api->isInt(toPyObject(object));
}

bool pyIsLong(pyArray* object) {
  const Frame api;
  return api->PyLong_Check(toPyObject(object));
}

bool pyIsFloat(pyArray* object) {
  const Frame api;
  return api->PyFloat_Check(toPyObject(object));
}

bool pyIsComplex(pyArray* object) {
  const Frame api;
  return api->PyComplex_Check(toPyObject(object));
}

bool pyIsString(pyArray* object) {
  const Frame api;
  return api->isString(toPyObject(object)) || api->PyUnicode_Check(toPyObject(object));
}

bool pyBoolGetData(pyArray* object) {
  const Frame api;
  return api->PyObject_IsTrue(toPyObject(object));
}

HostLong pyIntGetData(pyArray* object) {
  const Frame api;
  return api->intAsLong(toPyObject(object));
}

void pyLongGetData(pyArray* object, std::int64_t* out) {
  const Frame api;
  *out = api->PyLong_AsLongLong(toPyObject(object));
}

void pyLongGetDataU(pyArray* object, std::uint64_t* out) {
  const Frame api;
  *out = api->PyLong_AsUnsignedLongLong(toPyObject(object));
}

double pyFloatGetData(pyArray* object) {
  const Frame api;
  return api->PyFloat_AsDouble(toPyObject(object));
}

void pyComplexGetData(pyArray* object, double* real, double* imaginary) {
  const Frame api;
  *real = api->PyComplex_RealAsDouble(toPyObject(object));
  *imaginary = api->PyComplex_ImagAsDouble(toPyObject(object));
}

const char* pyStringGetData(pyArray* object) {
  const Frame api;
  return api->getChars(toPyObject(object));
}

}  // namespace pelion_core::api::primitive
