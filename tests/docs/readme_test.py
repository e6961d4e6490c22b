"""The examples in the documents are true: what is compiled, and what the program prints."""

import json
import pathlib
import re
import subprocess
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]


def text_of(name: str) -> str:
    return (ROOT / name).read_text(encoding="utf-8")


def code_blocks(text: str) -> list:
    return re.findall(r"^```.*?^```|(?:^    [^\n]*\n)+", text, re.M | re.S)


def shown_and_printed(shown, printed):
    """Both, the printed one without the members that the document leaves out."""
    if isinstance(shown, dict) and isinstance(printed, dict):
        return shown, {name: shown_and_printed(shown[name], value)[1] for name, value in printed.items() if name in shown}
    if isinstance(shown, list) and isinstance(printed, list) and len(shown) == len(printed):
        return shown, [shown_and_printed(*pair)[1] for pair in zip(shown, printed)]
    return shown, printed


class Readme(unittest.TestCase):
    def test_is_true(self):
        for name in ["README.md", "README.ja.md"]:
            text = (ROOT / name).read_text(encoding="utf-8")
            code = re.search(r"```c\n(.*?)```", text, re.S).group(1)
            self.assertEqual(code, (ROOT / "examples/host.c").read_text(), name)
            output = re.search(r"```\n(MPEG.*?)```", text, re.S).group(1)
            done = subprocess.run([ROOT / "build/linux/zat", ROOT / "samples/sine-vbr.mp3"], capture_output=True)
            self.assertEqual(output, done.stdout.decode(), name)

    def test_has_the_same_code_and_links_in_both_languages(self):
        english, japanese = text_of("README.md"), text_of("README.ja.md")
        self.assertEqual(code_blocks(english), code_blocks(japanese))
        self.assertEqual(re.findall(r"\]\(.+?\)", english), re.findall(r"\]\(.+?\)", japanese))

    def test_runs_the_examples_of_the_guides(self):
        for page in ["docs/host-guide.md", "docs/lines.md"]:
            examples = re.findall(r"^```\n\$ zat (.+?)\n(.*?)^```", text_of(page), re.M | re.S)
            self.assertTrue(examples, page)
            for arguments, output in examples:
                command = [ROOT / "build/linux/zat", *arguments.split()]
                printed = subprocess.run(command, cwd=ROOT, capture_output=True).stdout.decode()
                if "json" in arguments:
                    self.assertEqual(*shown_and_printed(json.loads(output), json.loads(printed)), arguments)
                else:
                    self.assertEqual(output, printed, arguments)

    def test_links_lead_somewhere(self):
        for page in [*ROOT.glob("*.md"), *ROOT.glob("docs/*.md")]:
            for link in re.findall(r"\]\(([^)#:]+)\)", page.read_text(encoding="utf-8")):
                self.assertTrue((page.parent / link).exists(), f"{page.name}: {link}")


if __name__ == "__main__":
    unittest.main()
