// Dates and durations taken apart, over arrays of random unit, order, shape and strides, against
// the calendar and the units in Python's integers.

#include "host.h"

using namespace fuzz;
using namespace primitive;

namespace {

template <class Value>
PyHandle tuple(const std::vector<Value>& values) {
  PyArguments items;
  for (const Value value : values) {
    if constexpr (std::is_same_v<Value, double>)
      items.push_back(pyCreateFloat(value));
    else
      items.push_back(pyCreateLong(static_cast<std::int64_t>(value)));
  }
  return sequence::pyTupleCreate(items);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static Host python(R"(
import numpy
from fractions import Fraction
nat = -2**63
scale = {'W': 604800, 'D': 86400, 'h': 3600, 'm': 60, 's': 1, 'ms': Fraction(1, 10**3),
         'us': Fraction(1, 10**6), 'ns': Fraction(1, 10**9)}
def make(data, kind, unit, first, second, layout):
  numbers = numpy.frombuffer(data, 'i8')
  limit = 2**38 if kind == 'M8' else 2**62
  numbers = numpy.where(numbers == nat, nat, numbers % limit - limit // 2)
  if kind == 'M8' and unit in ('Y', 'M', 'W', 'D', 'h'): numbers = numpy.where(numbers == nat, nat, numbers % 100000)
  elif kind == 'M8' and unit in ('ms', 'us', 'ns'): numbers = numpy.where(numbers == nat, nat, numbers * 2**20)
  array = numbers.astype('%s[%s]' % (kind, unit)).reshape(first, second, order='CF'[layout & 1])
  if layout & 2: array = array.T
  if layout & 4: array = array[::-1]
  if layout & 8: array = array[:, ::-2]
  if layout & 16: array = array.astype(array.dtype.newbyteorder())
  return array
def civil(days):  # of the proleptic Gregorian calendar; years begin in March here
  days += 719468
  era, day = divmod(days, 146097)
  year = (day - day // 1460 + day // 36524 - day // 146096) // 365
  day -= 365 * year + year // 4 - year // 100
  month = (5 * day + 2) // 153
  return year + era * 400 + (month >= 10), (month + 2) % 12 + 1, day - (153 * month + 2) // 5 + 1
def date(value, unit):
  if value == nat: return (0,) * 7
  if unit in 'YM':
    months = value if unit == 'M' else value * 12
    return 1970 + months // 12, months % 12 + 1, 1, 0, 0, 0, 0
  days, rest = divmod(value * scale[unit], 86400)
  second, fraction = divmod(rest, 1)
  second = int(second)
  return civil(int(days)) + (second // 3600, second // 60 % 60, second % 60, float(fraction * 1000))
def duration(value, unit):
  if value == nat: return (0,) * 5
  average = {'Y': 31556952, 'M': 2592000}
  field = {'h': 0, 'm': 1, 's': 2, 'ms': 3}.get(unit, 4)
  result = [0] * 5
  result[field] = value if field < 4 else float(value * (average.get(unit) or scale[unit]) * 1000)
  return tuple(result)
def near(a, b): return a == b or abs(a - b) <= 1e-12 * max(abs(a), abs(b)) + 2e-13
def agrees(array, unit, shape, nats, take, *columns):
  flat = array.flatten('F').astype(array.dtype.newbyteorder('=')).view('i8').tolist()
  expected = [take(value, unit) for value in flat]
  return (tuple(shape) == array.shape and list(map(bool, nats)) == [value == nat for value in flat]
          and all(len(column) == len(flat) for column in columns)
          and all(near(a, b) for row, got in zip(expected, zip(*columns)) for a, b in zip(row, got)))
)");
  Input input(data, size);
  const bool isDate = input.take() % 2 == 0;
  const char* const units[] = {"Y", "M", "W", "D", "h", "m", "s", "ms", "us", "ns"};
  const PyHandle unit = real::text(input.of(units));
  const std::size_t first = 1 + input.below(4), second = 1 + input.below(4);
  const auto layout = input.take();
  std::vector<std::int64_t> values(first * second);
  for (std::int64_t& value : values) {
    const std::int64_t corners[] = {0, -1, 1, INT64_MIN, input.take<std::int64_t>()};
    value = corners[input.below(8) % 5];
  }
  const PyHandle array = python.call(
      "make", {python.bytes(values.data(), 8 * values.size()), real::text(isDate ? "M8" : "m8"),
               unit, real::integer(static_cast<std::int64_t>(first)),
               real::integer(static_cast<std::int64_t>(second)), real::integer(layout)});
  PyArguments result = {array, unit};
  const auto add = [&](const auto&... columns) { (result.push_back(tuple(columns)), ...); };
  if (isDate) {
    const Datetime64ArrayComponents parts(array.get());
    check(parts.isValid(), "valid");
    add(parts.shape().second, parts.natIndices());
    result.push_back(python.eval("date"));
    add(parts.years(), parts.months(), parts.days(), parts.hours(), parts.minutes(),
        parts.seconds(), parts.milliseconds());
  } else {
    const Timedelta64ArrayComponents parts(array.get());
    check(parts.isValid(), "valid");
    add(parts.shape().second, parts.natIndices());
    result.push_back(python.eval("duration"));
    add(parts.hours(), parts.minutes(), parts.seconds(), parts.milliseconds_int(),
        parts.milliseconds());
  }
  check(python.holds("agrees", result), "the components agree");
  check(!exception::pyErrorOccurred(), "no error is pending");
  return 0;
}
