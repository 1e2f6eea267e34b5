#!/usr/bin/env python3
"""usage: tools/compiler_matrix.py [--only NAME]

Builds kor with g++ and clang++-14, at -O0, -O2 and -O3, without and with contraction of a * b + c into fused
multiply-adds, under out/matrix. Every build runs the reference checks and every shipped model. Their texts must
be those of the first build (g++ -O2 without contraction, as shipped), their numbers must agree with its within
1e-12 of the largest element of the file or, in texts, of the line or of 1, or 1 in the last digit printed.
Prints a table; exits with 1 when anything differs."""

import array
import itertools
import math
import os
import re
import shutil
import subprocess
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
MATRIX = os.path.join(ROOT, "out", "matrix")
COMPILERS = {"g++": "g++", "clang": "clang++-14"}
TOLERANCE = 1e-12
NUMBER = re.compile(r"(?<![\w.])[-+]?\d+(?:\.\d*)?(?:[eE][-+]?\d+)?(?![\w])")


def builds():
    """Names and settings, the shipped one first."""
    result = [(f"{compiler} {level} {'fma' if fma else 'plain'}", COMPILERS[compiler], level, fma)
              for compiler, level, fma in itertools.product(COMPILERS, ("-O2", "-O0", "-O3"), (False, True))]
    return result


def build(name, compiler, level, fma):
    """Compiles in a tree of its own, with the shipped models beside it; returns the tree."""
    tree = os.path.join(MATRIX, name.replace(" ", ""))
    shutil.rmtree(tree, ignore_errors=True)  # nothing left from other sources; a compiler cache keeps it cheap
    settings = [f"-DCMAKE_CXX_COMPILER={compiler}", f"-DKOR_OPTIMISATION={level}", "-DKOR_BUILD_TESTS=OFF",
                "-DCMAKE_BUILD_TYPE=Release", f"-DKOR_CONTRACTION={'fast' if fma else 'off'}"]
    if fma:
        settings.append("-DCMAKE_CXX_FLAGS=-mfma")
    folder = os.path.join(tree, "build")
    for command in (["cmake", "-S", ROOT, "-B", folder, "-G", "Ninja", *settings],
                    ["cmake", "--build", folder, "--target", "kor", "--parallel", str(os.cpu_count())]):
        done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        if done.returncode != 0:
            sys.exit(f"{name}: {' '.join(command)}\n{done.stdout}")
    for shipped in ("models", "spin-systems", "sequences"):
        shutil.copytree(os.path.join(ROOT, shipped), os.path.join(tree, shipped))
    return tree


def run(tree):
    """Texts and binary results of every model and of the reference checks, by name."""
    program = os.path.join(tree, "build", "kor")
    results = os.path.join(tree, "build", "runtime", "results")
    shutil.rmtree(results, ignore_errors=True)

    def text_of(arguments, answers=""):
        done = subprocess.run([program, *arguments], input=answers, capture_output=True, text=True)
        return f"exit status {done.returncode}\n{done.stdout}{done.stderr}".replace(tree, "TREE")

    found = {"reference checks": text_of([], "5\n\n6\n")}
    models = os.path.join(tree, "models")
    for file in sorted(os.listdir(models)):
        found[file] = text_of(["--run-model", os.path.join(models, file)])
    profile = os.path.join(results, "citrate-slice-profile.csv")
    found["profile"] = text_of(["--expectation-profile", os.path.join(models, "citrate-slice.kormodel"),
                                os.path.join(results, "citrate-slice.bin"), "Ix + Sx", profile])
    for file in sorted(os.listdir(results)):
        with open(os.path.join(results, file), "rb") as opened:
            data = opened.read()
        found["result " + file] = data if file.endswith(".bin") else data.decode()
    return found


def last_digit(number):
    """One unit of the last printed digit."""
    mantissa, _, exponent = number.lower().partition("e")
    return 10.0 ** (int(exponent or 0) - len(mantissa.partition(".")[2]))


def compare_lines(first, second):
    """Largest deviation as a share of the line's largest number; infinite when the words differ."""
    if first == second:
        return 0.0
    numbers, others = NUMBER.findall(first), NUMBER.findall(second)
    same_words = NUMBER.sub("#", first).split() == NUMBER.sub("#", second).split()
    if not same_words or len(numbers) != len(others):
        return float("inf")
    size = max(1.0, max((abs(float(n)) for n in numbers), default=1.0))
    worst = 0.0
    for a, b in zip(numbers, others):
        gap = abs(float(a) - float(b))
        if gap > 1.01 * max(last_digit(a), last_digit(b)):
            worst = max(worst, gap / size)
    return worst


def compare_texts(first, second):
    a, b = first.splitlines(), second.splitlines()
    if len(a) != len(b):
        return float("inf")
    return max(map(compare_lines, a, b), default=0.0)


def compare_binaries(first, second):
    if len(first) != len(second) or first[:12] != second[:12]:
        return float("inf")
    a, b = array.array("d", first[12:]), array.array("d", second[12:])
    size = max(map(abs, a))
    gaps = [abs(x - y) for x, y in zip(a, b)]
    if any(map(math.isnan, gaps)):  # max would pass over them
        return float("inf")
    return max(gaps) / size


def compare(judge, found):
    """Worst share over texts and over binary files, and the names of what is beyond the tolerance."""
    worst = {str: 0.0, bytes: 0.0}
    beyond = sorted(set(judge) ^ set(found))
    for name in set(judge) & set(found):
        kind = type(judge[name])
        share = (compare_texts if kind is str else compare_binaries)(judge[name], found[name])
        worst[kind] = max(worst[kind], share)
        if not share <= TOLERANCE:
            beyond.append(name)
    return worst[str], worst[bytes], beyond


def main():
    if sys.argv[1:2] == ["--help"]:
        print(__doc__)
        return
    only = sys.argv[2] if sys.argv[1:2] == ["--only"] else ""
    judge = None
    failed = False
    print(f"{'build':<18}{'texts':>12}{'files':>12}")
    for name, compiler, level, fma in builds():
        if judge is not None and only not in name:
            continue
        found = run(build(name, compiler, level, fma))
        judge = judge or found
        texts, files, beyond = compare(judge, found)
        passed = "All kormodel smoke/reference checks passed." in found["reference checks"]
        failed = failed or bool(beyond) or not passed
        remark = "" if passed else "  REFERENCE CHECKS FAILED"
        print(f"{name:<18}{texts:>12.1e}{files:>12.1e}{remark}{'  DIFFERS: ' if beyond else ''}{', '.join(beyond)}",
              flush=True)
    sys.exit(1 if failed else 0)


main()
