"""The Python binding, as its users call it."""

import concurrent.futures
import dataclasses
import itertools
import json
import os
import pathlib
import shutil
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
    def setUp(self):
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.folder = pathlib.Path(temporary.name)

    def test_describes_a_file(self):
        for path in [SAMPLE, str(SAMPLE), bytes(SAMPLE)]:
            info = zat.info(path)
            self.assertEqual((info.type_code, info.type_name, info.described), (106, "MP3", True))
            self.assertTrue(info.audio[0].startswith("MPEG1-LayerIII 44100Hz"), info.audio)
            self.assertEqual(info.file_size, SAMPLE.stat().st_size)
            self.assertGreater(info.play_time, 1)
            self.assertTrue(info.report.endswith("sec)\r\n"), info.report)
        self.assertEqual(zat.version(), 161225)

    def test_finds_library_and_catalogue_wherever_they_are(self):
        library, catalogue = ROOT / "build/linux/libzat.so.1", ROOT / "catalogue/zat-codec.ini"
        self.put("prefix/share/zat", ROOT / "bindings/python/zat.py", catalogue)
        self.put("prefix/lib", library)
        self.put("elsewhere/lib/deep", library)
        self.put("elsewhere/share/zat", catalogue)
        self.put("broken", ROOT / "README.md")
        (self.folder / "broken/README.md").rename(self.folder / "broken/libzat.so")
        self.put("module", ROOT / "bindings/python/zat.py")
        (self.folder / "zat-codec.ini").write_text("")  # the folder it runs in is no place to look
        rows = [  # folder of zat.py, environment, what is printed
            ("prefix/share/zat", {}, "[PCM"),
            ("module", {"ZAT_LIBRARY_DIR": self.folder / "elsewhere/lib/deep"}, "[PCM"),
            ("module", {"ZAT_LIBRARY_DIR": "elsewhere/lib/deep"}, "[PCM"),
            ("module", {"LD_LIBRARY_PATH": self.folder / "elsewhere/lib/deep"}, "[PCM"),
            ("module", {"ZAT_LIBRARY_DIR": self.folder / "broken"}, "broken/libzat.so: "),
        ]
        for place, environment, expected in rows:
            with self.subTest(place=place, environment=environment):
                done = subprocess.run(
                    ["/usr/bin/python3", "-P", "-c", f"import zat; print(zat.info({str(ROOT / 'fuzz/seeds/pcm.wav')!r}).audio[0])"],
                    env={"PYTHONPATH": str(self.folder / place), **environment}, cwd=self.folder, capture_output=True,
                    text=True)
                self.assertIn(expected, done.stdout + done.stderr)

    def put(self, folder, *files):
        (self.folder / folder).mkdir(parents=True, exist_ok=True)
        for file in files:
            shutil.copy(file, self.folder / folder)

    def test_gives_what_the_program_gives(self):
        wave = (ROOT / "fuzz/seeds/pcm.wav").read_bytes()
        # Chunk names of bytes that no character has, or only another reading of the code page.
        odd = b"".join(bytes(name) + bytes(4) for name in itertools.product([0x41, 0x80, 0x83], [0xA0, 0xF0, 0xFF],
                                                                            [0x40, 0x94, 0xFD], [0xFC]))
        pathlib.Path(self.folder, "odd.wav").write_bytes(b"RIFF" + (len(wave) + len(odd) - 8).to_bytes(4, "little")
                                                         + wave[8:] + odd)
        command = [ROOT / "build/linux/zat", "--format", "json", "-q", "--with-report", ROOT / "fuzz/seeds", self.folder]
        for record in json.loads(subprocess.run(command, stdout=subprocess.PIPE).stdout):
            info = zat.info(record["path"])
            for name in ["label", "general", "video", "audio", "extra_info", "extra", "play_time", "data_size", "file_size",
                         "report"]:
                self.assertEqual(getattr(info, name), record[name], record["path"])
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

    def test_paths_of_any_bytes_and_length(self):
        deep = self.folder.joinpath(*["d" * 200] * 4)
        deep.mkdir(parents=True)
        for name in [os.fsencode(deep / "long.mp3"), bytes(self.folder) + b"/\xff.mp3"]:
            shutil.copy(SAMPLE, name)
            info = zat.info(name)
            self.assertEqual((info.type_name, os.fsencode(info.path)), ("MP3", name))
        for path in ["x" * 512, "a\0b"]:
            with self.assertRaises(zat.ZatError):
                zat.info(path)

    def test_threads_agree(self):
        with concurrent.futures.ThreadPoolExecutor(8) as pool:
            self.assertEqual(len(set(i.report for i in pool.map(zat.info, [SAMPLE] * 200))), 1)


if __name__ == "__main__":
    unittest.main()
