#!/usr/bin/env python3
"""Packs a release, unpacks both archives in a folder with blanks and letters of many scripts, and runs a model there.

usage: release_runs.py SOURCE-FOLDER LINUX-KOR WINDOWS-KOR RUNNER [RUNNER ARGUMENTS...]
RUNNER starts Windows programs.
"""
import pathlib
import subprocess
import sys
import tempfile

from examples_agree import compare_binaries

MODEL = "lactate-fid"
FOLDER = "Ünpacked here – Ω 中文"
EXPECTED = ["build", "models", "spin-systems", "sequences", "docs", "README.md", "CHANGELOG.md", "CONTRIBUTING.md"]


def unpacked(archive, where):
    """The one folder that the archive holds."""
    where.mkdir(parents=True)
    subprocess.run(["cmake", "-E", "tar", "xf", str(archive)], cwd=where, check=True)
    (root,) = where.iterdir()
    missing = [name for name in EXPECTED if not (root / name).exists()]
    if missing:
        raise SystemExit(f"FAIL: {archive.name} does not hold {missing}")
    return root


def run(root, program, runner, drive):
    """Runs the model where it lies; its result file."""
    model = f"{drive}{root}/models/{MODEL}.kormodel"
    result = root / "build" / "runtime" / "results" / (MODEL + ".bin")
    said = f"{drive}{result}"
    if drive:
        model, said = model.replace("/", "\\"), said.replace("/", "\\")
    done = subprocess.run([*runner, str(root / "build" / program), "--run-model", model], capture_output=True,
                          timeout=600)
    text = done.stdout.decode()
    if done.returncode != 0 or done.stderr:
        raise SystemExit(f"FAIL: {program} ended with {done.returncode}: {done.stderr.decode()}")
    if f"Wrote complex receiver signal to {said} " not in text:
        raise SystemExit(f"FAIL: {program} does not name {said}:\n{text}")
    return result


def main():
    source, linux_kor, windows_kor = (pathlib.Path(text).resolve() for text in sys.argv[1:4])
    with tempfile.TemporaryDirectory() as folder:
        folder = pathlib.Path(folder)
        subprocess.run([str(source / "tools" / "pack_release.sh"), str(linux_kor), str(windows_kor), str(folder)],
                       check=True)
        (linux_archive,) = folder.glob("*.tar.gz")
        (windows_archive,) = folder.glob("*.zip")
        linux = unpacked(linux_archive, folder / FOLDER / "one")
        windows = unpacked(windows_archive, folder / FOLDER / "two")
        compare_binaries(MODEL, run(linux, "kor", [], ""), run(windows, "kor.exe", sys.argv[4:], "Z:"))
    print("both archives run where they are unpacked")


if __name__ == "__main__":
    main()
