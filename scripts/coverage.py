"""Joins what gcov counted in a build: `coverage.py FOLDER INFO` writes INFO for genhtml and prints
the totals.

A function, a line and a branch of a template count once, however many instances there are: it is the source that is measured.
"""

import collections
import json
import pathlib
import subprocess
import sys


class File:
    def __init__(self):
        self.functions, self.lines, self.branches = collections.Counter(), collections.Counter(), {}

    def add(self, file):
        for function in file["functions"]:
            self.functions[function["start_line"], function["start_column"]] += function["execution_count"]
        for line in file["lines"]:
            number, counts = line["line_number"], [branch["count"] for branch in line["branches"]]
            self.lines[number] += line["count"]
            # Instances in which `if constexpr` leaves other branches on a line are kept apart.
            known = self.branches.setdefault((number, len(counts)), [0] * len(counts))
            known[:] = map(sum, zip(known, counts))

    def records(self):
        for (line, column), count in sorted(self.functions.items()):
            yield from (f"FN:{line},{line}.{column}", f"FNDA:{count},{line}.{column}")
        for (line, width), counts in sorted(self.branches.items()):
            for index, count in enumerate(counts):
                yield f"BRDA:{line},{width},{index},{count if self.lines[line] else '-'}"
        for line, count in sorted(self.lines.items()):
            yield f"DA:{line},{count}"

    def all_branches(self):
        return [count for counts in self.branches.values() for count in counts]


files = collections.defaultdict(File)
data = [str(path.resolve()) for path in pathlib.Path(sys.argv[1]).rglob("vrno*.dir/src/**/*.gcda")]
counted = subprocess.run(["gcov", "--json-format", "--stdout", "--branch-probabilities", *data],
                         stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=True, text=True)
for line in counted.stdout.splitlines():
    for file in json.loads(line)["files"]:
        if file["file"].startswith("src/"):
            files[file["file"]].add(file)

with open(sys.argv[2], "w", encoding="utf-8") as info:
    for name, file in sorted(files.items()):
        print("TN:", f"SF:{pathlib.Path(name).resolve()}", *file.records(), "end_of_record", sep="\n", file=info)


def share(counts):
    return f"{100 * sum(count > 0 for count in counts) / len(counts):.1f} %"


lines, branches, functions = ([count for file in files.values() for count in of(file)]
                              for of in (lambda f: f.lines.values(), File.all_branches, lambda f: f.functions.values()))
print(f"lines {share(lines)}, branches {share(branches)}, functions {share(functions)}")
