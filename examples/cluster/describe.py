#!/usr/bin/python3
"""Describes the media files of folders, spread over a Dask cluster, as a folder of CSV parts.

    describe.py OUTPUT FOLDER...                     on all processors of this machine
    describe.py OUTPUT --files-from list.txt         the files named there, one a line
    describe.py OUTPUT FOLDER... --scheduler tcp://head:8786

Run again, it goes on where it was: files that stand in a part of OUTPUT are not described again. A worker
that dies loses nothing, for its parts are given to another.

Needs python3-distributed, and zat.py with its library on every machine; OUTPUT and the files must have the
same paths everywhere.
"""

import argparse
import csv
import dataclasses
import hashlib
import json
import os
import pathlib
import sys
import uuid

import zat

COLUMNS = [field.name for field in dataclasses.fields(zat.Info) if field.name != "report"] + ["error"]
# Names of any bytes pass through as they are.
TEXT = {"encoding": "utf-8", "errors": "surrogateescape", "newline": ""}


def row_of(path):
    """One file as a flat row: texts, numbers and None, with lists as JSON. Known members of streams only."""
    try:
        facts = dataclasses.asdict(zat.info(path))
    except zat.ZatError as error:
        return {"path": path, "error": str(error)}
    facts["streams"] = [{name: value for name, value in stream.items() if value not in (None, False, ())}
                        for stream in facts["streams"]]
    return {name: json.dumps(value, ensure_ascii=False) if isinstance(value, (list, tuple)) else value
            for name, value in facts.items() if name in COLUMNS}


def write_part(output, paths):
    """Describes the files into one part, named after them: written twice, it is still one. Returns its rows."""
    zat.version()  # a machine without the library fails here, not row by row
    name = hashlib.sha256(b"\0".join(map(os.fsencode, paths))).hexdigest()[:24]
    unfinished = output / f".{uuid.uuid4().hex}.tmp"
    with open(unfinished, "w", **TEXT) as file:
        writer = csv.DictWriter(file, COLUMNS)
        writer.writeheader()
        writer.writerows(map(row_of, paths))
        file.flush()
        os.fsync(file.fileno())
    os.replace(unfinished, output / f"part-{name}.csv")
    return len(paths)


def paths_in(output):
    """The files that stand in the parts."""
    for part in output.glob("part-*.csv"):
        with open(part, **TEXT) as file:
            yield from (row["path"] for row in csv.DictReader(file))


def files_below(folders):
    for folder in folders:
        for place, inner, names in os.walk(os.path.abspath(folder)):
            inner.sort()
            yield from (path for path in (os.path.join(place, name) for name in sorted(names)) if os.path.isfile(path))


def files_named(lists):
    for name in lists:
        with open(name, **TEXT) as file:
            yield from (os.path.abspath(line) for line in file.read().split("\n") if line)


def describe(client, output, paths, files_per_part):
    """Describes the files that no part has. Returns the number of those that could not be done."""
    from distributed import progress, wait

    done = set(paths_in(output))
    todo = [path for path in dict.fromkeys(paths) if path not in done]
    print(f"{len(todo):,} files to describe, {len(done):,} done before")
    parts = [todo[start:start + files_per_part] for start in range(0, len(todo), files_per_part)]
    futures = client.map(write_part, [output] * len(parts), parts, pure=False, retries=2)
    if futures:
        progress(futures)
        wait(futures)
        print()
    failed = [(future, part) for future, part in zip(futures, parts) if future.status != "finished"]
    for future, part in failed:
        print(f"{part[0]} and {len(part) - 1} more: {future.exception()}", file=sys.stderr)
    for unfinished in output.glob(".*.tmp"):
        unfinished.unlink()
    return sum(len(part) for _, part in failed)


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("output", type=pathlib.Path, help="folder of the parts")
    parser.add_argument("folders", nargs="*", metavar="FOLDER")
    parser.add_argument("--files-from", action="append", default=[], metavar="LIST", help="a list of files, one a line")
    parser.add_argument("--files-per-part", type=int, default=1000, metavar="N")
    parser.add_argument("--scheduler", metavar="ADDRESS", help="of a running cluster (default: one on this machine)")
    arguments = parser.parse_args()

    from distributed import Client

    output = arguments.output.absolute()
    output.mkdir(parents=True, exist_ok=True)
    paths = [*files_below(arguments.folders), *files_named(arguments.files_from)]
    here = {"processes": True, "threads_per_worker": 1, "dashboard_address": None}
    with Client(arguments.scheduler) if arguments.scheduler else Client(**here) as client:
        return 1 if describe(client, output, paths, arguments.files_per_part) else 0


if __name__ == "__main__":
    sys.exit(main())
