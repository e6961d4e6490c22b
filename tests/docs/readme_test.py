"""The README's example is the one that is compiled, and its output is the program's."""

import pathlib
import re
import subprocess
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]


class Readme(unittest.TestCase):
    def test_is_true(self):
        for name in ["README.md", "README.ja.md"]:
            text = (ROOT / name).read_text(encoding="utf-8")
            code = re.search(r"```c\n(.*?)```", text, re.S).group(1)
            self.assertEqual(code, (ROOT / "examples/host.c").read_text(), name)
            output = re.search(r"```\n(MPEG.*?)```", text, re.S).group(1)
            done = subprocess.run([ROOT / "build/linux/zat", ROOT / "samples/sine-vbr.mp3"], capture_output=True)
            self.assertEqual(output, done.stdout.decode(), name)

    def test_links_lead_somewhere(self):
        for page in [*ROOT.glob("*.md"), *ROOT.glob("docs/*.md")]:
            for link in re.findall(r"\]\(([^)#:]+)\)", page.read_text(encoding="utf-8")):
                self.assertTrue((page.parent / link).exists(), f"{page.name}: {link}")


if __name__ == "__main__":
    unittest.main()
