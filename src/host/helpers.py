# What the front door has Python do: the functions that the table in runtime.h names, defined in a
# module of their own when a session starts. Modules are imported where they are used: a start should
# not wait for them, and some can be imported only once in a process.
import builtins, importlib, sys
from builtins import len, next, set
from operator import contains, delitem, index

# On Windows, conda's environments keep libraries in a folder that their activation puts into PATH; a
# host was not started from there.
if sys.platform == 'win32':
    import os
    folder = os.path.join(sys.prefix, 'Library', 'bin')
    if hasattr(os, 'add_dll_directory') and os.path.isdir(folder):
        os.add_dll_directory(folder)

none = None
append = list.append

class Modules:
    def __getattr__(self, name):
        setattr(self, name, importlib.import_module(name))
        return getattr(self, name)

lib = Modules()
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
    if trace is not None:
        value = value.with_traceback(trace)
    trace = value.__traceback__
    while trace is not None and trace.tb_frame.f_code.co_filename == HERE:
        trace = trace.tb_next
    try:
        message = display(value)
    except Exception:
        message = '<unprintable %s object>' % type(value).__name__
    lines = lib.traceback.format_exception(type(value), value, trace)
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
    return lib.datetime.timedelta(microseconds=count)

def duration_of(value):
    if isinstance(value, lib.datetime.timedelta):
        return (value.days * 86400 + value.seconds) * 1000000 + value.microseconds
    return numpy_count(value, 'm', 'a duration')

def epoch():
    return lib.datetime.datetime(1970, 1, 1, tzinfo=lib.datetime.timezone.utc)

def make_instant(count):
    return epoch() + make_duration(count)

def instant_of(value):
    if not isinstance(value, lib.datetime.datetime):
        return numpy_count(value, 'M', 'a date with its time')
    if value != value:
        raise ValueError('not-a-time has no value')
    if value.tzinfo is None:
        value = value.replace(tzinfo=lib.datetime.timezone.utc)
    return duration_of(value - epoch())

ATTOSECONDS = {'as': 1, 'fs': 10 ** 3, 'ps': 10 ** 6, 'ns': 10 ** 9, 'us': 10 ** 12, 'ms': 10 ** 15,
               's': 10 ** 18, 'm': 60 * 10 ** 18, 'h': 3600 * 10 ** 18, 'D': 86400 * 10 ** 18,
               'W': 604800 * 10 ** 18}

def numpy_count(value, kind, wanted):
    if type(value).__module__ != 'numpy' or value.dtype.kind != kind or value.ndim != 0:
        refuse(value, wanted)
    if value != value:
        raise ValueError('not-a-time has no value')
    if kind == 'M' and lib.numpy.datetime_data(value.dtype)[0] in 'YM':
        value = value.astype('M8[D]')
    unit, step = lib.numpy.datetime_data(value.dtype)
    if unit not in ATTOSECONDS:
        refuse(value, wanted + ' of a known length')
    return int(value.astype('i8')) * step * ATTOSECONDS[unit] // 10 ** 12

def block(value, code):
    value = getattr(value, 'to_numpy', lambda: value)()
    if 'numpy' in sys.modules and isinstance(value, (lib.numpy.ndarray, lib.numpy.generic)):
        value = lib.numpy.asarray(value)
        if value.dtype.kind in 'biuf':
            return numpy_block(value, lib.numpy.dtype(code))
        value = value.ravel('F').tolist()
    if type(value) is not lib.array.array or not same_kind(value, lib.array.array(code)):
        value = array_of(value, code)
    address, count = value.buffer_info()
    return value, address, count, (count,)

def numpy_block(value, wanted):
    flat = value.ravel('F')
    if value.dtype != wanted:
        if value.dtype.kind == 'f' and wanted.kind != 'f':
            raise TypeError('an array of %s is not one of integers' % value.dtype)
        with lib.numpy.errstate(all='ignore'):
            cast = flat.astype(wanted)
        if wanted.kind == 'f':
            fits = (lib.numpy.isfinite(cast) | ~lib.numpy.isfinite(flat)).all()
        else:
            fits = ((cast == flat) & ((cast < 0) == (flat < 0))).all()
        if not fits:
            raise OverflowError('an array of %s does not fit %s' % (value.dtype, wanted))
        flat = cast
    flat = lib.numpy.require(flat, requirements='CA')
    return flat, flat.__array_interface__['data'][0], flat.size, value.shape

def same_kind(left, right):
    kinds = [('f' if a.typecode in 'fd' else a.typecode in 'uw' or a.typecode.islower(), a.itemsize)
             for a in (left, right)]
    return kinds[0] == kinds[1] and left.typecode not in 'uw'

def array_of(value, code):
    if isinstance(value, str):
        refuse(value, 'a sequence of numbers')
    if isinstance(value, (bytes, bytearray, memoryview)):
        view = memoryview(value)
        if code == view.format == 'B':
            return lib.array.array(code, view.tobytes())
        value = view.tolist()
    if code != 'f':
        return lib.array.array(code, value)
    exact = lib.array.array('d', value)
    result = lib.array.array(code, exact)
    for narrow, wide in zip(result, exact):
        if narrow - narrow != 0 and wide - wide == 0:
            raise OverflowError('%r does not fit a float of 32 bits' % wide)
    return result

def ndarray(view, code, shape):
    values = lib.numpy.frombuffer(view, code) if len(view) else lib.numpy.empty(0, code)
    return values.reshape(shape, order='F').copy('F')

def split_texts(texts, missing):
    if isinstance(texts, str):
        texts = texts.split('\0')
        texts.pop()
    for position in missing:
        texts[position] = None
    return texts

def join_texts(values):
    is_missing = getattr(sys.modules.get('pandas'), 'isna', lambda text: text != text)
    texts, missing = values.tolist() + [''], []
    try:
        joined = '\0'.join(texts)
    except TypeError:
        for i, text in enumerate(texts):
            if not isinstance(text, str) and (text is None or is_missing(text)):
                texts[i] = ''
                missing.append(i)
        joined = '\0'.join(texts)
    texts.pop()
    return joined if joined.count('\0') == len(texts) else None, len(texts), missing, texts

def text_array(texts, shape):
    # NumPy's own type for texts has no missing ones, and drops zeros at the end.
    exact = all(text is not None and text[-1:] != '\0' for text in texts)
    return lib.numpy.array(texts, str if exact else object).reshape(shape, order='F')

def texts_of(value):
    if isinstance(value, str):
        refuse(value, 'an array of strings')
    value = lib.numpy.asarray(value)
    return value.ravel('F').astype(object), value.shape

def frame(columns):
    data = {}
    for name, kind, values, mask in columns:
        if kind == 's':
            data[name] = lib.numpy.array(values, object)
            continue
        values = ndarray(values, kind, -1)
        if len(mask):
            make = lib.pandas.arrays.BooleanArray if kind == '?' else lib.pandas.arrays.IntegerArray
            values = make(values, ndarray(mask, '?', -1))
        data[name] = values
    return lib.pandas.DataFrame(data, copy=False)

def columns(frame):
    if isinstance(frame, lib.pandas.Series):
        frame = frame.to_frame()
    if not isinstance(frame, lib.pandas.DataFrame):
        refuse(frame, 'a pandas DataFrame')
    if type(frame.index) is not lib.pandas.RangeIndex or frame.index.name is not None:
        frame = frame.reset_index()
    return [column(str(label), series) for label, series in frame.items()]

# By NumPy's letter: the kind of the column, its block, what pandas makes it of, and with what where
# a value is missing.
KINDS = {'b': ('?', 'B', 'bool', False), 'i': ('q', 'q', 'int64', 0),
         'u': ('q', 'q', 'uint64', 0), 'f': ('d', 'd', 'float64', float('nan'))}

def column(name, series):
    if isinstance(series.dtype, lib.pandas.CategoricalDtype):
        series = series.astype(object)
    if series.dtype == object:
        series = inferred(name, series)
    dtype = series.dtype
    if dtype.kind in KINDS:
        kind, code, exact, filler = KINDS[dtype.kind]
        if isinstance(dtype, lib.numpy.dtype):
            return name, kind, block(series, code), None
        mask = block(series.isna().to_numpy(bool), 'B')
        return name, kind, block(series.to_numpy(exact, na_value=filler), code), mask
    if dtype.kind == 'M' and not isinstance(dtype, lib.numpy.dtype):
        series = series.dt.tz_convert('UTC').dt.tz_localize(None)
    if dtype.kind in 'Mm':
        return name, dtype.kind, block(series.to_numpy(dtype.kind + '8[us]').view('i8'), 'q'), None
    if lib.pandas.api.types.is_string_dtype(dtype):
        return name, 's', series.to_numpy(object), len(series)
    raise TypeError('column %r of %s cannot be read' % (name, dtype))

INFERRED = {'boolean': 'boolean', 'integer': 'Int64', 'floating': 'float64',
            'mixed-integer-float': 'float64', 'string': object, 'empty': object}

def inferred(name, series):
    kind = lib.pandas.api.types.infer_dtype(series, skipna=True)
    if kind in INFERRED:
        return series.astype(INFERRED[kind], copy=False)
    if kind in ('datetime', 'datetime64'):
        return lib.pandas.to_datetime(series, utc=True)
    if kind in ('timedelta', 'timedelta64'):
        return lib.pandas.to_timedelta(series)
    raise TypeError('column %r of %s values cannot be read' % (name, kind))

RETURNED, RAISED, FAILED, ELSEWHERE, CLOSED = range(5)
REASONS = {ELSEWHERE: ['the host can be called only on the thread that is inside a call'],
           CLOSED: ['the session of this function is closed']}

def connect(call_address, drop_address):
    global call, drop
    make, size, value = lib.ctypes.PYFUNCTYPE, lib.ctypes.c_size_t, lib.ctypes.py_object
    call = make(lib.ctypes.c_int, size, value, value)(call_address)
    drop = make(None, size)(drop_address)

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
        raise RuntimeError(*REASONS.get(status, box))

    def __del__(self):
        drop(self.id)

waiting = []
outputs = []

def deliver(receive):
    while waiting and call(0, (), None) != ELSEWHERE:
        receive(*waiting.pop(0))

def redirect(receive):
    while outputs:
        old, new = outputs.pop()
        for name in old:
            new[name].finish()
            setattr(sys, name, old[name])
    if receive is None:
        return

    class Output(lib.io.TextIOBase):
        encoding = 'utf-8'
        errors = 'backslashreplace'

        def __init__(self, is_error):
            self.lock = lib._thread.RLock()
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
