#!/usr/bin/env python3
"""Describes the fuzz seeds, small files of every kind, and compares each with what was kept of it, so that a
change shows what it changes for users.

    seeds_test.py PROGRAM...            PROGRAM: build/linux/zat, perhaps under valgrind
    seeds_test.py PROGRAM... --accept   keeps what it says now
"""

import json
import os
import pathlib
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
SOME_REFUSED = 1  # the exit status, for seeds that are no media
KEPT = pathlib.Path(__file__).with_name("expected.jsonl")


def described(program):
    os.chdir(ROOT)
    seeds = sorted(str(path) for path in pathlib.Path("fuzz/seeds").iterdir())
    done = subprocess.run([*program, "--lang", "en", "--format", "jsonl", *seeds], stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, encoding="utf-8", timeout=300)
    if done.returncode != SOME_REFUSED:
        sys.exit(done.stderr)
    return done.stdout


def by_path(lines):
    return {entry["path"]: entry for entry in map(json.loads, lines.splitlines())}


def differences(kept, now, place=""):
    """What differs, a line each: its place, what was kept and what is now."""
    if type(kept) is type(now) and isinstance(kept, (dict, list)):
        names = kept.keys() | now.keys() if isinstance(kept, dict) else range(max(len(kept), len(now)))
        return [line for name in sorted(names)
                for line in differences(part_of(kept, name), part_of(now, name), f"{place} {name}")]
    return [] if kept == now else [f"{place}: {kept!r} -> {now!r}"]


def part_of(whole, name):
    if isinstance(whole, dict):
        return whole.get(name)
    return whole[name] if name < len(whole) else None


def main():
    *runner, program = [argument for argument in sys.argv[1:] if argument != "--accept"]
    now = described([*runner, str(pathlib.Path(program).resolve())])
    if "--accept" in sys.argv:
        KEPT.write_text(now, encoding="utf-8")
        return 0
    lines = differences(by_path(KEPT.read_text(encoding="utf-8")), by_path(now))
    print("\n".join(lines) or f"{len(now.splitlines())} files described as before")
    return 1 if lines else 0


if __name__ == "__main__":
    sys.exit(main())
