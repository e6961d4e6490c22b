"""examples/cluster on a cluster of two worker processes, one of which is killed at work."""

import csv
import json
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
SCRIPT = ROOT / "examples/cluster/describe.py"
FILES, FILES_PER_PART = 400, 20

# The binding, but slow enough that there is a time at which half of the work is done.
SLOW_ZAT = f"""
import importlib.util, sys, time
spec = importlib.util.spec_from_file_location("real_zat", {str(ROOT / "bindings/python/zat.py")!r})
real = sys.modules["real_zat"] = importlib.util.module_from_spec(spec)
spec.loader.exec_module(real)
Info, ZatError, version = real.Info, real.ZatError, real.version
def info(path):
    time.sleep(0.004)
    return real.info(path)
"""


def rows_in(output):
    rows = []
    for part in output.glob("part-*.csv"):
        with open(part, encoding="utf-8", errors="surrogateescape", newline="") as file:
            rows += csv.DictReader(file)
    return rows


class Cluster(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        self.media, self.output = self.folder / "media", self.folder / "output"
        self.media.mkdir()
        (self.folder / "zat.py").write_text(SLOW_ZAT)
        os.environ["PYTHONPATH"] = str(self.folder)
        sys.path.insert(0, str(self.folder))  # which the workers are given
        self.addCleanup(sys.path.pop, 0)
        self.names = {os.fsencode(self.media / f"{n:04}.mp3") for n in range(FILES - 2)}
        self.names |= {os.fsencode(self.media / "日本語, \"a\"\nb.mp3"), bytes(self.media) + b"/\xff.mp3"}
        for name in self.names:
            os.symlink(ROOT / "samples/sine-vbr.mp3", name)

    def command(self, *arguments):
        return [SCRIPT, self.output, self.media, "--files-per-part", str(FILES_PER_PART), *arguments]

    def parts(self):
        return {part.name: part.stat().st_mtime_ns for part in self.output.glob("part-*.csv")}

    def check_rows(self):
        """Every file stands in one row, described."""
        rows = rows_in(self.output)
        self.assertEqual(sorted(os.fsencode(row["path"]) for row in rows), sorted(self.names))
        for row in rows:
            self.assertEqual((row["type_name"], row["error"]), ("MP3", ""), row["path"])
            self.assertEqual(json.loads(row["streams"])[0]["codec"], "MP3")

    def test_nothing_is_lost_and_nothing_done_twice(self):
        from distributed import Client, LocalCluster

        two = {"n_workers": 2, "threads_per_worker": 1, "dashboard_address": None}
        with LocalCluster(**two) as cluster, Client(cluster) as client:
            workers = list(client.run(os.getpid).values())
            at_work = subprocess.Popen(self.command("--scheduler", cluster.scheduler_address), stdout=subprocess.PIPE,
                                       stderr=subprocess.STDOUT, text=True)
            deadline = time.monotonic() + 60
            while not self.parts():
                self.assertLess(time.monotonic(), deadline)
                self.assertIsNone(at_work.poll())
                time.sleep(0.01)
            os.kill(workers[0], signal.SIGKILL)
            self.assertLess(len(self.parts()), FILES // FILES_PER_PART)
            told, _ = at_work.communicate(timeout=120)
            self.assertEqual(at_work.returncode, 0, told)
            self.assertIn("100% Completed", told)
            self.assertNotIn(workers[0], client.run(os.getpid).values())
            self.check_rows()
            self.assertEqual(list(self.output.glob(".*")), [])

            # What is missing is made good, and the rest left as it is.
            before = self.parts()
            (self.output / min(before)).unlink()
            added = self.folder / "added.mp3"
            shutil.copy(ROOT / "samples/sine-cbr.mp3", added)
            self.names.add(os.fsencode(added))
            (self.folder / "list").write_text(f"{added}\n")
            again = subprocess.run(self.command("--scheduler", cluster.scheduler_address, "--files-from",
                                                self.folder / "list"), capture_output=True, text=True)
            self.assertEqual(again.returncode, 0, again.stderr)
            self.assertIn(f"{FILES_PER_PART + 1} files to describe, {FILES - FILES_PER_PART} done before", again.stdout)
            self.check_rows()
            self.assertLess(set(before.items()) - {(min(before), before[min(before)])}, set(self.parts().items()))

    def test_on_one_machine_with_a_library_that_is_missing(self):
        (self.folder / "zat.py").write_text("from dataclasses import dataclass\nclass ZatError(OSError): pass\n"
                                            "@dataclass\nclass Info: path: str\n"
                                            "def version(): raise ZatError('no library')\n")
        done = subprocess.run(self.command(), capture_output=True, text=True)
        self.assertEqual(done.returncode, 1)
        self.assertIn("no library", done.stderr)
        self.assertEqual(self.parts(), {})


if __name__ == "__main__":
    unittest.main()
