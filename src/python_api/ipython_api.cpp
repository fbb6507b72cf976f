#include "pelion_core/python_api/ipython_api.h"

#include "python_api/py_api_impl.h"

namespace python {

IPythonAPI::~IPythonAPI() = default;

}  // namespace python

namespace pelion_core {

python::IPythonAPI* createIPythonAPI(const PythonFuncs& funcs, const PythonThreeFuncs& threeFuncs) {
  return new detail::PyAPIImpl(funcs, threeFuncs);
}

}  // namespace pelion_core
