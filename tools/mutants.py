#!/usr/bin/env python3
"""Do the tests notice a fault? Changes one token of the numerics or the parsers at a time and runs the tests.

usage: tools/mutants.py [--count N] [--seed N] [--only REGEX] [--skip REGEX] [--parallel N] [--report FILE]

A mutant is the source with one operator, number or word exchanged ('+' for '-', '<' for '<=', 1 for 2, sin for
cos, ...). N of them are drawn with a fixed seed, every place alike. Each is built in a copy of the tree in out/mutants
and tested: first the unit tests of its room, then all of them, then (when all mutants were through that) the other test
programs, until one fails, crashes or does not end. A mutant that does not compile does not count. What FILE (default
out/mutants/report.txt) tells of an earlier run is taken over; survivors are tried again. A survivor is printed with file,
line and change; whoever reads the list decides whether the change has no effect or a test is missing
(docs/validation.md names the former).
"""
import argparse
import queue
import random
import re
import resource
import shutil
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from dataclasses import dataclass
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
WORK = ROOT / "out" / "mutants"
ROOMS = [  # numerics, then parsers
    "matrixmathlib", "spinoperatorlib", "four3", "rfpulseparam", "korengine", "rfpulselib", "fieldgradientlib",
    "koroptseq", "kor/propagation", "kor/spin_system.cpp", "kor/spatial_grid.cpp", "kor/product_operators",
    "kor/expectation_values", "kor/optimiser/", "observablespectrumcalculator", "kormodel/", "binaryfilehandling",
    "kordatafileio", "rfwaveformfile", "korpaths",
]
NOT_MUTATED = re.compile(r"dialogues|_menu|sector_optimisation")
QUICK = [("unit", "-*Mutations.*:*OddHeaders*:SpinSystemBits.*")]  # (test program, filter)
SLOW = [("engine", ""), ("physics", ""), ("dialogues", ""), ("unit", "*Mutations.*:*OddHeaders*:SpinSystemBits.*"),
        ("endtoend", ""), ("trust", "")]
EXCHANGES = {
    "+": "-", "-": "+", "*": "/", "/": "*", "+=": "-=", "-=": "+=", "*=": "/=", "/=": "*=", "<": "<=", "<=": "<",
    ">": ">=", ">=": ">", "==": "!=", "!=": "==", "&&": "||", "||": "&&", "++": "--", "!": "", "%": "*",
    "true": "false", "false": "true", "sin": "cos", "cos": "sin", "min": "max", "max": "min", "re": "im", "im": "re",
    "floor": "ceil", "continue": "break", "break": "continue", "xb": "yb", "yb": "xb", "row": "column",
}
TOKEN = re.compile(r"""
    (?P<skip>//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"|'(?:\\.|[^'\\\n])*'|^[ \t]*\#[^\n]*|\btemplate\s*<[^>]*>
        |\b(?:static_cast|reinterpret_cast|const_cast|vector|array|size_t|function|unique_ptr|span)\s*<[^;(){}]*?>)
  | (?P<number>(?<![\w.])(?:0x[0-9a-fA-F]+|\d+\.?\d*(?:[eE][+-]?\d+)?)(?![\w.]))
  | (?P<word>\b[A-Za-z_]\w*\b)
  | (?P<operator><<=|>>=|->|::|<<|>>|\+\+|--|&&|\|\||[-+*/%<>=!]=|[-+*/%<>!])
""", re.VERBOSE | re.MULTILINE | re.DOTALL)


@dataclass(frozen=True)
class Mutant:
    file: str
    start: int
    end: int
    line: int
    old: str
    new: str

    def __str__(self):
        return f"{self.file}:{self.line}: '{self.old}' -> '{self.new}'"


def other_number(text):
    """A number next to `text`: an integer one larger, a real a thousandth larger."""
    if text.startswith("0x"):
        return None
    if re.fullmatch(r"\d+", text):
        return str(int(text) + 1)
    return repr(float(text) * 1.001) if float(text) != 0.0 else "0.001"


def is_operation(text, match):
    """Whether an operator stands between two operands, as the house's layout writes it, and is no sign or pointer."""
    return match[0] in ("!", "++", "--") or (text[match.start() - 1].isspace() and text[match.end()].isspace())


def mutants_of(file):
    text = (ROOT / file).read_text(encoding="utf-8")
    found = []
    for match in TOKEN.finditer(text):
        if match["skip"] or (match["operator"] and not is_operation(text, match)):
            continue
        new = other_number(match[0]) if match["number"] else EXCHANGES.get(match[0])
        if new is not None:
            line = text.count("\n", 0, match.start()) + 1
            found.append(Mutant(file, match.start(), match.end(), line, match[0], new))
    return found


def all_mutants(only, skip):
    files = subprocess.run(["git", "ls-files", "src"], cwd=ROOT, capture_output=True, text=True, check=True)
    chosen = []
    for file in files.stdout.split():
        in_room = any(file.startswith(f"src/{room}") for room in ROOMS) and not NOT_MUTATED.search(file)
        if in_room and re.search(only, file) and not (skip and re.search(skip, file)):
            chosen += mutants_of(file)
    return chosen


def copy_tree(source):
    listed = subprocess.run(["git", "ls-files", "-z"], cwd=ROOT, capture_output=True, text=True, check=True)
    for name in filter(None, listed.stdout.split("\0")):
        target = source / name
        target.parent.mkdir(parents=True, exist_ok=True)
        if not target.exists() or target.read_bytes() != (ROOT / name).read_bytes():
            shutil.copy(ROOT / name, target)


def build(source, program):
    return subprocess.run(["cmake", "--build", "--preset", "release", "--parallel", "1", "--target",
                           f"kor_{program}_tests"], cwd=source, capture_output=True).returncode == 0


def prepare(source):
    """A copy of the tree in `source`, configured."""
    copy_tree(source)
    linker = ["-DCMAKE_EXE_LINKER_FLAGS=-fuse-ld=lld"] if shutil.which("ld.lld") else []
    subprocess.run(["cmake", "--preset", "release", "-DKOR_BUILD_TESTS=ON", *linker], cwd=source, check=True,
                   stdout=subprocess.DEVNULL)
    return source


def suites_of_room(source, file):
    """A filter of the unit tests that stand under the mutated file's own name."""
    room = Path(file).relative_to("src").with_suffix("").as_posix()
    names = set()
    for test in (source / "tests" / "unit").rglob("*_test.cpp"):
        own = test.relative_to(source / "tests" / "unit").as_posix().removesuffix("_test.cpp")
        if own.startswith(room) or room.startswith(own):
            names |= set(re.findall(r"^TEST(?:_[FP])?\((\w+),", test.read_text(encoding="utf-8"), re.MULTILINE))
    return ":".join(f"*{name}.*" for name in sorted(names))


def limit_resources():
    """A mutant that fills the memory or the disk fails instead."""
    resource.setrlimit(resource.RLIMIT_AS, (8 << 30, 8 << 30))
    resource.setrlimit(resource.RLIMIT_FSIZE, (1 << 30, 1 << 30))


def passes(source, program, seconds=300, chosen=""):
    command = [source / "build" / "tests" / f"kor_{program}_tests", "--gtest_fail_fast", "--gtest_brief=1"]
    if chosen:
        command.append(f"--gtest_filter={chosen}")
    try:
        done = subprocess.run(command, cwd=source / "build" / "tests", stdin=subprocess.DEVNULL,
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, timeout=seconds,
                              preexec_fn=limit_resources)
    except subprocess.TimeoutExpired:
        return False
    return done.returncode == 0


def first_to_fail(source, programs, seconds):
    """The first of the (program, test filter) pairs that does not pass; None when all do."""
    for program, chosen in programs:
        build(source, program)
        if not passes(source, program, seconds, chosen):
            return program
    return None


def outcome_of(source, mutant, programs, seconds):
    """'killed by' a test program, 'survived' or 'does not compile'."""
    target = source / mutant.file
    text = target.read_text(encoding="utf-8")
    target.write_text(text[:mutant.start] + mutant.new + text[mutant.end:], encoding="utf-8")
    try:
        if not build(source, programs[0][0]):
            return "does not compile"
        own = suites_of_room(source, mutant.file)
        if programs == QUICK and own and not passes(source, "unit", seconds, own):
            return "killed by unit"
        killer = first_to_fail(source, programs, seconds)
        return f"killed by {killer}" if killer else "survived"
    finally:
        target.write_text(text, encoding="utf-8")


def check_unchanged(source, programs, seconds):
    if killer := first_to_fail(source, programs, 10 * seconds):
        sys.exit(f"the unchanged tree does not build or pass: {killer} in {source}")
    return source


def outcomes_of(mutants, count, copies, programs, seconds, report):
    """Outcomes of the mutants, in the order they end, until `count` of them compiled."""
    free = queue.Queue()
    with ThreadPoolExecutor(len(copies)) as workers:
        for source in workers.map(lambda copy: check_unchanged(copy, programs, seconds), copies):
            free.put(source)
    outcomes = {}

    def work(mutant):
        if sum(outcome != "does not compile" for outcome in outcomes.values()) >= count:
            return
        source = free.get()
        outcome = outcome_of(source, mutant, programs, seconds)
        free.put(source)
        outcomes[mutant] = outcome
        print(f"{mutant}: {outcome}", file=report, flush=True)

    with ThreadPoolExecutor(len(copies)) as workers:
        list(workers.map(work, mutants))
    return outcomes


def known_outcomes(report, places):
    """What the report of an earlier run says of these mutants; survivors are tried again."""
    known = {}
    lines = report.read_text(encoding="utf-8").splitlines() if report.exists() else []
    told = dict(line.rsplit(": ", 1) for line in lines)
    for mutant in places:
        if told.get(str(mutant), "survived") != "survived":
            known[mutant] = told[str(mutant)]
    return known


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", 1)[0])
    parser.add_argument("--count", type=int, default=300)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--only", default="", help="files whose path matches this expression")
    parser.add_argument("--skip", default="", help="no files whose path matches this expression")
    parser.add_argument("--parallel", type=int, default=2, help="copies of the tree that work at the same time")
    parser.add_argument("--seconds", type=int, default=120, help="a test program that runs longer has noticed")
    parser.add_argument("--report", type=Path, default=WORK / "report.txt")
    arguments = parser.parse_args()

    places = all_mutants(arguments.only, arguments.skip)
    all_places = len(places)
    random.Random(arguments.seed).shuffle(places)
    with ThreadPoolExecutor(arguments.parallel) as workers:
        copies = list(workers.map(prepare, [WORK / f"copy{k}" for k in range(arguments.parallel)]))
    outcomes = known_outcomes(arguments.report, places)
    places = [mutant for mutant in places if mutant not in outcomes]
    count = arguments.count - sum(outcome != "does not compile" for outcome in outcomes.values())
    with arguments.report.open("a", encoding="utf-8") as report:
        outcomes |= outcomes_of(places, count, copies, QUICK, arguments.seconds, report)
        left = [mutant for mutant, outcome in outcomes.items() if outcome == "survived"]
        outcomes |= outcomes_of(left, len(left), copies, SLOW, 10 * arguments.seconds, report)
    survivors = [mutant for mutant, outcome in outcomes.items() if outcome == "survived"]
    killed = sum(outcome.startswith("killed") for outcome in outcomes.values())
    total = killed + len(survivors)
    print(*survivors, sep="\n")
    print(f"{total} mutants of {all_places} places, {killed} killed ({100.0 * killed / max(total, 1):.1f} %)")


if __name__ == "__main__":
    main()
