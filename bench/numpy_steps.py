"""The work in the steps that NumPy and the standard library offer to Python code, a function for
each row: the contender to whom no value crosses a boundary. It is driven as contender.h says."""
import operator
import sys
import time

import numpy
import pandas

COMPONENTS = operator.attrgetter("year", "month", "day", "hour", "minute", "second", "microsecond",
                                 "tzinfo")


def block_in(x):
    return numpy.array(x)


def frame_in(x):
    return pandas.DataFrame.from_dict(
        {"c%d" % i: numpy.array(column) for i, column in enumerate(x)})


def frame_out(x):
    return [numpy.array(x.get("c%d" % i)) for i in range(10)]


def texts_in(x):
    return pandas.DataFrame(
        {"c%d" % i: numpy.array(x.split("\n"), object) for i in range(10)}, copy=False)


def texts_out(x):
    return ["\n".join(x.get("c%d" % i)) for i in range(10)]


words_in, words_out = texts_in, texts_out


def timedelta64_create(x):
    return numpy.rint(x * 1000).astype("int64").astype("m8[us]")


def datetime64_create(x):
    return numpy.array(tuple(map(numpy.datetime64, x)), dtype="datetime64", order="F")


def datetime64_array(x):
    years, months, days = (x.astype("M8[%s]" % unit) for unit in "YMD")
    nanoseconds = (x - days).astype("int64")
    seconds = nanoseconds // 1000000000
    minutes = seconds // 60
    hours = minutes // 60
    return (years.astype("int64") + 1970, (months - years).astype("int64") + 1,
            (days - months).astype("int64") + 1, hours, minutes - hours * 60,
            seconds - minutes * 60, (nanoseconds - seconds * 1000000000) / 1e6)


def datetime64_objects(x):
    return x.astype("M8[us]")


def timedelta64_array(x):
    return numpy.frombuffer(x.tobytes(), "int64") / 1000


def timedelta64_objects(x):
    return x.astype("m8[us]")


def datetime_list(x):
    return list(map(COMPONENTS, x))


datetime_list_zones = datetime_list


def timedelta_list(x):
    return list(map(operator.attrgetter("days", "seconds", "microseconds"), x))


ROWS = {name: value for name, value in globals().items()
        if getattr(value, "__module__", None) == __name__}


def repeat(step, x, count):
    for _ in range(count):
        step(x)


def main():
    print("NumPy %s in Python %s" % (numpy.__version__, sys.version.split()[0]))
    print(*ROWS, flush=True)
    prepared = {}
    for line in sys.stdin:
        command, name, size, rest = (line.strip().split(" ", 3) + [""] * 3)[:4]
        result = 0
        if command == "prepare":
            variables = {"n": int(size)}
            exec(rest, variables)
            prepared[name, size] = variables["x"]
        elif command == "measure":
            step, x = ROWS[name], prepared[name, size]
            step(x)
            start = time.process_time_ns()
            repeat(step, x, int(rest))
            result = time.process_time_ns() - start
        else:
            prepared.clear()
        print(result, flush=True)


if __name__ == "__main__":
    main()
