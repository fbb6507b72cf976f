"""The rows of the benchmark: what every contender does, declared once.

A contender has operations by the names of the rows. It is given the size and the subject, a
statement that leaves in `x` what the row works on, of `n` elements, and does not measure that.
"""
from typing import NamedTuple, Optional


class Aim(NamedTuple):
    """Ours takes at most `limit` times what `contender` takes for this row (or for `row`). Of a
    column, the aim is for AIMED_AT elements and more, where the cost of a call no longer counts."""
    limit: float
    contender: str
    reference: str
    row: Optional[str] = None


AIMED_AT = 100_000


class Row(NamedTuple):
    name: str
    title: str
    subject: str = ""
    size: Optional[int] = 1  # None: every size that is asked for
    aim: Optional[Aim] = None


def column(name, title, subject="", aim=None):
    return Row(name, title, "import datetime, numpy; " + subject, None, aim)


UTC = "datetime.datetime(2024, 2, 29, tzinfo=datetime.timezone.utc)"
OTHER = "datetime.datetime(2024, 2, 29, tzinfo=datetime.timezone(datetime.timedelta(hours=1)))"

GROUPS = {
    "Dotted names": [
        Row("name_1", "fetch: py.len"),
        Row("name_2", "fetch: py.math.hypot",
            aim=Aim(1.6, "raw_kept", "two imports and a look-up", "imports")),
        Row("imports", "what bounds it: two imports and a look-up"),
        Row("name_3", "fetch: py.os.path.join"),
        Row("name_4", "fetch: py.xml.dom.minidom.parseString"),
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
}

ROWS = [row for rows in GROUPS.values() for row in rows]
