"""The rows of the benchmark: what every contender does, declared once.

A contender has operations by the names of the rows. It is given the size and the subject, statements
that leave in `x` what the row works on, of `n` elements, and does not measure that.
"""
from typing import NamedTuple, Optional

AIMED_AT = 100_000


class Aim(NamedTuple):
    """It takes at most `limit` times what `contender` takes for this row (or for `row`). Of a
    column, the aim is for AIMED_AT elements and more, where the cost of a call no longer counts."""
    limit: float
    contender: str
    reference: str
    row: Optional[str] = None


FLAT = Aim(1.1, "ours", "the flat functions")


class Row(NamedTuple):
    name: str
    title: str
    subject: str = ""
    size: Optional[int] = 1  # None: every size that is asked for
    aim: Optional[Aim] = None
    front: Optional[Aim] = FLAT  # the same for the front door


def column(name, title, subject="", aim=None):
    return Row(name, title, "import datetime, numpy; " + subject, None, aim)


UTC = "datetime.datetime(2024, 2, 29, tzinfo=datetime.timezone.utc)"
OTHER = "datetime.datetime(2024, 2, 29, tzinfo=datetime.timezone(datetime.timedelta(hours=1)))"

TEXTS = "texts = ['text %d' % i for i in range(n)]; "
WORDS = "texts = ['word %d' % (i * i % 20) for i in range(n)]; "
FRAME = "import pandas; x = pandas.DataFrame({'c%d' % i: texts for i in range(10)})"

# Of what is there already: arrays of numbers, one long string for each column of strings.
PANDAS = Aim(1.5, "numpy", "pandas, of NumPy arrays")
SPLIT = Aim(1.5, "numpy", "split or joined in Python")

START = Row("start", "a process that gets Python ready and ends", front=None)

GROUPS = {
    "Values made and released": [
        Row("make_bool", "bool"),
        Row("make_integer", "int of 64 bits"),
        Row("make_real", "float"),
        Row("make_complex", "complex"),
        Row("make_none", "None"),
        Row("make_text", "str of 20 characters, UTF-8"),
        Row("make_wide_text", "str of 20 characters, UTF-16"),
    ],
    "Values read": [
        Row("read_bool", "bool", "x = True"),
        Row("read_integer", "int", "x = 123456789"),
        Row("read_real", "float", "x = 1234.5"),
        Row("read_complex", "complex", "x = 1234.5 + 2j"),
        Row("read_text", "str, its UTF-8 in place", "x = 'twenty characters ok'"),
        Row("copy_text", "str, a copy as UTF-8", "x = 'twenty characters ok'"),
        Row("read_wide_text", "str, a copy as UTF-16", "x = 'twenty characters ok'"),
    ],
    "Containers": [
        Row("tuple_10", "a tuple of ten", "x = tuple(map(float, range(10)))"),
        Row("dict_10", "a dictionary of ten",
            "x = tuple(v for i in range(10) for v in (str(i), float(i)))"),
        Row("items", "each item of a list of 1000", "x = list(map(float, range(1000)))", 1000),
        Row("dict_get", "an item of a dictionary", "x = ({'a': 1.0, 'b': 2.0}, 'b')"),
        Row("dict_set", "an item of a dictionary set", "x = ({'a': 1.0, 'b': 2.0}, 'b', 3.0)"),
    ],
    "Members and calls": [
        Row("member", "getattr(math, 'hypot')", "import math as x"),
        Row("member_absent", "getattr, absent: the error thrown and dropped", "import math as x",
            front=None),
        Row("has_member", "hasattr, present", "import math as x"),
        Row("has_member_absent", "hasattr, absent", "import math as x"),
        Row("set_member", "setattr", "import types; x = (types.SimpleNamespace(), 'value', 2.0)"),
        Row("import_member", "import math, and its hypot"),
        Row("call_0", "float()", "x = (float,)"),
        Row("call_2", "math.hypot(3.0, 4.0)", "import math; x = (math.hypot, 3.0, 4.0)"),
        Row("call_values", "math.hypot(3.0, 4.0), of values and read", "from math import hypot as x"),
        Row("call_keyword", "int('ff', base=16)", "x = (int, 'ff', 'base', 16)"),
        Row("call_keyword_values", "int('ff', base=16), of values and read", "x = int"),
        Row("text_of", "str(1234.5)", "x = 1234.5"),
    ],
    "Type tests": [
        Row("is_real", "is a float", "x = 1234.5"),
        Row("is_instance", "isinstance(1234.5, float)", "x = (1234.5, float)"),
        Row("is_numeric_array", "is an array.array", "import array; x = array.array('d', [1])"),
        Row("is_datetime", "is a datetime.datetime",
            "import datetime; x = datetime.datetime(2024, 2, 29)"),
    ],
    "Dotted names": [
        Row("name_1", "py.len"),
        Row("name_2", "py.math.hypot",
            aim=Aim(1.6, "raw_kept", "two imports and a look-up", "imports")),
        Row("imports", "  what bounds it: two imports and a look-up"),
        Row("name_3", "py.os.path.join"),
        Row("name_4", "py.xml.dom.minidom.parseString"),
    ],
    "Blocks and frames": [
        Row("memcpy", "8 MB copied by memcpy", size=1_000_000),
        Row("block_in", "8 MB of double into Python",
            "import numpy; x = numpy.full(n, 1234.5)", 1_000_000),
        Row("block_out", "8 MB of double seen in place",
            "import array; x = array.array('d', [1]) * n", 1_000_000),
        Row("block_copy", "8 MB of double copied out",
            "import array; x = array.array('d', [1]) * n", 1_000_000),
        Row("frame_in", "10 columns of double into a pandas frame",
            "import numpy, pandas; x = [numpy.full(n, 1234.5)] * 10", 100_000, front=PANDAS),
        Row("frame_out", "10 columns of double out of a pandas frame",
            "import numpy, pandas; "
            "x = pandas.DataFrame({'c%d' % i: numpy.full(n, 1234.5) for i in range(10)})", 100_000,
            front=PANDAS),
        Row("texts_in", "10 columns of strings, all different, into a frame",
            TEXTS + "x = '\\n'.join(texts)", 100_000, front=SPLIT),
        Row("texts_out", "10 columns of strings, all different, out of a frame",
            TEXTS + FRAME, 100_000, front=SPLIT),
        Row("words_in", "10 columns of strings, twenty different, into a frame",
            WORDS + "x = '\\n'.join(texts)", 100_000, front=SPLIT),
        Row("words_out", "10 columns of strings, twenty different, out of a frame",
            WORDS + FRAME, 100_000, front=SPLIT),
    ],
    "Columns of dates and durations": [
        column("timedelta64_create", "pyCreateTimedelta64", "x = numpy.full(n, 1234.5)",
               Aim(5, "raw_kept", "one block of counts, viewed and copied by NumPy")),
        column("datetime64_create", "pyCreateDatetime64, texts",
               "x = ['2024-02-29T12:34:56.789'] * n",
               Aim(1.3, "numpy", "tuple(map(numpy.datetime64, texts)) and numpy.array")),
        column("datetime64_array", "Datetime64ArrayComponents, M8[ns]",
               "x = (numpy.arange(n) * (10**18 // n)).astype('M8[ns]')",
               Aim(0.35, "numpy", "NumPy's arithmetic")),
        column("datetime64_objects", "Datetime64ArrayComponents, objects",
               "x = numpy.arange(n).astype('M8[s]').astype(object)",
               Aim(1.2, "numpy", "astype('M8[us]')")),
        column("timedelta64_array", "Timedelta64ArrayComponents, m8[us]",
               "x = numpy.arange(n).astype('m8[us]')",
               Aim(4, "numpy", "tobytes and one pass")),
        column("timedelta64_objects", "Timedelta64ArrayComponents, objects",
               "x = numpy.arange(n).astype('m8[us]').astype(object)",
               Aim(1.2, "numpy", "astype('m8[us]')")),
        column("datetime_list", "DatetimeListComponent, one zone", "x = [%s] * n" % UTC,
               Aim(1.3, "numpy", "operator.attrgetter over the list")),
        column("datetime_list_zones", "DatetimeListComponent, zones alternating",
               "x = [%s, %s] * (n // 2)" % (UTC, OTHER),
               Aim(1.5, "ours", "one zone", "datetime_list")),
        column("timedelta_list", "TimedeltaListComponent",
               "x = [datetime.timedelta(1, 2, 3)] * n",
               Aim(1.6, "raw_kept", "three attributes read in the C API")),
        column("each_is_datetime", "pyEachObjTypeOfListIsDatetime", "x = [%s] * n" % UTC,
               Aim(2, "raw_kept", "PyObject_IsInstance for each")),
        column("each_is_timedelta", "pyEachObjTypeOfListIsTimeDelta",
               "x = [datetime.timedelta(1, 2, 3)] * n",
               Aim(2, "raw_kept", "PyObject_IsInstance for each")),
    ],
    "Load and start": [START],
}

ROWS = [row for members in GROUPS.values() for row in members]
