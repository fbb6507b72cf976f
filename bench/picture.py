"""Draws what bench.py measured: bench.py's JSON file and the picture to write.

A group of bars for each row, a bar for each other contender, as long as its time is a multiple of
ours, which is the line and stands beside the row: to the right of the line it takes longer, to the
left it takes less.
"""
import json
import sys

import matplotlib

matplotlib.use("svg")
import matplotlib.pyplot as plt  # noqa: E402, the backend comes first

import bench  # noqa: E402
import rows  # noqa: E402

COLOURS = {"front": "#c0504d", "raw_kept": "#b8c4d0", "raw_handed_over": "#5b7a99", "pybind11": "#e0a458",
           "nanobind": "#7fa650", "numpy": "#a06cb0"}
BAR = 0.15  # of the height of a row
ROW, BETWEEN, TOP = 0.28, 0.5, 0.7  # inches


def chosen(results, group):
    """Of each row the largest size, which most of all is about the elements."""
    names = [row.name for row in rows.GROUPS[group]]
    largest = {}
    for result in results:
        if result["row"] in names and "ours" in result["contenders"]:
            largest[result["row"]] = result
    return list(largest.values())


def draw(axes, group, results, titles):
    axes.set_title(group, loc="left", fontsize=9, fontweight="bold")
    labels = []
    for place, result in enumerate(results):
        ours = bench.human(result["contenders"]["ours"]["median"])
        labels.append("%s: %s" % (result["title"], ours))
        others = [name for name in COLOURS if name in result["contenders"]]
        for i, name in enumerate(others):
            multiple = 1 / result["contenders"][name]["ratio"]
            axes.barh(place + (i - (len(others) - 1) / 2) * BAR, multiple - 1, BAR, left=1,
                      color=COLOURS[name], label=titles[name])
    axes.axvline(1, color="black", linewidth=1)
    axes.set_yticks(range(len(results)), labels, fontsize=7)
    axes.set_ylim(len(results) - 0.4, -0.6)
    axes.set_xscale("log")
    axes.set_xlim(0.01, 10)
    axes.set_xticks([0.01, 0.1, 1, 10], ["×0.01", "×0.1", "ours", "×10"], fontsize=7)
    axes.minorticks_off()
    axes.spines[["top", "right", "left"]].set_visible(False)


def halves(groups):
    """The groups in two columns of about the same height."""
    total, left = sum(map(len, groups.values())), {}
    while groups and sum(map(len, left.values())) < total / 2:
        group = next(iter(groups))
        left[group] = groups.pop(group)
    return [half for half in (left, groups) if half]


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        data = json.load(file)
    titles = {name: "%s: %s" % (each["title"], each["about"])
              for name, each in data["contenders"].items()}
    groups = {group: chosen(data["results"], group) for group in rows.GROUPS}
    columns = halves({group: results for group, results in groups.items() if results})

    plt.rcParams.update({"svg.fonttype": "none", "svg.hashsalt": "bench"})
    height = max(sum(ROW * len(results) + BETWEEN for results in column.values())
                 for column in columns) + TOP
    figure = plt.figure(figsize=(6 * len(columns), height))
    legend = {}
    parts = figure.subfigures(1, len(columns), squeeze=False, facecolor="none")[0]
    for part, column in zip(parts, columns):
        panels = part.subplots(len(column), squeeze=False, gridspec_kw={
            "height_ratios": [len(results) for results in column.values()]})
        for axes, (group, results) in zip(panels[:, 0], column.items()):
            draw(axes, group, results, titles)
            legend.update(dict(zip(*reversed(axes.get_legend_handles_labels()))))
        average = (height - TOP - BETWEEN * len(column)) / len(column)
        part.subplots_adjust(left=0.47, right=0.98, top=1 - TOP / height, hspace=BETWEEN / average,
                             bottom=BETWEEN / height)
    figure.legend(legend.values(), legend.keys(), loc="upper center", ncol=len(legend),
                  fontsize=7, frameon=False)
    figure.savefig(sys.argv[2], metadata={"Date": None})


if __name__ == "__main__":
    main()
