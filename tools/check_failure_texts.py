#!/usr/bin/env python3
"""Checks that every failure text of the program has a test that provokes it.

usage: tools/check_failure_texts.py [ROOT]            check the list, name what is wrong, exit status 1 if anything is
       tools/check_failure_texts.py --update [ROOT]   rewrite the list: entries that hold stay, texts that are new get
                                                      the first test whose own literals contain them
       tools/check_failure_texts.py --run BUILD [ROOT]  run each named test alone in a build with counters (preset
                                                      coverage) and ask whether the line of its text ran

The list is tests/failure_texts.tsv: source file, text as the source spells it, test, reason. A failure text is a string
literal of src/ that is handed to a function that reports failures or goes to standard error, or that speaks like one.
The test must exist and must contain the text: every part of it between the conversions, in string literals of the
test's body, of its file's helpers or of tests/support. A text that no test can provoke has "-" for its test and a
reason; there may be only a few. "verdict" marks what the built-in reference checks print of a wrong program alone, or
look for in a refusal.
--run passes over the tests of faults (the program under test fails to write its counters too) and of Windows.
"""
import bisect
import json
import os
import re
import subprocess
import sys
import tempfile
from pathlib import Path

MOST_UNREACHABLE = 7
LIST = "tests/failure_texts.tsv"
REPORTERS = {"set_error", "line_error", "perror", "print_io_error", "fail", "fail_for_system_reason", "fail_to_write", "open_or_report",
             "open_table", "read_number", "write_number", "run_pass", "refuse", "report_failure"}
SPEAKS = re.compile(
    r"\berrors?\b|\bfail(ed|s|ure)?\b|\binvalid\b|\bcannot\b|could not|couldn't|\bunknown\b|\bbad \w|\bmissing\b|mismatch|"
    r"not found|not available|not supported|no current|no valid|no prepared|out of (range|supported)|outside|"
    r"too (many|few|long|large|small)|\bmust (be|lie|appear)|unsupported|truncated|incompatible|not allowed|unable|"
    r"warning|duplicate|malformed|required key|not written|not generated|does not exist|not opened|power of two|"
    r"unexpectedly|No (spin system|sequence|(RF )?pulse|\.kormodel|%c)|not (selected|fully)|only supports|supports only|skipped|"
    r"clamping|\bincomplete\b|has nevo|serve dimensions|Please enter|Allowed range|NO RF-PULSE", re.IGNORECASE)
# Words of menus, prompts and names of files that are no failures.
HARMLESS = re.compile(r"How many time-points|\(power of 2\)|Missing sectors : |^\S+\.bin$|^format_version: |^spin_system_file: ")
# A FAIL line of the reference checks says that the program itself is wrong.
VERDICTS = "src/kormodel_refcheck/"
VERDICT = "verdict"
TOKEN = re.compile(r'//[^\n]*|/\*.*?\*/|R"\((.*?)\)"|"((?:[^"\\\n]|\\.)*)"|\'(?:[^\'\\]|\\.)+\'|[A-Za-z_]\w*|\d[\w.\']*|'
                   r'\n[ \t]*#[^\n]*|\S', re.DOTALL)
CONVERSION = re.compile(r"%[-+ #0]*(?:\d+|\*)?(?:\.(?:\d+|\*))?(?:ll|l|h|z)?[diouxXeEfgGscp]|%%")
ESCAPES = {"n": "\n", "t": "\t", '"': '"', "\\": "\\", "'": "'", "0": "\0", "r": "\r", "a": "\a"}


def decoded(spelling):
    return re.sub(r"\\(x[0-9a-fA-F]+|.)", lambda m: ESCAPES.get(m[1], m[0]), spelling)


def tokens_of(text):
    """(kind, value) with adjacent string literals joined; comments and preprocessor lines left out."""
    found = []
    for match in TOKEN.finditer("\n" + text):
        token = match[0]
        if token.startswith(("//", "/*")) or token.startswith("\n"):
            continue
        if match[2] is not None or match[1] is not None:
            value = match[2] if match[2] is not None else match[1]
            if found and found[-1][0] == "text":
                found[-1] = ("text", found[-1][1] + value)
            else:
                found.append(("text", value))
        else:
            found.append(("code", token))
    return found


def matching(tokens, opening):
    depth = 0
    for i in range(opening, len(tokens)):
        if tokens[i][0] == "code":
            depth += tokens[i][1] in "([{" if len(tokens[i][1]) == 1 else 0
            depth -= tokens[i][1] in ")]}" if len(tokens[i][1]) == 1 else 0
            if depth == 0:
                return i
    return len(tokens) - 1


def failure_texts(source):
    """The failure texts of a source file, in order, each once."""
    tokens = tokens_of(source.read_text(encoding="utf-8"))
    texts, calls = [], []
    for i, (kind, value) in enumerate(tokens):
        if kind == "code":
            if value == "(":
                calls.append(i)
            elif value == ")" and calls:
                calls.pop()
            continue
        reported = False
        if calls:
            callee = tokens[calls[-1] - 1][1] if calls[-1] else ""
            arguments = [v for k, v in tokens[calls[-1]:matching(tokens, calls[-1])] if k == "code"]
            reported = callee in REPORTERS or "stderr" in arguments
        worth = len(re.sub(r"\W", "", CONVERSION.sub("", decoded(value)))) >= 4
        if worth and (reported or SPEAKS.search(value)) and not HARMLESS.search(value) and value not in texts:
            texts.append(value)
    return texts


def places_of(source):
    """Every string literal of a file (adjacent ones joined) with the first and last line of each place it stands at."""
    text = source.read_text(encoding="utf-8")
    ends = [m.start() for m in re.finditer("\n", text)]
    places, last = {}, None
    for match in TOKEN.finditer("\n" + text):
        if match[0].startswith(("//", "/*", "\n")):
            continue
        value = match[2] if match[2] is not None else match[1]
        if value is None:
            if last:
                places.setdefault(last[0], []).append(last[1:])
            last = None
            continue
        first_line = bisect.bisect_left(ends, match.start() - 1) + 1
        last_line = bisect.bisect_left(ends, match.end() - 2) + 1
        last = (last[0] + value, last[1], last_line) if last else (value, first_line, last_line)
    return places


def parts_of(text):
    """What of a text stands between its conversions and line ends."""
    parts = [p.strip() for p in re.split(CONVERSION.pattern + "|\n", decoded(text))]
    return [p for p in parts if len(re.sub(r"[^\w]", "", p)) >= 2]


class Tests:
    def __init__(self, root):
        self.bodies = {}   # Suite.Name -> literals of the body
        self.helpers = {}  # Suite.Name -> literals of its file outside of tests
        self.paths = {}    # Suite.Name -> its file
        support = []
        for path in sorted((root / "tests").rglob("*.cpp")) + sorted((root / "tests").rglob("*.h")):
            if "support" in path.parts or path.suffix == ".h":
                support += [decoded(v) for k, v in tokens_of(path.read_text(encoding="utf-8")) if k == "text"]
            else:
                self.read(path)
        self.support = "\0".join(support)

    def read(self, path):
        tokens = tokens_of(path.read_text(encoding="utf-8"))
        outside, names, i = [], [], 0
        while i < len(tokens):
            kind, value = tokens[i]
            if kind == "code" and value in ("TEST", "TEST_F", "TEST_P") and i + 5 < len(tokens):
                name = f"{tokens[i + 2][1]}.{tokens[i + 4][1]}"
                end = matching(tokens, i + 6)
                self.bodies[name] = "\0".join(decoded(v) for k, v in tokens[i:end] if k == "text")
                names.append(name)
                i = end
            elif kind == "text":
                outside.append(decoded(value))
            i += 1
        for name in names:
            self.helpers[name] = "\0".join(outside)
            self.paths[name] = str(path)

    def kind(self, name):
        """The folder of tests/ that the test lies in."""
        return self.paths[name].split("/tests/")[-1].split("/")[0]

    def contains(self, name, text):
        everywhere = self.bodies[name] + "\0" + self.helpers[name] + "\0" + self.support
        return all(part in everywhere for part in parts_of(text))

    def find(self, source, text):
        """The test that contains the text most closely: in its body, followed by a colon where it is a short tag, in a
        file named after the source."""
        parts = parts_of(text)
        candidates = []
        for name in self.bodies if parts else []:
            in_body = all(part in self.bodies[name] for part in parts)
            if in_body or self.contains(name, text):
                near = any(word in self.paths[name] for word in Path(source).with_suffix("").parts[1:])
                tagged = len(parts) > 1 or f"{parts[0]}:" in self.bodies[name] or len(parts[0]) > 25
                candidates.append((not in_body, not tagged, not near, len(candidates), name))
        return min(candidates)[-1] if candidates else None


def read_list(path):
    entries = {}
    if path.exists():
        for line in path.read_text(encoding="utf-8").splitlines():
            if line and not line.startswith("#"):
                source, text, test, reason = (line.split("\t") + ["", "", ""])[:4]
                entries[source, text] = (test, reason)
    return entries


def write_list(path, entries):
    lines = ["# source\ttext\ttest\treason when no test can provoke it"]
    lines += ["\t".join([source, text, test, reason]).rstrip("\t") for (source, text), (test, reason) in entries.items()]
    path.write_text("\n".join(lines) + "\n", encoding="utf-8")


def problems_of(texts, entries, tests):
    problems = [f"{source}: no such text any more: {text}" for source, text in entries if (source, text) not in texts]
    for source, text in texts:
        test, reason = entries.get((source, text), ("", ""))
        if (test == "-" and reason) or (test == VERDICT and source.startswith(VERDICTS)):
            continue
        if not test or test == "-":
            problems.append(f"{source}: no test provokes: {text}")
        elif test not in tests.bodies:
            problems.append(f"{source}: there is no test {test} for: {text}")
        elif not tests.contains(test, text):
            problems.append(f"{source}: {test} does not contain: {text}")
    unreachable = sum(test == "-" for test, _ in entries.values())
    if unreachable > MOST_UNREACHABLE:
        problems.append(f"{unreachable} texts are said to be out of reach; at most {MOST_UNREACHABLE} may be")
    return problems


class Counters:
    """Where the tests of a build with counters leave them: a folder that ordinary users may write in too."""

    def __init__(self, build, folder):
        self.build = build
        self.folder = Path(folder)
        objects = build / "CMakeFiles/korlib.dir"
        self.objects = Path(folder + str(objects))
        for notes in objects.rglob("*.gcno"):
            link = self.objects / notes.relative_to(objects)
            link.parent.mkdir(parents=True, exist_ok=True)
            link.symlink_to(notes)
        for place in [self.folder, *self.folder.rglob("*")]:
            if not place.is_symlink():
                place.chmod(0o777)

    def run(self, program, name):
        """Runs one test alone, with fresh counters."""
        for file in self.objects.rglob("*.gcda"):
            file.unlink()
        subprocess.run([str(program), f"--gtest_filter={name}:*/{name}/*"], cwd=program.parent, timeout=600, check=False,
                       env={**os.environ, "GCOV_PREFIX": str(self.folder)}, stdin=subprocess.DEVNULL,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def of(self, source):
        """How often each line of a source ran: line -> count."""
        file = self.objects / f"{source}.gcda"
        # A header has its counters where it is included: beside it.
        files = [file] if source.endswith(".cpp") else file.parent.glob("*.gcda")
        counts = {}
        for file in files:
            if not file.exists():
                continue
            report = subprocess.run(["gcov", "--json-format", "--stdout", str(file)], capture_output=True, check=True)
            for part in json.loads(report.stdout)["files"]:
                if part["file"].endswith(source):
                    for line in part["lines"]:
                        number = line["line_number"]
                        counts[number] = max(counts.get(number, 0), line["count"])
        return counts


def ran(counts, places):
    """Whether a literal's line ran at one of its places; the compiler may count it with a line above. A constant has
    no line that runs."""
    for first, last in places:
        above = [n for n in range(first - 1, first - 4, -1) if n in counts][:1]
        lines = [n for n in range(first, last + 1) if n in counts] or above
        if any(counts[n] for n in lines) or (counts and not lines):
            return True
    return False


def unprovoked(entries, tests, root, build):
    """What --run finds: entries whose test leaves the line of their text alone."""
    named = {}
    for (source, text), (test, _) in entries.items():
        if test in tests.bodies and tests.kind(test) != "faults" and "_windows" not in tests.paths[test]:
            named.setdefault(test, []).append((source, text))
    found = []
    with tempfile.TemporaryDirectory() as folder:
        counters = Counters(build, folder)
        for test, texts in named.items():
            counters.run(build / f"tests/kor_{tests.kind(test)}_tests", test)
            counts = {source: counters.of(source) for source in {source for source, _ in texts}}
            found += [f"{source}: {test} does not provoke: {text}" for source, text in texts
                      if not ran(counts[source], places_of(root / source).get(text, []))]
    return found


def main(argv):
    update = "--update" in argv
    rest = [a for a in argv[1:] if a != "--update"]
    build = Path(rest[1]).resolve() if rest[:1] == ["--run"] else None
    rest = rest[2:] if build else rest
    root = Path(rest[0] if rest else ".").resolve()
    tests = Tests(root)
    texts = [(str(source.relative_to(root)), text)
             for source in sorted((root / "src").rglob("*.cpp")) + sorted((root / "src").rglob("*.h"))
             if "windows" not in source.name for text in failure_texts(source)]
    entries = read_list(root / LIST)
    if update:
        def entry(key):
            test, reason = entries.get(key, ("", ""))
            verdict = test == VERDICT and key[0].startswith(VERDICTS)
            good = verdict or (test == "-" and reason) or (test in tests.bodies and tests.contains(test, key[1]))
            found = (test, reason) if good else (tests.find(*key) or "", "")
            return found if found[0] or not key[0].startswith(VERDICTS) else (VERDICT, "")
        entries = {key: entry(key) for key in texts}
        write_list(root / LIST, entries)
    problems = problems_of(texts, entries, tests)
    if build:
        problems += unprovoked(entries, tests, root, build)
    for problem in problems:
        print(problem)
    if problems and not update:
        print("tools/check_failure_texts.py --update looks for tests that contain the new texts.")
    print(f"{len(texts)} failure texts, {len(tests.bodies)} tests, {len(problems)} problems")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
