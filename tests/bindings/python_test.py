"""The Python binding, as its users call it."""

import concurrent.futures
import dataclasses
import json
import pathlib
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "bindings" / "python"))
import zat  # noqa: E402

SAMPLE = ROOT / "samples" / "sine-vbr.mp3"


def known(described):
    """The members as JSON has them: no other than those that are known."""
    members = dataclasses.asdict(described).items()
    return {name: list(value) if isinstance(value, tuple) else value for name, value in members
            if value not in (None, False, (), []) or name == "id" or name == "start" and value is not None}


class Binding(unittest.TestCase):
    def test_describes_a_file(self):
        for path in [SAMPLE, str(SAMPLE), bytes(SAMPLE)]:
            info = zat.info(path)
            self.assertEqual((info.type_code, info.type_name, info.described), (106, "MP3", True))
            self.assertTrue(info.audio[0].startswith("MPEG1-LayerIII 44100Hz"), info.audio)
            self.assertEqual(info.file_size, SAMPLE.stat().st_size)
            self.assertGreater(info.play_time, 1)
            self.assertTrue(info.report.endswith("sec)\r\n"), info.report)
        self.assertEqual(zat.version(), 161225)

    def test_finds_the_catalogue(self):
        self.assertIn("PCM", zat.info(ROOT / "fuzz" / "seeds" / "pcm.wav").audio[0])

    def test_gives_the_typed_details_that_the_program_gives(self):
        command = [ROOT / "build/linux/zat", "--format", "json", "-q", ROOT / "fuzz/seeds"]
        for record in json.loads(subprocess.run(command, stdout=subprocess.PIPE).stdout):
            info = zat.info(record["path"])
            self.assertEqual([known(stream) for stream in info.streams], record.get("streams", []))
            for name in ["format", "format_profile", "title", "artist", "writer", "created", "duration", "bit_rate",
                         "chapters", "notes", "estimated"]:
                self.assertEqual(known(info).get(name), record.get(name), (name, record["path"]))

    def test_says_why_a_file_is_refused(self):
        missing = zat.info("nowhere/missing")
        self.assertEqual((missing.type_code, missing.described), (2, False))
        self.assertEqual(missing.general, ["ファイルをオープンできません"])
        with tempfile.NamedTemporaryFile() as empty:
            self.assertEqual(zat.info(empty.name).general, ["解析不可(ファイルサイズ=0)"])

    def test_paths_that_cannot_be_handed_over(self):
        for path in ["x" * 512, "a\0b"]:
            with self.assertRaises(zat.ZatError):
                zat.info(path)

    def test_threads_agree(self):
        with concurrent.futures.ThreadPoolExecutor(8) as pool:
            self.assertEqual(len(set(i.report for i in pool.map(zat.info, [SAMPLE] * 200))), 1)


if __name__ == "__main__":
    unittest.main()
