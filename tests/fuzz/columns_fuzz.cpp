// Columns read and made as blocks, beside the same columns walked one element after the other: a
// host must not see the difference, also where NumPy's own arithmetic overflows or refuses. What is
// not NumPy's own type is walked, so a subclass and a stand-in for the module show the other way.

#include <cmath>
#include <sstream>

#include "host.h"

using namespace fuzz;

namespace {

constexpr char model[] = R"(
import numpy, sys, types
from datetime import datetime, timedelta
class Walked(numpy.ndarray): pass
def walked(array): return array.view(Walked)
seconds = dict(Y=366 * 86400, M=31 * 86400, W=604800, D=86400, h=3600, m=60, s=1, ms=1, us=1, ns=1)

def make(data, kind, unit, multiple, first, second, layout):
  edge = 2**61 // seconds.get(unit, 1) // multiple
  numbers = numpy.frombuffer(data, 'i8').copy()
  for mark, value in zip((7, 8, 9, 10, 11, 12), (edge, edge + 1, -edge, -edge - 1, 2**63 - 1, -2**63)):
    numbers[numbers == mark] = value
  array = numbers.astype('%s[%d%s]' % (kind, multiple, unit)).reshape(first, second, order='CF'[layout & 1])
  if layout & 2: array = array.T
  if layout & 4: array = array[::-1]
  if layout & 8: array = array[:, ::-2]
  if layout & 16: array = array.astype(array.dtype.newbyteorder())
  if layout & 32: array = array[..., None]
  if layout & 64: array.flags.writeable = False
  if layout & 128: array = array[(0,) * array.ndim]
  return array
def mixed(array, kind):  # the first object tells the kind; what does not fit Python's is among the rest
  ticks = numpy.asarray(array).astype(kind + '[us]').ravel()
  objects = numpy.empty(len(ticks) + 1, object)
  objects[0] = datetime(2000, 1, 1) if kind == 'M8' else timedelta(1)
  objects[1:] = list(ticks)
  return objects

class StandIn(types.ModuleType):
  def __getattr__(self, name): return getattr(numpy, name)
def stand_in(): sys.modules['numpy'] = StandIn('numpy')
def stand_back(): sys.modules['numpy'] = numpy
def same(left, right):
  seen = lambda a: (type(a), a.dtype.str, a.shape, a.strides, str(a.flags), a.tobytes(),
                    type(a.base), a.base is not None and a.base.base is None)
  return seen(left) == seen(right)
)";

template <class Column>
void show(std::ostream& out, const Column& column) {
  for (const auto each : column) out << std::hexfloat << each << ' ';
  out << '\n';
}
template <class... Columns>
std::string shown(const Columns&... columns) {
  std::ostringstream out;
  (show(out, columns), ...);
  return out.str();
}
std::string shown(const Datetime64ArrayComponents& all) {
  return shown(std::vector<bool>{all.isValid()}, all.shape().second, all.natIndices(), all.years(),
               all.months(), all.days(), all.hours(), all.minutes(), all.seconds(),
               all.milliseconds());
}
std::string shown(const Timedelta64ArrayComponents& all) {
  return shown(std::vector<bool>{all.isValid(), all.isMsInt()}, all.shape().second,
               all.natIndices(), all.hours(), all.minutes(), all.seconds(), all.milliseconds_int(),
               all.milliseconds(), all.dtypeFlag());
}

/// All that a host sees: the components, or the failure and the error that it leaves pending.
template <class Components>
std::string seen(const PyHandle& array) {
  std::string result;
  const std::string failed = real::failure([&] { result = shown(Components(array.get())); });
  return result + failed;
}

void compareDecompositions(Host& python, bool isDate, const PyHandle& array) {
  const auto see = isDate ? seen<Datetime64ArrayComponents> : seen<Timedelta64ArrayComponents>;
  check(see(array) == see(python.call("walked", {array})), "the same components");
}

void compareCreations(Host& python, std::vector<double>& values,
                      const std::vector<std::uint64_t>& dims) {
  const auto create = [&] {
    return orEmpty([&] {
      return pyCreateTimedelta64(values.data(), values.size(), dims.size(), dims.data());
    });
  };
  const PyHandle block = create();
  python.call("stand_in", {});
  const PyHandle walked = create();
  python.call("stand_back", {});
  check((block == nullptr) == (walked == nullptr), "both fail or none");
  check(block == nullptr || python.holds("same", {block, walked}), "the same array");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static Host python(model, "numpy");
  Input input{data, size};
  const char* const units[] = {"Y",  "M",  "W",  "D",  "h",  "m", "s",
                               "ms", "us", "ns", "ps", "fs", "as"};
  const bool isDate = input.take() % 2 == 0;
  const PyHandle kind = real::text(isDate ? "M8" : "m8");
  const PyHandle unit = real::text(input.of(units));
  const auto number = [](std::size_t value) { return pyCreateULong(value); };
  const std::size_t multiple = input.take() % 2 == 0 ? 1 : 1 + input.below(100);
  const std::size_t first = 1 + input.below(4), second = 1 + input.below(4);
  const PyHandle layout = number(input.take());
  std::vector<std::int64_t> values(first * second);
  // Numbers of every magnitude, and the ones for which the model has a bound.
  for (std::int64_t& value : values) value = input.take<std::int64_t>() >> input.below(64);
  const PyHandle array =
      python.call("make", {python.bytes(values.data(), 8 * values.size()), kind, unit,
                           number(multiple), number(first), number(second), layout});
  compareDecompositions(python, isDate, array);
  const PyHandle mixed = orEmpty([&] { return python.call("mixed", {array, kind}); });
  if (mixed != nullptr) compareDecompositions(python, isDate, mixed);

  std::vector<double> spans(values.size());
  for (double& span : spans) {
    const double corners[] = {input.take<double>(), std::ldexp(input.take<std::int16_t>(), -4),
                              INFINITY, NAN};
    span = input.of(corners);
  }
  compareCreations(python, spans, {first, second + input.below(9) / 8});
  check(!pyErrorOccurred(), "no error is pending");
  return 0;
}
