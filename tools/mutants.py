#!/usr/bin/env python3
"""Do the tests notice a fault? Changes one token of the numerics or the parsers at a time and runs the tests.

usage: tools/mutants.py [--count N] [--seed N] [--only REGEX] [--skip REGEX] [--parallel N] [--report FILE]

A mutant is the source with one operator, number or word exchanged ('+' for '-', '<' for '<=', 1 for 2, sin for
cos, ...). N of them are drawn with a fixed seed, every place alike. The tree is built once, in out/mutants/build; of a
mutant only the changed source is compiled, or the sources that include the changed header, and linked in front of the
library into each test program as its turn comes: first the unit tests under the source's own name, then all of its kind,
then the other programs, until one fails, crashes or takes six times as long as without the change. A mutant that does not
compile does not count. What FILE (default out/mutants/report.txt) tells of an earlier run is taken over; survivors are tried
again. A survivor is printed with file (and the first letters of its hash), line, column and change; whoever reads the list
decides whether the change has no effect or a test is missing (docs/validation.md names the former).
"""
import argparse
import hashlib
import json
import os
import queue
import random
import re
import resource
import shlex
import shutil
import signal
import subprocess
import sys
import threading
import time
from concurrent.futures import ThreadPoolExecutor
from dataclasses import dataclass, field
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
WORK = ROOT / "out" / "mutants"
BUILD = WORK / "build"
ROOMS = [  # numerics, then parsers
    "matrixmathlib", "spinoperatorlib", "four3", "rfpulseparam", "korengine", "rfpulselib", "fieldgradientlib",
    "koroptseq", "kor/propagation", "kor/spin_system.cpp", "kor/spatial_grid.cpp", "kor/product_operators",
    "kor/expectation_values", "kor/optimiser/", "observablespectrumcalculator", "kormodel/", "binaryfilehandling",
    "kordatafileio", "rfwaveformfile", "korpaths",
]
NOT_MUTATED = re.compile(r"dialogues|_menu|sector_optimisation")
NOT_BUILT = ("does not compile", "does not link")
DAMAGES = "*Mutations.*:*OddHeaders*:SpinSystemBits.*"
STAGES = [("unit", "-" + DAMAGES), ("engine", "*"), ("physics", "*"), ("dialogues", "*"), ("unit", DAMAGES),
          ("endtoend", "*"), ("trust", "*")]  # (test program, filter)
STARTED = ["kor", "make-example-waveforms", "tests/kor_reference"]  # by dialogue and end-to-end tests
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
    version: str  # the first letters of the file's hash
    start: int
    end: int
    line: int
    column: int
    old: str
    new: str

    def __str__(self):
        return f"{self.file}@{self.version}:{self.line}:{self.column}: '{self.old}' -> '{self.new}'"


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
    version = hashlib.sha256(text.encode()).hexdigest()[:7]
    found = []
    for match in TOKEN.finditer(text):
        if match["skip"] or (match["operator"] and not is_operation(text, match)):
            continue
        new = other_number(match[0]) if match["number"] else EXCHANGES.get(match[0])
        if new is not None:
            line = text.count("\n", 0, match.start()) + 1
            column = match.start() - text.rfind("\n", 0, match.start())
            found.append(Mutant(file, version, match.start(), match.end(), line, column, match[0], new))
    return found


def all_mutants(only, skip):
    files = subprocess.run(["git", "ls-files", "src"], cwd=ROOT, capture_output=True, text=True, check=True)
    chosen = []
    for file in files.stdout.split():
        in_room = any(file.startswith(f"src/{room}") for room in ROOMS) and not NOT_MUTATED.search(file)
        if in_room and re.search(only, file) and not (skip and re.search(skip, file)):
            chosen += mutants_of(file)
    return chosen


@dataclass
class Tree:
    """The built tree without a change: how to compile a source and to link a program, and who includes what."""

    compile: dict = field(default_factory=dict)  # path from the root -> arguments
    link: dict = field(default_factory=dict)  # program -> arguments
    users: dict = field(default_factory=dict)  # path from the root -> sources that include it, itself if it is one
    seconds: dict = field(default_factory=dict)  # stage -> what it takes


def ninja(*arguments):
    return subprocess.run(["ninja", "-C", BUILD, "-t", *arguments], capture_output=True, text=True, check=True).stdout


def from_root(path):
    path = Path(os.path.normpath(BUILD / path))
    return path.relative_to(ROOT).as_posix() if path.is_relative_to(ROOT) else ""


def build_tree():
    """Builds the unchanged tree with its tests. A warning is no reason not to compile a mutant."""
    linker = ["-DCMAKE_EXE_LINKER_FLAGS=-fuse-ld=lld"] if shutil.which("ld.lld") else []
    subprocess.run(["cmake", "--preset", "release", "-B", BUILD, "-DKOR_BUILD_TESTS=ON",
                    "-DKOR_WARNINGS_AS_ERRORS=OFF", *linker], cwd=ROOT, check=True, stdout=subprocess.DEVNULL)
    subprocess.run(["cmake", "--build", BUILD], check=True, stdout=subprocess.DEVNULL)
    tree = Tree()
    sources = {}  # object -> its source
    for entry in json.loads(ninja("compdb")):
        source = from_root(entry["file"])
        if not entry["output"].endswith(".o") or not source.endswith(".cpp"):
            continue
        arguments = shlex.split(entry["command"])
        if Path(arguments[0]).name == "ccache":
            arguments = arguments[1:]
        for option, length in (("-MD", 1), ("-MT", 2), ("-MF", 2), ("-o", 2), ("-c", 2)):
            if option in arguments:
                at = arguments.index(option)
                del arguments[at:at + length]
        tree.compile[source] = arguments
        if "korlib.dir" in entry["output"]:
            sources[entry["output"]] = source
    for block in ninja("deps").split("\n\n"):
        built, *needed = block.split("\n")
        if source := sources.get(built.split(":")[0]):
            for name in needed:
                tree.users.setdefault(from_root(name.strip()), []).append(source)
    for program in [*STARTED, *(f"tests/kor_{stage[0]}_tests" for stage in STAGES)]:
        command = shlex.split(ninja("commands", program).strip().splitlines()[-1])
        start = command.index("&&") + 1
        tree.link[program] = command[start:command.index("&&", start)]
    return tree


def compile_source(tree, copy, source):
    """Compiles `source` as it stands in `copy`; returns the object, None when it does not compile."""
    built = copy / "objects" / (source.replace("/", "+") + ".o")
    built.parent.mkdir(exist_ok=True)
    file = copy / source if (copy / source).exists() else ROOT / source
    where = [argument.replace(str(BUILD), str(copy / "build")) if argument.startswith("-DKOR_") else argument
             for argument in tree.compile[source]]
    done = subprocess.run([*where, "-c", file, "-o", built], cwd=BUILD, capture_output=True)
    return built if done.returncode == 0 else None


def link_program(tree, copy, program, objects):
    """`program` with `objects`, which come before what it has of the same names, in `copy`; whether that worked."""
    target = copy / "build" / program
    compiler, *rest = tree.link[program]
    rest[rest.index("-o") + 1] = str(target)
    return subprocess.run([compiler, *objects, *rest], cwd=BUILD, capture_output=True).returncode == 0


def prepare(tree, copy):
    """A place for one worker: the sources, and programs of its own for the tests that start them."""
    shutil.rmtree(copy, ignore_errors=True)
    shutil.copytree(ROOT / "src", copy / "src")
    (copy / "build" / "tests").mkdir(parents=True)
    paths = compile_source(tree, copy, "tests/support/build_paths.cpp")
    shutil.move(paths, copy / "build_paths.o")
    for program in STARTED:
        shutil.copy(BUILD / program, copy / "build" / program)
    return copy


def clear_traces(copy):
    """Removes what tests of an earlier mutant left."""
    for folder in ("build/models", "build/rf-output", "build/runtime", "build/tests/runtime", "temporary"):
        shutil.rmtree(copy / folder, ignore_errors=True)
    (copy / "temporary").mkdir()
    (copy / "temporary").chmod(0o1777)  # tests give up the superuser's rights for a while


def suites_of_room(file):
    """A filter of the unit tests that stand under the mutated file's own name."""
    room = Path(file).relative_to("src").with_suffix("").as_posix()
    names = set()
    for test in (ROOT / "tests" / "unit").rglob("*_test.cpp"):
        own = test.relative_to(ROOT / "tests" / "unit").as_posix().removesuffix("_test.cpp")
        if own.startswith(room) or room.startswith(own):
            names |= set(re.findall(r"^TEST(?:_[FP])?\((\w+),", test.read_text(encoding="utf-8"), re.MULTILINE))
    return ":".join(f"*{name}.*" for name in sorted(names))


def limit_resources():
    """A mutant that fills the memory or the disk fails instead."""
    resource.setrlimit(resource.RLIMIT_AS, (8 << 30, 8 << 30))
    resource.setrlimit(resource.RLIMIT_FSIZE, (8 << 30, 8 << 30))


def passes(copy, stage, seconds):
    program, chosen = stage
    command = [copy / "build" / "tests" / f"kor_{program}_tests", "--gtest_fail_fast", "--gtest_brief=1",
               f"--gtest_filter={chosen}"]
    test = subprocess.Popen(command, cwd=copy / "build" / "tests", stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                            stderr=subprocess.DEVNULL, preexec_fn=limit_resources, start_new_session=True,
                            env=os.environ | {"TMPDIR": str(copy / "temporary")})
    try:
        return test.wait(seconds) == 0
    except subprocess.TimeoutExpired:
        os.killpg(test.pid, signal.SIGKILL)  # with the programs that it started
        test.wait()
        return False


def outcome_of_tests(tree, copy, objects, stages):
    """'killed by' the test program of the first of the (program, filter) pairs that does not pass, or 'survived'."""
    clear_traces(copy)
    linked = set()
    for stage in stages:
        program = f"tests/kor_{stage[0]}_tests"
        for name in {*(STARTED if stage[0] in ("dialogues", "endtoend") else []), program} - linked:
            own = [copy / "build_paths.o"] if name.endswith("_tests") else []
            if not link_program(tree, copy, name, [*objects, *own]):
                return "does not link"
            linked.add(name)
        if not passes(copy, stage, 10 + 6 * tree.seconds.get(stage, 30)):
            return f"killed by {stage[0]}"
    return "survived"


def outcome_of(tree, copy, mutant):
    """As outcome_of_tests, or 'does not compile'."""
    target = copy / mutant.file
    text = target.read_text(encoding="utf-8")
    assert text[mutant.start:mutant.end] == mutant.old, mutant
    target.write_text(text[:mutant.start] + mutant.new + text[mutant.end:], encoding="utf-8")
    try:
        objects = [compile_source(tree, copy, source) for source in tree.users[mutant.file]]
        if None in objects:
            return "does not compile"
        stages = sorted(STAGES, key=lambda stage: "korengine" in mutant.file and stage[0] != "engine")
        if own := suites_of_room(mutant.file):
            stages = [("unit", own), *stages]
        return outcome_of_tests(tree, copy, objects, stages)
    finally:
        target.write_text(text, encoding="utf-8")


def time_stages(tree, copy):
    """How long every stage takes without a change. Ends the script when one does not pass."""
    for stage in STAGES:
        begin = time.monotonic()
        tree.seconds[stage] = 600
        if outcome_of_tests(tree, copy, [], [stage]) != "survived":
            sys.exit(f"the unchanged tree does not pass: {stage[0]}")
        tree.seconds[stage] = time.monotonic() - begin


def outcomes_of(tree, mutants, known, count, copies, report):
    """Outcomes of the first mutants, those of an earlier run among them, until `count` of them compiled."""
    free = queue.Queue()
    for copy in copies:
        free.put(copy)
    outcomes = {}
    counting = threading.Lock()

    def built():
        with counting:
            return sum(outcome not in NOT_BUILT for outcome in outcomes.values())

    def work(mutant):
        if built() >= count:
            return
        outcome = known.get(mutant)
        if not outcome:
            copy = free.get()
            try:
                outcome = outcome_of(tree, copy, mutant)
            finally:
                free.put(copy)
            print(f"{mutant}: {outcome}", file=report, flush=True)
        with counting:
            outcomes[mutant] = outcome

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
    parser.add_argument("--parallel", type=int, default=2, help="mutants that are tested at the same time")
    parser.add_argument("--report", type=Path, default=WORK / "report.txt")
    arguments = parser.parse_args()

    places = all_mutants(arguments.only, arguments.skip)
    all_places = len(places)
    random.Random(arguments.seed).shuffle(places)
    tree = build_tree()
    copies = [prepare(tree, WORK / f"copy{k}") for k in range(arguments.parallel)]
    time_stages(tree, copies[0])
    known = known_outcomes(arguments.report, places)
    with arguments.report.open("a", encoding="utf-8") as report:
        outcomes = outcomes_of(tree, places, known, arguments.count, copies, report)
    survivors = [mutant for mutant, outcome in outcomes.items() if outcome == "survived"]
    killed = sum(outcome.startswith("killed") for outcome in outcomes.values())
    total = killed + len(survivors)
    print(*survivors, sep="\n")
    print(f"{total} mutants of {all_places} places, {killed} killed ({100.0 * killed / max(total, 1):.1f} %)")


if __name__ == "__main__":
    main()
