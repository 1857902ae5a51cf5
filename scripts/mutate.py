"""The two halves of scripts/mutate: `plant FOLDER` makes the copy with the faults, `measure TESTS COUNT` runs the tests on each.

A row of the list says where a fault is, under the file's name behind "==": ": " what is wrong, "@ " a text behind which the place
is, "- " the source, which is there once, and what stands in its place: "+ " another source, or "~ " the name of an object, declared
there, that is not wiped. Of a statement (it ends in ";") the place may be empty; anything else is an expression.
"""

import concurrent.futures
import os
import re
import shutil
import subprocess
import sys
import tempfile
import time

LIST = "tests/data/mutations.txt"
COPIED = ["CMakeLists.txt", "CMakePresets.json", "examples", "fuzz", "include", "packaging", "scripts", "src", "storage", "tests"]

# Included in front of every file of the copy. A switch that is asked leaves a mark in the file VRNO_REACHED.
HEADER = """\
#pragma once
#include <cstddef>
#include <cstdlib>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>
inline unsigned char mutantNoMarks[4096];
inline struct MutantMarks {
    unsigned char* at = mutantNoMarks;
    MutantMarks()
    {
        const char* const path = std::getenv("VRNO_REACHED");
        const int file = path ? ::open(path, O_RDWR) : -1;
        void* const marks = file < 0 ? MAP_FAILED : ::mmap(nullptr, sizeof mutantNoMarks, PROT_WRITE, MAP_SHARED, file, 0);
        if (file >= 0) ::close(file);
        if (marks != MAP_FAILED) at = static_cast<unsigned char*>(marks);
    }
    ~MutantMarks()
    {
        if (at != mutantNoMarks) ::munmap(at, sizeof mutantNoMarks);
        at = mutantNoMarks;
    }
} mutantMarks;
inline const int mutantOfRun = std::getenv("VRNO_MUTANT") ? std::atoi(std::getenv("VRNO_MUTANT")) : 0;
inline bool mutant(int number)
{
    if (mutantMarks.at) mutantMarks.at[number] = 1;
    return mutantOfRun == number;
}
inline thread_local const char* mutantKept = nullptr;
inline thread_local std::size_t mutantKeptSize = 0;
inline void mutantKeep(int number, const void* object, std::size_t size)
{
    if (!mutant(number)) return;
    mutantKept = static_cast<const char*>(object);
    mutantKeptSize = size;
}
inline bool mutantKeeps(const void* data)
{
    const bool keeps = mutantKept && data >= mutantKept && data < mutantKept + mutantKeptSize;
    if (keeps) mutantKept = nullptr;
    return keeps;
}
"""
# What the copy has besides: wipe() passes over an object that is not to be wiped, nothing is optimised over all files, and no call
# of the C library is checked, since a checked one has another name, which the tests do not make fail.
INSTRUMENTED = [
    ("src/platform/wipe.h", "inline void wipe(void* data, std::size_t length)\n{", " if (mutantKeeps(data)) return;"),
    ("CMakeLists.txt", "STREQUAL GNU AND NOT WIN32", " AND FALSE"),
    ("CMakeLists.txt", "if(NOT CMAKE_BUILD_TYPE STREQUAL Debug AND NOT VRNO_SANITIZE", " AND FALSE"),
]


class Row:
    def __init__(self, file, name, line):
        self.file, self.name, self.line, self.context, self.old, self.new, self.kept = file, name, line, "", "", None, ""

    def around(self, number, source):
        """The source, which may have other faults in it, with this one."""
        if self.kept:
            return f"{source} mutantKeep({number}, &{self.kept}, sizeof {self.kept});"
        if self.old.endswith(";"):
            return f"{{ if (mutant({number})) {{ {self.new} }} else {{ {source} }} }}"
        return f"(mutant({number}) ? ({self.new}) : ({source}))"


def read_rows():
    rows, file = [], ""
    for number, line in enumerate(open(LIST, encoding="utf-8"), 1):
        kind, text = line[:1], line[2:].strip()
        if line.startswith("=="):
            file = line[3:].strip()
        elif kind == ":":
            rows.append(Row(file, text, number))
        elif kind in "@-+~" and rows:
            setattr(rows[-1], {"@": "context", "-": "old", "+": "new", "~": "kept"}[kind], text)
        elif line.strip() and kind != "#":
            sys.exit(f"{LIST}:{number}: not understood: {line.strip()}")
    return rows


def place_of(row, text):
    start = 0
    if row.context:
        if text.count(row.context) != 1:
            return f"the context is there {text.count(row.context)} times: {row.context}"
        start = text.index(row.context) + len(row.context)
    count = text.count(row.old, start)
    if count == 0 or (count > 1 and not row.context):
        return f"the source is there {count} times: {row.old}"
    return text.index(row.old, start)


def planted(rows):
    """The text of each file with its faults; exits if a place is not found. Several may be in the same place."""
    texts, places, wrong = {}, {}, []
    for number, row in enumerate(rows, 1):
        if row.file not in texts:
            texts[row.file] = open(row.file, encoding="utf-8").read()
        place = place_of(row, texts[row.file])
        if isinstance(place, str):
            wrong.append(f"{LIST}:{row.line}: {row.name}: in {row.file} {place}")
        else:
            places.setdefault((row.file, place, place + len(row.old)), []).append((number, row))
    ends = sorted(places)
    overlaps = [b for a, b in zip(ends, ends[1:]) if a[0] == b[0] and b[1] < a[2]]
    wrong += [f"{LIST}:{places[place][0][1].line}: the place overlaps that of another row" for place in overlaps]
    if wrong:
        sys.exit("\n".join(wrong))
    for (file, begin, end), faults in sorted(places.items(), reverse=True):
        source = texts[file][begin:end]
        for number, row in faults:
            source = row.around(number, source)
        texts[file] = texts[file][:begin] + source + texts[file][end:]
    return texts


def write_if_new(path, data):
    """Leaves a file alone that is as it should be, so that it is not compiled again."""
    os.makedirs(os.path.dirname(path), exist_ok=True)
    if os.path.exists(path) and open(path, "rb").read() == data:
        return
    with open(path, "wb") as file:
        file.write(data)


def plant(folder):
    texts = planted(read_rows())
    for file, place, more in INSTRUMENTED:
        text = texts.get(file) or open(file, encoding="utf-8").read()
        if text.count(place) != 1:
            sys.exit(f"{__file__}: in {file} the source is there {text.count(place)} times: {place}")
        texts[file] = text.replace(place, place + more)
    write_if_new(os.path.join(folder, "mutant.h"), HEADER.encode())
    for top in COPIED:
        for path in [top] if os.path.isfile(top) else (os.path.join(at, n) for at, _, names in os.walk(top) for n in names):
            write_if_new(os.path.join(folder, path), texts[path].encode() if path in texts else open(path, "rb").read())
            shutil.copymode(path, os.path.join(folder, path))


class Suite:
    def __init__(self, program):
        self.program, self.tests, self.seconds, self.reached = program, [], {}, {}
        suite = ""
        for line in subprocess.run([program, "--gtest_list_tests"], capture_output=True, text=True, check=True).stdout.splitlines():
            if line.startswith(" "):
                self.tests.append(suite + line.split("#")[0].strip())
            else:
                suite = line.split("#")[0].strip()

    def run(self, tests, limit, **environment):
        """The test that fails, or None."""
        everything = dict(os.environ, TZ="Asia/Seoul", **environment)
        command = [self.program, "--gtest_fail_fast", "--gtest_filter=" + ":".join(tests)]
        with tempfile.TemporaryFile("w+", errors="replace") as output:
            try:
                code = subprocess.run(command, stdout=output, stderr=subprocess.STDOUT, env=everything, timeout=limit).returncode
            except subprocess.TimeoutExpired:
                code = "timeout"
            output.seek(0)
            text = output.read()
        if code == 0:
            return None
        failed = re.search(r"^\[  FAILED  \] ([^\s,]+)", text, re.M)
        begun = re.findall(r"^\[ RUN      \] (\S+)", text, re.M)
        kind = {1: "", "timeout": " (timeout)"}.get(code, f" (ends with {code})")
        return (failed.group(1) if failed else begun[-1] if begun else "the program") + kind

    def try_clean(self, test):
        """Runs one test without a fault: its time, and which places it reaches."""
        with tempfile.NamedTemporaryFile() as marks:
            marks.truncate(4096)
            start = time.monotonic()
            failed = self.run([test], 600, VRNO_REACHED=marks.name)
            self.seconds[test] = time.monotonic() - start
            self.reached[test] = {number for number, mark in enumerate(marks.read()) if mark}
        return failed

    def killer(self, number):
        """The test that catches the fault: the quick ones first, in one process."""
        tests = sorted((t for t in self.tests if number in self.reached[t]), key=self.seconds.get)
        quick = [t for t in tests if self.seconds[t] < 0.5]
        for group in ([quick] if quick else []) + [[t] for t in tests[len(quick):]]:
            failed = self.run(group, 60 + 10 * sum(self.seconds[t] for t in group), VRNO_MUTANT=str(number))
            if failed:
                return failed, len(tests)
        return None, len(tests)


def measure(program, count):
    rows = read_rows()
    chosen = range(1, len(rows) + 1) if not 0 < count < len(rows) else [1 + i * len(rows) // count for i in range(count)]
    suite = Suite(program)
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        failures = [f for f in pool.map(suite.try_clean, suite.tests) if f]
        if failures:
            sys.exit("Without a fault these fail: " + " ".join(failures))
        print(f"{len(suite.tests)} tests, {sum(suite.seconds.values()):.0f} s", flush=True)
        survivors = []
        for number, (failed, tests) in zip(chosen, pool.map(suite.killer, chosen)):
            row = rows[number - 1]
            print(f"{number:4} {row.file}: {row.name}: " + (failed or f"SURVIVES {tests} tests"), flush=True)
            if not failed:
                survivors.append(f"  {LIST}:{row.line}: {row.file}: {row.name}")
    print("Survivors:", *survivors or ["  none"], sep="\n")
    print(f"{len(chosen) - len(survivors)} of {len(chosen)} caught")


if __name__ == "__main__":
    if sys.argv[1] == "plant":
        plant(sys.argv[2])
    else:
        measure(sys.argv[2], int(sys.argv[3]))
