// Dates and durations decomposed and made again, over NumPy arrays of random unit, order, shape and
// strides and over Python's own objects, against NumPy's calendar and the units in Python's
// integers.

#include "host.h"

using namespace fuzz;

namespace {

constexpr char model[] = R"(
import numpy
from datetime import timedelta
from fractions import Fraction
nat = -2**63
day = 86400 * 10**9
scale = {'W': 7 * day, 'D': day, 'h': day // 24, 'm': 60 * 10**9, 's': 10**9, 'ms': 10**6,
         'us': 1000, 'ns': 1, 'ps': Fraction(1, 10**3), 'fs': Fraction(1, 10**6),
         'as': Fraction(1, 10**9), 'Y': 31556952 * 10**9, 'M': 30 * day}

def make(data, kind, unit, first, second, layout, objects):
  # A hundred thousand years; what a datetime holds; what a double holds; all that there is.
  bound = (min(2**61, int(10**5 * scale['Y'] / scale[unit])) if kind == 'M8' else
           2**61 if unit in ('h', 'm', 's', 'ms') else 2**53)
  if objects: bound = 60 * 10**15
  numbers = numpy.frombuffer(data, 'i8')
  numbers = numpy.where(numbers == nat, nat, numbers % (2 * bound) - bound)
  array = numbers.astype('%s[%s]' % (kind, unit)).reshape(first, second, order='CF'[layout & 1])
  if layout & 2: array = array.T
  if layout & 4: array = array[::-1]
  if layout & 8: array = array[:, ::-2]
  if layout & 16: array = array.astype(array.dtype.newbyteorder())
  if layout & 32: array = array[0]
  if layout & 64: array = array[..., None]
  if layout & 128: array = array[(0,) * array.ndim]
  return array
def flat(array): return numpy.asarray(array).flatten('F')
def element(array, index): return flat(array)[index % array.size:][:1].reshape(())
def as_objects(array): return numpy.asarray(array).astype('O')
def present(array): return flat(array)[~numpy.isnat(flat(array))]
def first_is_none(array): return array.item(0) is None

def date(value, unit):  # by NumPy's calendar
  moment = numpy.datetime64(value, unit)
  year, month, date = (moment.astype('M8[%s]' % each) for each in 'YMD')
  days = (year.astype('i8') + 1970, (month - year).astype('i8') + 1, (date - month).astype('i8') + 1)
  second, rest = divmod(0 if unit in ('Y', 'M') else value * scale[unit] % day, 10**9)
  return tuple(map(int, days)) + (second // 3600, second // 60 % 60, second % 60, rest / 1e6)
def duration(value, unit):
  field = {'h': 0, 'm': 1, 's': 2, 'ms': 3}.get(unit, 4)
  result = [0] * 5
  result[field] = value if field < 4 else float(Fraction(value * scale[unit]) / 10**6)
  return tuple(result)
def timedelta_object(value, unit):
  span = timedelta(microseconds=value)
  return span.days * 24, 0, span.seconds, 0, span.microseconds / 1000
def timedelta_in_list(value, unit): return timedelta_object(value, unit)[::2]

def agrees(rule, unit, array, shape, nats, *columns):
  ticks = flat(array.astype(array.dtype.newbyteorder('='))).view('i8').tolist()
  rows = [rule(tick, unit) if tick != nat else (0,) * len(columns) for tick in ticks]
  return (shape == array.shape and list(nats) == [tick == nat for tick in ticks]
          and list(zip(*columns)) == rows)
def remade(dates, made):
  return ([each.replace(tzinfo=None) for each in made] == dates and
          [each.utcoffset() for each in made] == ([None, timedelta(hours=-5.5)] * len(made))[:len(made)])
)";

template <class Number>
PyHandle tuple(const std::vector<Number>& numbers) {
  constexpr bool isDouble = std::is_same_v<Number, double>;
  PyArguments items;
  for (const Number each : numbers) {
    items.push_back(isDouble ? pyCreateFloat(static_cast<double>(each))
                             : pyCreateLong(static_cast<std::int64_t>(each)));
  }
  return pyTupleCreate(items);
}

using Shape = std::vector<std::uint64_t>;
using Nats = std::vector<bool>;

/// What the model says of an array.
struct Expectation {
  Host& python;
  PyHandle rule, unit;

  template <class... Columns>
  void holds(const PyHandle& array, const Shape& shape, const Nats& nats,
             const Columns&... columns) const {
    check(python.holds("agrees", {rule, unit, array, tuple(shape), tuple(nats), tuple(columns)...}),
          "the components");
  }
  template <class... Numbers>
  void holdsForOne(const PyHandle& array, bool isNaT, Numbers... numbers) const {
    holds(array, {}, {isNaT}, std::vector<Numbers>{numbers}...);
  }
};

void decomposeDates(const Expectation& expected, const PyHandle& array, const PyHandle& input,
                    const PyHandle& element, const PyHandle& one) {
  if (input) {
    const Datetime64ArrayComponents all(input.get());
    check(all.isValid(), "valid");
    expected.holds(array, all.shape().second, all.natIndices(), all.years(), all.months(),
                   all.days(), all.hours(), all.minutes(), all.seconds(), all.milliseconds());
  }
  if (one) {
    const Datetime64Component date(one.get());
    check(date.isValid(), "valid");
    expected.holdsForOne(element, date.isNaT(), date.year(), date.month(), date.day(), date.hour(),
                         date.minute(), date.second(), date.millisecond());
  }
}

void decomposeDurations(const Expectation& expected, const PyHandle& array, const PyHandle& input,
                        const PyHandle& element, const PyHandle& one) {
  if (input) {
    const Timedelta64ArrayComponents all(input.get());
    check(all.isValid(), "valid");
    expected.holds(array, all.shape().second, all.natIndices(), all.hours(), all.minutes(),
                   all.seconds(), all.milliseconds_int(), all.milliseconds());
  }
  if (one) {
    const Timedelta64Component span(one.get());
    check(span.isValid(), "valid");
    expected.holdsForOne(element, span.isNaT(), span.hour(), span.minute(), span.second(),
                         span.millisecond_int(), span.millisecond());
  }
}

void decomposeLists(bool isDate, Expectation expected, const PyHandle& present) {
  Host& python = expected.python;
  const PyHandle objects = python.call("list", {python.call("as_objects", {present})});
  const Shape shape = {pySequenceLength(objects.get())};
  const Nats none(shape[0]);
  if (!isDate) {
    const TimedeltaListComponent spans(objects.get());
    expected.rule = python.eval("timedelta_in_list");
    expected.holds(present, shape, none, spans.hours(), spans.seconds(), spans.milliseconds());
    return;
  }
  const DatetimeListComponent dates(objects.get());
  expected.holds(present, shape, none, dates.years(), dates.months(), dates.days(), dates.hours(),
                 dates.minutes(), dates.seconds(), dates.milliseconds());
  PyArguments made;
  for (std::size_t i = 0; i < shape[0]; ++i) {
    std::vector<double> host;
    for (const auto& column :
         {dates.years(), dates.months(), dates.days(), dates.hours(), dates.minutes()})
      host.push_back(static_cast<double>(column[i]));
    host.insert(host.end(), {dates.seconds()[i] + dates.milliseconds()[i] / 1000, -19800000});
    made.push_back(pyCreateDatetime(host, i % 2 == 0));
  }
  check(python.holds("remade", {objects, pyTupleCreate(made)}), "made again");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static Host python(model, "numpy");
  Input input{data, size};
  const bool isDate = input.take() % 2 == 0;
  const bool asObjects = input.take() % 4 == 0;
  const char* const units[] = {"Y",  "M",  "W",  "D",  "h",  "m", "s",
                               "ms", "us", "ns", "ps", "fs", "as"};
  const PyHandle unit =
      real::text(asObjects ? "us" : units[input.below(isDate ? 10 : std::size(units))]);
  const std::size_t first = 1 + input.below(4), second = 1 + input.below(4);
  const auto layout = input.take();
  std::vector<std::int64_t> values(first * second);
  for (std::int64_t& value : values) {
    const std::int64_t corners[] = {0, -1, 1, INT64_MIN, input.take<std::int64_t>()};
    value = corners[input.below(8) % 5];
  }
  const auto number = [](std::size_t value) { return pyCreateULong(value); };
  const PyHandle array = python.call(
      "make", {python.bytes(values.data(), 8 * values.size()), real::text(isDate ? "M8" : "m8"),
               unit, number(first), number(second), number(layout), pyCreateBool(asObjects)});

  const char* const rule = isDate ? "date" : asObjects ? "timedelta_object" : "duration";
  const Expectation expected = {python, python.eval(rule), unit};
  const auto decompose = isDate ? decomposeDates : decomposeDurations;
  const PyHandle element = python.call("element", {array, number(input.take())});
  if (!asObjects) {
    decompose(expected, array, array, element, element);
  } else {
    // The first object tells the kind.
    const auto objectsOf = [&](const PyHandle& each) {
      const PyHandle objects = python.call("as_objects", {each});
      return python.holds("first_is_none", {objects}) ? PyHandle() : objects;
    };
    decompose(expected, array, objectsOf(array), element, objectsOf(element));
    decomposeLists(isDate, expected, python.call("present", {array}));
  }
  check(!pyErrorOccurred(), "no error is pending");
  return 0;
}
