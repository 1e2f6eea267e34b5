#!/usr/bin/env python3
"""Runs every shipped example with the Linux and the Windows program and compares what they make.

usage: examples_agree.py SOURCE-FOLDER LINUX-KOR WINDOWS-KOR RUNNER [RUNNER ARGUMENTS...]
RUNNER starts Windows programs. Numbers must agree within 1e-12 of the largest of their file, texts to the letter but
for separators, line ends, the drive and the number of the process.
"""
import array
import math
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

TOLERANCE = 1e-12
PROFILE_OPERATOR = "Ix"


class Program:
    """One of the two programs in a copy of the project's examples."""

    def __init__(self, source, executable, tree, runner, drive):
        self.tree, self.runner, self.drive = tree, runner, drive
        for folder in ("models", "spin-systems", "sequences"):
            shutil.copytree(source / folder, tree / folder)
        (tree / "build").mkdir()
        self.executable = tree / "build" / executable.name
        shutil.copy2(executable, self.executable)

    def name(self, file):
        """A file's name as the program takes it."""
        text = self.drive + str(file)
        return text.replace("/", "\\") if self.drive else text

    def run(self, arguments, answers=""):
        """What it prints, in plain spelling."""
        done = subprocess.run([*self.runner, str(self.executable), *arguments], input=answers.encode(),
                              capture_output=True, timeout=600)
        if done.returncode != 0 or done.stderr:
            raise SystemExit(f"FAIL: {arguments} ended with {done.returncode}: {done.stderr.decode()}")
        text = done.stdout.decode()
        if self.drive:
            if "\n" in text.replace("\r\n", ""):
                raise SystemExit(f"FAIL: {arguments} printed a line without Windows' line end")
            text = text.replace("\r\n", "\n").replace("\\", "/").replace(self.drive, "")
        return re.sub(r"(runs/[a-z0-9_-]+)_[0-9]+", r"\1_PID", text.replace(str(self.tree), "TREE"))

    def result(self, model):
        return self.tree / "build" / "runtime" / "results" / (model + ".bin")


def doubles(file):
    """Header and numbers of a binary data file."""
    data = file.read_bytes()
    return data[:12], array.array("d", data[12:])


def largest_difference(one, other, least_scale=0.0):
    """Relative to the largest number, or to `least_scale` when that is larger; infinite for other shapes and where
    a number is none."""
    gaps = [abs(x - y) for x, y in zip(one, other)]
    if len(one) != len(other) or any(math.isnan(gap) for gap in gaps):
        return math.inf
    scale = max((abs(x) for x in one), default=0.0)
    scale = max(scale, least_scale) or 1.0
    return max(gaps, default=0.0) / scale


def compare_binaries(what, one, other):
    (head, numbers), (other_head, other_numbers) = doubles(one), doubles(other)
    difference = largest_difference(numbers, other_numbers)
    print(f"  {what}: {len(numbers)} numbers, largest difference {difference:.1e}")
    if head != other_head or not difference <= TOLERANCE:
        raise SystemExit(f"FAIL: {what} differs")


NUMBER = re.compile(r"-?[0-9]+\.[0-9]+(?:e[+-][0-9]+)?")


def compare_texts(what, one, other):
    """Printed reals may differ as the results may (a line of small ones within 1e-12); all else is the same."""
    one, other = one.splitlines(), other.splitlines()
    if len(one) != len(other):
        raise SystemExit(f"FAIL: {what} has another length")
    for a, b in zip(one, other):
        same = NUMBER.sub(" # ", a).split() == NUMBER.sub(" # ", b).split()
        numbers = [[float(x) for x in NUMBER.findall(line)] for line in (a, b)]
        if not same or not largest_difference(*numbers, 1.0) <= TOLERANCE:
            raise SystemExit(f"FAIL: {what} differs:\n  Linux   {a}\n  Windows {b}")


def compare_profiles(linux, windows):
    """Tables of numbers; the Windows one with Windows' line ends."""
    raw = windows.read_bytes()
    if raw.count(b"\r\n") != raw.count(b"\n"):
        raise SystemExit(f"FAIL: {windows} has a line without Windows' line end")
    one, other = (file.read_text().splitlines() for file in (linux, windows))
    compare_texts("header of the profile", one[0], other[0])
    rows = [[[float(x) for x in line.split(",")] for line in lines[1:]] for lines in (one, other)]
    columns = [list(zip(*table)) for table in rows]
    # The two expectation columns belong together.
    for k, parts in enumerate(((0,), (1,), (2,), (3,), (4, 5))):
        flat = [[x for part in parts for x in table[part]] for table in columns]
        if not largest_difference(*flat, 1.0) <= TOLERANCE:
            raise SystemExit(f"FAIL: column {k} of the profile differs")


def main():
    source, linux_kor, windows_kor = (pathlib.Path(text).resolve() for text in sys.argv[1:4])
    with tempfile.TemporaryDirectory(prefix="kor examples ") as folder:
        trees = [pathlib.Path(folder) / name for name in ("one", "two")]
        for tree in trees:
            tree.mkdir()
        both = [Program(source, linux_kor, trees[0], [], ""),
                Program(source, windows_kor, trees[1], sys.argv[4:], "Z:")]
        models = sorted(file.stem for file in (source / "models").glob("*.kormodel"))
        for model in models:
            print(model)
            file = [program.name(program.tree / "models" / (model + ".kormodel")) for program in both]
            compare_texts("print", *(p.run(["--run-model", f]) for p, f in zip(both, file)))
            results = [program.result(model) for program in both]
            if not results[0].exists():
                results = [next(p.tree.glob(f"build/runtime/runs/{model}_*")) / "dm.bin" for p in both]
            compare_binaries("result", *results)
            kind = int.from_bytes(results[0].read_bytes()[:4], "little")
            if kind == 0:  # density matrices: both read-out modes
                outputs = [p.tree / "profile.csv" for p in both]
                for p, f, r, o in zip(both, file, results, outputs):
                    p.run(["--expectation-profile", f, p.name(r), PROFILE_OPERATOR, p.name(o)])
                compare_profiles(*outputs)
                outputs = [p.tree / "voxel.bin" for p in both]
                for p, f, r, o in zip(both, file, results, outputs):
                    p.run(["--voxel-signal", f, p.name(r), "1", p.name(o)])
                compare_binaries("signal of voxel 1", *outputs)
        print("reference checks from the menu")
        compare_texts("session", *(p.run([], "5\n\n6\n") for p in both))
    print(f"{len(models)} examples agree")


if __name__ == "__main__":
    main()
