"""The page of --format html, as a reader has it in a browser.

    html_test.py PROGRAM
"""

import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

from browser import Browser

ROOT = pathlib.Path(__file__).resolve().parents[2]
PROGRAM = pathlib.Path(sys.argv.pop(1)).absolute()
HOSTILE = ["<img src=x onerror=alert(1)>.mp3", "<!--<script>.mp3", "\"quoted\" 'name' & more.mp3", "a\nb\t\x1b[31m.mp3",
           "gpj.\u202eabc.mp3", "日本語.mp3"]


class Page(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.browser = cls.enterClassContext(Browser())
        cls.folder = pathlib.Path(cls.enterClassContext(tempfile.TemporaryDirectory(dir=ROOT / "build")))
        cls.media = cls.folder / "メディア"
        cls.media.mkdir()
        for name in ["avc.mkv", "hevc.mkv", "tone.flac", "mp3.mp4", "palette.bmp", "pcm.wav", "refused.txt"]:
            shutil.copy(ROOT / "fuzz/seeds" / name, cls.media)
        (cls.media / "gone.mkv").symlink_to("nowhere")
        cls.page = cls.written("page.html", cls.media)

    @classmethod
    def written(cls, name, *arguments, **options):
        page = cls.folder / name
        subprocess.run([PROGRAM, "-q", "--format", "html", "-o", page, *arguments], **options)
        return page

    def setUp(self):
        self.browser.open(self.page)
        self.addCleanup(lambda: self.assertEqual(self.browser.complaints(), []))

    def listed(self, selector="th button"):
        return self.browser.value(f"[...document.querySelectorAll('#rows tr[aria-rowindex] {selector}')]"
                                  ".map(cell => cell.innerText)")

    def text(self, selector):
        return self.browser.value(f"document.querySelector('{selector}').innerText")

    def choose(self, field, value):
        self.browser.value(f"""(() => {{
            const field = document.querySelector('[name={field}]');
            field.value = '{value}';
            field.dispatchEvent(new Event('input', {{ bubbles: true }}));
        }})()""")
        self.browser.settle()

    def test_lists_every_file_and_why_one_is_not_described(self):
        self.assertEqual(self.listed(),
                         ["avc.mkv", "gone.mkv", "hevc.mkv", "mp3.mp4", "palette.bmp", "pcm.wav", "refused.txt",
                          "tone.flac"])
        self.assertEqual(self.text("#title"), "メディア")
        self.assertEqual(self.text("#count"), "8 files")
        self.assertEqual(self.listed("td.kind > span"),
                         ["Matroska", "Unreadable", "Matroska", "MP4", "BMP", "WAV", "Not media", "FLAC"])
        self.assertEqual(self.listed("td.reason"), ["There is no such file", "A text file"])
        self.assertEqual(self.listed("td.video span")[0], "H.264")
        self.assertEqual(self.browser.value("document.documentElement.lang"), "en")

    def test_headings_sort_in_both_directions(self):
        sizes = {path.name: path.stat().st_size for path in self.media.iterdir() if path.exists()}
        largest_first = sorted(sizes, key=sizes.get, reverse=True)
        for direction, order in [("descending", largest_first), ("ascending", largest_first[::-1])]:
            self.browser.click("th.size button")
            self.assertEqual(self.listed(), [*order, "gone.mkv"])  # no size: last in both
            self.assertEqual(self.browser.value("document.querySelector('th.size').ariaSort"), direction)
        self.browser.click("th.name button")
        self.assertEqual(self.listed()[:2], ["avc.mkv", "gone.mkv"])

    def test_filters(self):
        rows = [
            ("kind", "group:video", ["avc.mkv", "hevc.mkv"]),
            ("kind", "group:picture", ["palette.bmp"]),
            ("kind", "group:failed", ["gone.mkv"]),
            ("kind", "kind:FLAC", ["tone.flac"]),
            ("codec", "HEVC", ["hevc.mkv"]),
            ("q", "MKV", ["avc.mkv", "gone.mkv", "hevc.mkv"]),
            ("q", "hevc mkv", ["hevc.mkv"]),
            ("max-size", "0.000001", []),
            ("min-duration", "1e6", []),
            ("min-rate", "1e9", []),
        ]
        for field, value, names in rows:
            with self.subTest(field=field, value=value):
                self.choose(field, value)
                self.assertEqual(self.listed(), names)
                self.assertEqual(self.text("#count"), f"{len(names)} of 8 files")
                self.browser.click("#clear")
                self.assertEqual(len(self.listed()), 8)
        self.choose("q", "nothing is like this")
        self.assertIn("No file is like this", self.text("#rows"))

    def test_a_view_is_kept_in_the_address(self):
        self.browser.write("#q", "mkv")
        self.browser.click("th.name button")
        self.browser.click("th.name button")
        self.browser.open(self.page, self.browser.value("location.hash"))
        self.assertEqual(self.listed(), ["hevc.mkv", "gone.mkv", "avc.mkv"])

    def test_charts_show_and_choose(self):
        labels = self.browser.value("[...document.querySelectorAll('#codecs [role=button]')].map(bar => bar.ariaLabel)")
        self.assertIn("H.264: 1 file listed of 1", labels)
        self.assertIn("PCM: 1 file listed of 1", labels)
        bars = "document.querySelectorAll('#rates rect.rate:not([height=\"0\"])').length"
        self.assertGreater(self.browser.value(bars), 0)
        self.browser.click("#codecs [data-codec=FLAC]")
        self.assertEqual(self.listed(), ["tone.flac"])
        self.browser.press("Enter", 13, "\r")  # the bar has kept the keyboard
        self.assertEqual(len(self.listed()), 8)
        drawn = "document.querySelector('#rates g:nth-of-type({}) rect.all').getAttribute('height') > 0"
        bar = next(n for n in range(1, 99) if self.browser.value(drawn.format(n)))
        self.browser.click(f"#rates g:nth-of-type({bar})")
        names = self.listed()
        self.assertTrue(0 < len(names) < 8, names)

    def test_keyboard_alone_reaches_a_file_and_all_its_facts(self):
        self.browser.press("/", 191, "/")
        self.assertEqual(self.browser.value("document.activeElement.id"), "q")
        self.browser.value("document.querySelector('#rows button[tabindex=\"0\"]').focus()")
        for key, code in [("End", 35), ("ArrowDown", 40), ("ArrowUp", 38), ("ArrowUp", 38), ("Enter", 13)]:
            self.browser.press(key, code, "\r" if key == "Enter" else "")
        self.assertEqual(self.text("dialog h2"), "pcm.wav")
        shown = self.text("#facts")
        for fact in ["Format\nWAV", "PCM", "Sample rate\n", "Report\n"]:
            self.assertIn(fact, shown)
        self.browser.press("Escape", 27)
        self.assertEqual(self.browser.value("document.activeElement.innerText"), "pcm.wav")

    def test_names_are_text_whatever_they_hold(self):
        folder = self.folder / "hostile"
        (folder / "<").mkdir(parents=True)
        paths = [*HOSTILE, "</script><script>alert(1)<"]
        for name in paths:
            (folder / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(ROOT / "samples/sine-vbr.mp3", folder / name)
        shutil.copy(ROOT / "samples/sine-vbr.mp3", bytes(folder) + b"/\xff.mp3")
        self.browser.open(self.written("hostile.html", folder))
        shown = {"a\nb\t\x1b[31m.mp3": "a\\x0Ab\\x09\\x1B[31m.mp3", "gpj.\u202eabc.mp3": "gpj.\\u202Eabc.mp3"}
        names = [*(shown.get(name, name) for name in HOSTILE), "script><script>alert(1)<", "\ufffd.mp3"]
        self.assertEqual(sorted(self.listed()), sorted(names))
        self.assertEqual(self.browser.value("document.querySelectorAll('img, #rows script').length"), 0)

    def test_nothing_to_list(self):
        (self.folder / "empty").mkdir()
        self.browser.open(self.written("empty.html", self.folder / "empty"))
        self.assertIn("No files were found", self.text("#rows"))
        self.assertIn("No codecs are known", self.text("#codecs"))

    def test_ten_thousand_files_stay_few_in_the_document(self):
        names = "\n".join([str(self.media / "tone.flac")] * 9999 + [str(self.media / "avc.mkv")])
        page = self.written("many.html", "--files-from", "-", input=names.encode())
        self.browser.open(page)
        self.assertEqual(self.browser.value("document.querySelector('table').getAttribute('aria-rowcount')"), "10001")
        self.assertLess(self.browser.value("document.querySelectorAll('tr').length"), 100)
        self.browser.value("scrollTo(0, document.documentElement.scrollHeight)")
        self.browser.settle()
        self.assertEqual(self.listed()[-1], "avc.mkv")
        self.assertLess(self.browser.value("document.querySelectorAll('tr').length"), 100)


if __name__ == "__main__":
    unittest.main()
