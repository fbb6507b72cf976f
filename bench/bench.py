"""Runs every contender over every row and prints one table; see docs/benchmarks.md.

Every round measures all rows in a new order, and for each row all contenders in a new order, one
right after the other on one core, so that what else the machine does falls on all of them alike. A
figure is the median over the rounds, a ratio the median of the rounds' ratios.
"""
import argparse
import json
import os
import platform
import random
import re
import statistics
import subprocess
import sys
import time

import rows

BATCH = 10_000_000  # nanoseconds that one measurement lasts at least
# Whether freed memory goes back to the system, and comes from there page by page, depends on what a
# process did before; here it stays.
STEADY_MEMORY = {"MALLOC_TRIM_THRESHOLD_": "1073741824", "MALLOC_MMAP_THRESHOLD_": "1073741824"}
SHUFFLED_TOGETHER = 1_000_000  # rows of larger subjects are made, measured and let go one by one


class Contender:
    """A program that obeys contender.h's commands, on one core."""

    def __init__(self, name, title, command, core):
        self.name, self.title, self.command, self.core = name, title, command, core
        self.process = subprocess.Popen(self.command, stdin=subprocess.PIPE, text=True,
                                        stdout=subprocess.PIPE, preexec_fn=self.pin,
                                        env=dict(os.environ, **STEADY_MEMORY))
        self.about = self.process.stdout.readline().strip()
        self.rows = set(self.process.stdout.readline().split())
        unknown = self.rows - {row.name for row in rows.ROWS if row is not rows.START}
        if not self.about or unknown:
            sys.exit("bench: %s does not run, or has unknown rows %s" % (name, unknown or ""))

    def pin(self):
        os.sched_setaffinity(0, {self.core})

    def ask(self, *words):
        print(*words, file=self.process.stdin, flush=True)
        answer = self.process.stdout.readline()
        if not answer:
            sys.exit("bench: %s ended at: %s" % (self.name, words))
        return int(answer)

    def peak(self, row, size):
        """By how many bytes the row raises the memory in use, in a new process that has done it
        once with little."""
        fresh = Contender(self.name, self.title, self.command, self.core)
        fresh.ask("prepare", row.name, 1000, row.subject)
        fresh.ask("measure", row.name, 1000, 1)
        fresh.ask("prepare", row.name, size, row.subject)
        peak = fresh.ask("peak", row.name, size)
        fresh.process.stdin.close()
        fresh.process.wait()
        return peak

    def start(self):
        """Processor time of a process that gets the interpreter ready and ends."""
        process = subprocess.Popen(self.command + ["--start"], preexec_fn=self.pin)
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = status
        return (usage.ru_utime + usage.ru_stime) * 1e9


def contenders(folder, python, core):
    """Those that are there, and the names of the others."""
    program = os.path.join(folder, "bench_%s")
    steps = os.path.join(os.path.dirname(os.path.abspath(__file__)), "numpy_steps.py")
    found, missing = [], []
    for name, title, command in (
            ("ours", "ours", [program % "ours"] + python),
            ("front", "front door", [program % "front"] + python),
            ("ours_kept", "ours, lock kept", [program % "ours"] + python + ["--keep-lock"]),
            ("raw_kept", "C API, lock kept", [program % "raw_kept"]),
            ("raw_handed_over", "C API", [program % "raw_handed_over"]),
            ("pybind11", "pybind11", [program % "pybind11"]),
            ("nanobind", "nanobind", [program % "nanobind"]),
            ("numpy", "NumPy", [program % "python", steps])):
        if os.path.exists(command[0]):
            found.append(Contender(name, title, command, core))
        else:
            missing.append(title)
    return found, missing


class Measurement:
    """One row at one size, by every contender that has it."""

    def __init__(self, row, size, contenders):
        self.row, self.size = row, size
        # With columns the one change of the lock that could be spared does not count.
        self.contenders = [each for each in contenders if row.name in each.rows
                           and (row.size is not None or each.name != "ours_kept")]
        self.counts = {}
        self.samples = {each.name: [] for each in self.contenders}

    def prepare(self):
        for each in self.contenders:
            each.ask("prepare", self.row.name, self.size, self.row.subject)
            count = 1
            while True:
                taken = each.ask("measure", self.row.name, self.size, count)
                if taken >= BATCH / 2:
                    break
                count = max(2 * count, min(10 * count, int(count * BATCH / (taken + 1))))
            self.counts[each.name] = count

    def round(self):
        for each in random.sample(self.contenders, len(self.contenders)):
            count = self.counts[each.name]
            taken = each.ask("measure", self.row.name, self.size, count)
            self.samples[each.name].append(taken / count)


class Start:
    """The row of processes that only load and start Python."""

    row, size = rows.START, 1

    def __init__(self, contenders):
        self.contenders = [each for each in contenders if each.name not in ("ours_kept", "numpy")]
        self.samples = {each.name: [] for each in self.contenders}

    def prepare(self):
        for each in self.contenders:
            each.start()

    def round(self):
        for each in random.sample(self.contenders, len(self.contenders)):
            self.samples[each.name].append(each.start())


def measure(measurements, rounds, contenders):
    together = [each for each in measurements if each.size <= SHUFFLED_TOGETHER]
    alone = [[each] for each in measurements if each.size > SHUFFLED_TOGETHER]
    for group in [together] + alone:
        for each in group:
            each.prepare()
        for done in range(rounds):
            progress("round %d of %d, %d rows" % (done + 1, rounds, len(group)))
            for each in random.sample(group, len(group)):
                each.round()
        for each in contenders:
            each.ask("forget")
    progress("")


def progress(text):
    if sys.stderr.isatty():
        print("\r\033[K" + text, end="", file=sys.stderr, flush=True)


# --- What came out ----------------------------------------------------------------------------


def ratio(ours, theirs):
    return statistics.median(a / b for a, b in zip(ours, theirs))


def results(measurements):
    """What JSON keeps: nanoseconds, and ours as a multiple of the others."""
    by_name = {(each.row.name, each.size): each for each in measurements}
    for each in measurements:
        result = {"row": each.row.name, "title": each.row.title, "size": each.size,
                  "contenders": {}, "aims": []}
        ours = each.samples.get("ours")
        for name, samples in each.samples.items():
            low, _, high = statistics.quantiles(samples, n=4)
            result["contenders"][name] = {
                "median": statistics.median(samples), "quartiles": [low, high],
                "samples": samples, "ratio": ours and ratio(ours, samples)}
        aimed = each.row.size is not None or each.size >= rows.AIMED_AT
        for who, aim in ("ours", each.row.aim), ("front", each.row.front):
            of = aim and by_name.get((aim.row or each.row.name, each.size))
            if of and aimed and who in each.samples and aim.contender in of.samples:
                reached = ratio(each.samples[who], of.samples[aim.contender])
                result["aims"].append({
                    "who": who, "limit": aim.limit, "of": aim.reference, "reached": reached,
                    "contender": aim.contender, "met": reached <= aim.limit})
        yield result


def spread(contender):
    low, high = contender["quartiles"]
    return (high - low) / contender["median"]


def human(nanoseconds):
    for unit, size in (("s", 1e9), ("ms", 1e6), ("µs", 1e3)):
        if nanoseconds >= size:
            return "%.3g %s" % (nanoseconds / size, unit)
    return "%.3g ns" % nanoseconds


def print_table(lines):
    widths = [max(map(len, column)) for column in zip(*lines)]
    for line in lines:
        first, *others = zip(line, widths)
        print(first[0].ljust(first[1]), *(cell.rjust(width) for cell, width in others), sep="  ")
    print()


def cell(name, contender):
    if contender is None:
        return ""
    if name == "ours" or contender["ratio"] is None:
        return human(contender["median"])
    return "%s ×%.2f" % (human(contender["median"]), contender["ratio"])


def print_results(found, all_results):
    print("The lock changes hands at every operation, but where it is kept.\n"
          "A time, and ours as a multiple of it: below ×1 we are faster.\n")
    titles = {row.name: group for group, members in rows.GROUPS.items() for row in members}
    for group in rows.GROUPS:
        members = [each for each in all_results if titles[each["row"]] == group]
        shown = [each for each in found
                 if any(each.name in result["contenders"] for result in members)]
        lines = [[group, "elements"] + [each.title for each in shown]]
        for result in members:
            size = "%d" % result["size"] if result["size"] > 1 else ""
            lines.append([result["title"], size] + [
                cell(each.name, result["contenders"].get(each.name)) for each in shown])
        if members:
            print_table(lines)
    titled = {each.name: each.title for each in found}
    aims = [(result, aim) for result in all_results for aim in result["aims"]]
    memory = [result for result in all_results if "peak" in result]
    if memory:
        print_table([["Memory in use, at its highest", "elements", "MB", "bytes per element"]] + [
            [result["title"], str(result["size"]), "%.1f" % (result["peak"] / 1e6),
             "%.0f" % (result["peak"] / result["size"])] for result in memory])
    if aims:
        print_table([["Aims", "elements", "by", "reached", "aim", "", "as a multiple of"]] + [
            [result["title"], str(result["size"]), titled[aim["who"]], "×%.2f" % aim["reached"],
             "×%.2f" % aim["limit"], "met" if aim["met"] else "NOT MET", aim["of"]] for result, aim in aims])


def machine():
    with open("/proc/cpuinfo", encoding="utf-8") as info:
        model = re.search(r"model name\s*: (.*)", info.read())
    return {"processor": model.group(1) if model else platform.processor(),
            "cores": os.cpu_count(), "system": platform.freedesktop_os_release()["PRETTY_NAME"],
            "kernel": platform.release(), "load": os.getloadavg()[0]}


def sizes(text):
    return [int(float(part)) for part in text.split(",")]


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("folder", help="where the contenders were built")
    parser.add_argument("python", help="runtime library, program and home, separated by colons")
    parser.add_argument("--rows", default="", help="only the rows whose name this expression finds")
    parser.add_argument("--sizes", type=sizes, default=[1000, 100_000],
                        help="elements of a column (1e3,1e5; up to 1e7 makes sense)")
    parser.add_argument("--rounds", type=int, default=11, help="two at least")
    parser.add_argument("--memory", action="store_true", help="and the memory that a column takes")
    parser.add_argument("--core", type=int, default=max(os.sched_getaffinity(0)))
    parser.add_argument("--json", default="build/bench.json")
    options = parser.parse_args()
    options.rounds = max(2, options.rounds)

    found, missing = contenders(options.folder, options.python.split(":"), options.core)
    chosen = [row for row in rows.ROWS if re.search(options.rows, row.name)]
    measurements = [Measurement(row, size, found) for row in chosen if row is not rows.START
                    for size in (options.sizes if row.size is None else [row.size])]
    measurements += [Start(found) for row in chosen if row is rows.START]
    about = {"machine": machine(), "rounds": options.rounds, "date": time.strftime("%Y-%m-%d"),
             "contenders": {each.name: {"title": each.title, "about": each.about} for each in found},
             "left out": missing}
    measure(measurements, options.rounds, found)

    all_results = list(results(measurements))
    if options.memory:
        for each, result in zip(measurements, all_results):
            if each.row.size is None and each.size >= rows.AIMED_AT:
                progress("memory of " + each.row.name)
                result["peak"] = found[0].peak(each.row, each.size)
        progress("")
    with open(options.json, "w", encoding="utf-8") as out:
        json.dump(dict(about, results=all_results), out, indent=1)
    print("%(processor)s, %(cores)d cores, %(system)s, Linux %(kernel)s, load %(load).1f"
          % about["machine"])
    for each in found:
        print("  %-17s %s" % (each.title, each.about))
    for title in missing:
        print("  %-17s left out: it was not built" % title)
    spreads = sorted(spread(contender) for result in all_results
                     for contender in result["contenders"].values())
    print("medians of %d rounds on core %d; half of the samples of a cell lie within %.0f %% of each "
          "other,\n%.0f %% in the worst cell; all samples are in %s"
          % (options.rounds, options.core, 100 * statistics.median(spreads), 100 * spreads[-1],
             options.json))
    print_results(found, all_results)


if __name__ == "__main__":
    main()
