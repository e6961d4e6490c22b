"""The Python binding, as its users call it."""

import concurrent.futures
import pathlib
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "bindings" / "python"))
import zat  # noqa: E402

SAMPLE = ROOT / "samples" / "sine-vbr.mp3"


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
