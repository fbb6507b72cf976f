#include "pelion_core/host/convert.h"
#include "state.h"

namespace pelion_core::host::detail {
namespace {

// In the order of `Helper`.
constexpr const char* names[] = {
    "none",       "append",     "find",          "evaluate",    "run",          "describe",
    "iterate",    "next",       "end",           "len",         "contains",     "delitem",
    "represent",  "display",    "truth",         "index",       "items_of",     "set",
    "pairs_of",   "make_duration", "duration_of", "make_instant", "instant_of", "block",
    "ndarray",    "split_texts", "join_texts",   "text_array",  "texts_of",     "frame",
    "columns",    "Function",   "connect",       "redirect"};
static_assert(std::size(names) == static_cast<std::size_t>(Helper::count));

// Modules are imported where they are used: a start should not wait for them, and some can be
// imported only once in a process.
constexpr const char* source = R"(
import builtins, importlib, sys
from builtins import len, next, set
from operator import contains, delitem, index

none = None
append = list.append

HERE = '<pelion_core>'
end = object()

def iterate(value):
    return iter(value), end

def main():
    return importlib.import_module('__main__').__dict__

def find(name):
    parts = name.split('.')
    if not all(part.isidentifier() for part in parts):
        raise ValueError('%r is not a dotted name' % name)
    path = parts.pop(0)
    if hasattr(builtins, path):
        found = getattr(builtins, path)
    else:
        try:
            found = importlib.import_module(path)
        except ModuleNotFoundError as error:
            if error.name != path or parts:
                raise
            raise NameError('name %r is not defined' % path) from None
    for part in parts:
        path += '.' + part
        try:
            found = getattr(found, part)
        except AttributeError as error:
            if not isinstance(found, type(sys)):
                raise
            try:
                found = importlib.import_module(path)
            except ModuleNotFoundError as missing:
                if missing.name != path:
                    raise
                raise error from None
    return found

def evaluate(code):
    return eval(code, main())

def run(code):
    exec(compile(code, '<host>', 'exec'), main())

def escaped(text):
    return text.encode('utf-8', 'backslashreplace').decode('utf-8')

def display(value):
    return escaped(str(value))

def represent(value):
    return escaped(repr(value))

def name_of(cls):
    if cls.__module__ == 'builtins':
        return cls.__qualname__
    return '%s.%s' % (cls.__module__, cls.__qualname__)

def describe(value, trace):
    import traceback
    if trace is not None:
        value = value.with_traceback(trace)
    trace = value.__traceback__
    while trace is not None and trace.tb_frame.f_code.co_filename == HERE:
        trace = trace.tb_next
    try:
        message = display(value)
    except Exception:
        message = '<unprintable %s object>' % type(value).__name__
    lines = traceback.format_exception(type(value), value, trace)
    classes = [name_of(cls) for cls in type(value).__mro__[:-1]]
    return name_of(type(value)), message, escaped(''.join(lines)), classes

def refuse(value, wanted):
    raise TypeError('%s is not %s' % (represent(value), wanted))

def truth(value):
    if type(value).__module__ == 'numpy' and type(value).__name__ in ('bool_', 'bool'):
        return bool(value)
    refuse(value, 'a bool')

def items_of(value):
    if isinstance(value, (str, bytes, bytearray)):
        refuse(value, 'a sequence of values')
    return list(value)

def pairs_of(value):
    if not hasattr(value, 'items'):
        refuse(value, 'a mapping')
    return list(value.items())

def make_duration(count):
    import datetime
    return datetime.timedelta(microseconds=count)

def duration_of(value):
    import datetime
    if isinstance(value, datetime.timedelta):
        return (value.days * 86400 + value.seconds) * 1000000 + value.microseconds
    return numpy_count(value, 'm', 'a duration')

def make_instant(count):
    import datetime
    epoch = datetime.datetime(1970, 1, 1, tzinfo=datetime.timezone.utc)
    return epoch + datetime.timedelta(microseconds=count)

def instant_of(value):
    import datetime
    if isinstance(value, datetime.datetime):
        if value != value:
            raise ValueError('not-a-time has no value')
        if value.tzinfo is None:
            value = value.replace(tzinfo=datetime.timezone.utc)
        epoch = datetime.datetime(1970, 1, 1, tzinfo=datetime.timezone.utc)
        return duration_of(value - epoch)
    return numpy_count(value, 'M', 'a date with its time')

MICROSECONDS = {'W': 604800000000, 'D': 86400000000, 'h': 3600000000, 'm': 60000000, 's': 1000000,
                'ms': 1000, 'us': 1}
PARTS = {'ns': 1000, 'ps': 10 ** 6, 'fs': 10 ** 9, 'as': 10 ** 12}

def numpy_count(value, kind, wanted):
    if type(value).__module__ != 'numpy' or value.dtype.kind != kind or value.ndim != 0:
        refuse(value, wanted)
    if value != value:
        raise ValueError('not-a-time has no value')
    import numpy
    if kind == 'M' and numpy.datetime_data(value.dtype)[0] in 'YM':
        value = value.astype('M8[D]')
    unit, step = numpy.datetime_data(value.dtype)
    count = int(value.astype('i8')) * step
    if unit in PARTS:
        return count // PARTS[unit]
    if unit not in MICROSECONDS:
        refuse(value, wanted + ' of a known length')
    return count * MICROSECONDS[unit]

def block(value, code):
    import array
    value = getattr(value, 'to_numpy', lambda: value)()
    numpy = sys.modules.get('numpy')
    if numpy is not None and isinstance(value, (numpy.ndarray, numpy.generic)):
        value = numpy.asarray(value)
        if value.dtype.kind in 'biuf':
            return numpy_block(numpy, value, numpy.dtype(code))
        value = value.ravel('F').tolist()
    if type(value) is not array.array or not same_kind(value, array.array(code)):
        value = array_of(array, value, code)
    address, count = value.buffer_info()
    return value, address, count, (count,)

def numpy_block(numpy, value, wanted):
    flat = value.ravel('F')
    if value.dtype != wanted:
        if value.dtype.kind == 'f' and wanted.kind != 'f':
            raise TypeError('an array of %s is not one of integers' % value.dtype)
        with numpy.errstate(all='ignore'):
            cast = flat.astype(wanted)
        if wanted.kind == 'f':
            fits = (numpy.isfinite(cast) | ~numpy.isfinite(flat)).all()
        else:
            fits = ((cast == flat) & ((cast < 0) == (flat < 0))).all()
        if not fits:
            raise OverflowError('an array of %s does not fit %s' % (value.dtype, wanted))
        flat = cast
    flat = numpy.ascontiguousarray(flat)
    return flat, flat.__array_interface__['data'][0], flat.size, value.shape

def same_kind(left, right):
    kinds = [('f' if a.typecode in 'fd' else a.typecode in 'uw' or a.typecode.islower(), a.itemsize)
             for a in (left, right)]
    return kinds[0] == kinds[1] and left.typecode not in 'uw'

def array_of(array, value, code):
    if isinstance(value, str):
        refuse(value, 'a sequence of numbers')
    if isinstance(value, (bytes, bytearray, memoryview)):
        view = memoryview(value)
        if code == view.format == 'B':
            return array.array(code, view.tobytes())
        value = view.tolist()
    if code != 'f':
        return array.array(code, value)
    exact = array.array('d', value)
    result = array.array(code, exact)
    for narrow, wide in zip(result, exact):
        if narrow - narrow != 0 and wide - wide == 0:
            raise OverflowError('%r does not fit a float of 32 bits' % wide)
    return result

def ndarray(view, code, shape):
    import numpy
    if len(view) == 0:
        return numpy.empty(shape, code, 'F').reshape(shape)
    return numpy.frombuffer(view, code).reshape(shape, order='F').copy('F')

def split_texts(joined, separator, count, missing):
    texts = joined.split(separator) if count else []
    for position in missing:
        texts[position] = None
    return texts

def join_texts(texts):
    is_missing = getattr(sys.modules.get('pandas'), 'isna', lambda texts: texts != texts)
    missing = []
    texts = texts.tolist()
    try:
        joined = '\0'.join(texts)
    except TypeError:
        for i, text in enumerate(texts):
            if not isinstance(text, str) and (text is None or is_missing(text)):
                texts[i] = ''
                missing.append(i)
        joined = '\0'.join(texts)
    separator = '\0'
    if joined.count(separator) >= max(len(texts), 1):
        separator = next(chr(i) for i in range(1, 0xD800) if chr(i) not in joined)
        joined = separator.join(texts)
    return joined, separator, len(texts), missing

def text_array(texts, shape):
    import numpy
    # NumPy's own type for texts has no missing ones, and drops zeros at the end.
    exact = all(text is not None and text[-1:] != '\0' for text in texts)
    return numpy.array(texts, str if exact else object).reshape(shape, order='F')

def texts_of(value):
    import numpy
    if isinstance(value, str):
        refuse(value, 'an array of texts')
    value = numpy.asarray(value)
    return value.ravel('F').astype(object), value.shape

def frame(columns):
    import numpy, pandas
    data = {}
    for name, kind, values, mask in columns:
        if kind == 's':
            data[name] = numpy.array(values, object)
            continue
        values = numpy.frombuffer(values, kind).copy() if len(values) else numpy.empty(0, kind)
        if len(mask):
            make = pandas.arrays.BooleanArray if kind == '?' else pandas.arrays.IntegerArray
            values = make(values, numpy.frombuffer(mask, '?').copy())
        data[name] = values
    return pandas.DataFrame(data, copy=False)

def columns(frame):
    import pandas
    if isinstance(frame, pandas.Series):
        frame = frame.to_frame()
    if not isinstance(frame, pandas.DataFrame):
        refuse(frame, 'a pandas DataFrame')
    if type(frame.index) is not pandas.RangeIndex or frame.index.name is not None:
        frame = frame.reset_index()
    return [column(str(label), series) for label, series in frame.items()]

# What NumPy calls a kind: the column's, what it is read as, what stands for a missing value.
KINDS = {'b': ('?', 'B', 0), 'i': ('q', 'q', 0), 'u': ('q', 'q', 0), 'f': ('d', 'd', float('nan'))}

def column(name, series):
    import numpy, pandas
    if isinstance(series.dtype, pandas.CategoricalDtype):
        series = series.astype(object)
    if series.dtype == object:
        series = inferred(name, series)
    dtype = series.dtype
    if dtype.kind in KINDS:
        kind, code, filler = KINDS[dtype.kind]
        mask = None
        values = series
        if not isinstance(dtype, numpy.dtype):
            missing = series.isna().to_numpy(bool)
            mask = block(missing, 'B') if missing.any() else None
            exact = 'uint64' if dtype.kind == 'u' else {'?': 'bool', 'q': 'int64', 'd': 'float64'}[kind]
            values = series.to_numpy(exact, na_value=filler) if mask else series.to_numpy(exact)
        return name, kind, block(values, code), mask
    if dtype.kind == 'M' and getattr(dtype, 'tz', None) is not None:
        series = series.dt.tz_convert('UTC').dt.tz_localize(None)
    if dtype.kind in 'Mm':
        values = series.to_numpy(dtype.kind + '8[us]').view('i8')
        return name, dtype.kind, block(values, 'q'), None
    if pandas.api.types.is_string_dtype(dtype):
        return name, 's', series.to_numpy(object), len(series)
    raise TypeError('column %r of %s cannot be read' % (name, dtype))

def inferred(name, series):
    import pandas
    kind = pandas.api.types.infer_dtype(series, skipna=True)
    if kind in ('string', 'empty'):
        return series
    if kind in ('boolean', 'integer'):
        return series.astype('boolean' if kind == 'boolean' else 'Int64')
    if kind in ('floating', 'mixed-integer-float'):
        return series.astype('float64')
    if kind in ('datetime', 'datetime64'):
        return pandas.to_datetime(series, utc=True)
    if kind in ('timedelta', 'timedelta64'):
        return pandas.to_timedelta(series)
    raise TypeError('column %r of %s values cannot be read' % (name, kind))

RETURNED, RAISED, FAILED, ELSEWHERE, CLOSED = range(5)

def connect(call_address, drop_address):
    import ctypes
    global call, drop
    call = ctypes.PYFUNCTYPE(ctypes.c_int, ctypes.c_size_t, ctypes.py_object, ctypes.py_object)(
        call_address)
    drop = ctypes.PYFUNCTYPE(None, ctypes.c_size_t)(drop_address)

class Function:
    __slots__ = ('id', '__weakref__')

    def __init__(self, id):
        self.id = id

    def __call__(self, *arguments):
        box = []
        status = call(self.id, arguments, box)
        if status == RETURNED:
            return box.pop()
        if status == RAISED:
            raise box.pop()
        if status == FAILED:
            raise RuntimeError(*box)
        if status == ELSEWHERE:
            raise RuntimeError('the host can be called only on the thread that is inside a call')
        raise RuntimeError('the session of this function is closed')

    def __del__(self):
        drop(self.id)

waiting = []
outputs = []

def deliver(receive):
    while waiting and call(0, (), None) != ELSEWHERE:
        receive(*waiting.pop(0))

def redirect(receive):
    import io
    while outputs:
        old, new = outputs.pop()
        for name in old:
            new[name].finish()
            setattr(sys, name, old[name])
    if receive is None:
        return
    import _thread

    class Output(io.TextIOBase):
        encoding = 'utf-8'
        errors = 'backslashreplace'

        def __init__(self, is_error):
            self.lock = _thread.RLock()
            self.partial = ''
            self.is_error = is_error

        def writable(self):
            return True

        def write(self, text):
            if not isinstance(text, str):
                refuse(text, 'a str')
            with self.lock:
                *lines, self.partial = (self.partial + text).split('\n')
                waiting.extend((escaped(line), self.is_error) for line in lines)
            deliver(receive)
            return len(text)

        def finish(self):
            if self.partial:
                self.write('\n')

    old = {name: getattr(sys, name) for name in ('stdout', 'stderr')}
    new = {name: Output(name == 'stderr') for name in old}
    outputs.append((old, new))
    for name in new:
        setattr(sys, name, new[name])
)";

}  // namespace

void defineHelpers() {
  const Owned space(api->PyDict_New());
  api->PyObject_SetItem(space, toPython("__name__"), toPython("<pelion_core>"));
  const Owned builtins(api->importBuiltins());
  const auto call = [&](const char* name, std::initializer_list<PyObject*> arguments) {
    const Owned callable(api->PyObject_GetAttrString(builtins, name));
    return Owned(api->PyObject_Call(callable, makeTuple(arguments), nullptr));
  };
  call("exec", {call("compile", {toPython(source), toPython("<pelion_core>"), toPython("exec")}),
                space});
  auto helper = state().helpers.begin();
  for (const char* const name : names) {
    *helper++ = Owned(api->PyObject_GetItem(space, toPython(name)));
  }
}

}  // namespace pelion_core::host::detail
