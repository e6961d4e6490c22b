"""The documents are true: what is compiled, what commands print, and that both languages tell the same."""

import contextlib
import json
import os
import pathlib
import re
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
PAIRS = [("README.md", "README.ja.md")] + [
    (f"docs/{page.name}", f"docs/{page.stem}.ja.md")
    for page in sorted(ROOT.glob("docs/*.md")) if not page.name.endswith(".ja.md")]


def text_of(name: str) -> str:
    return (ROOT / name).read_text(encoding="utf-8")


def prose_of(text: str) -> str:
    """The text without its blocks of code."""
    return re.sub(r"^```.*?^```$|(?:^    [^\n]*\n)+", "", text, flags=re.M | re.S)


def examples_in(page: str) -> list:
    """(command, output) for each line that begins with `$ ` in a block; `> ` goes on with a command."""
    examples = []
    for block in re.findall(r"^```\n(\$ .*?)^```$", text_of(page), re.M | re.S):
        for example in re.split(r"^\$ ", block, flags=re.M)[1:]:
            command, more, output = re.match(r"(.*\n)((?:> .*\n)*)((?:.*\n)*)", example).groups()
            examples.append((command + re.sub(r"^> ", "", more, flags=re.M), output))
    return examples


@contextlib.contextmanager
def folder_of_a_reader():
    """One in which the commands of the documents can be typed as they stand."""
    with tempfile.TemporaryDirectory(dir=ROOT / "build") as name:
        for link, target in [("samples", "samples"), ("fuzz", "fuzz"), ("zat", "build/linux/zat")]:
            os.symlink(ROOT / target, pathlib.Path(name, link))
        path = f"{ROOT}/build/linux:{os.environ['PATH']}"
        yield {"cwd": name, "env": {**os.environ, "PATH": path, "LC_ALL": "C.UTF-8", "COLUMNS": "80"}}


def output_of(command: str, reader: dict) -> str:
    """As in a terminal: what a program tells on standard error comes last."""
    done = subprocess.run(["bash", "-c", command], stdin=subprocess.DEVNULL, capture_output=True, **reader)
    return (done.stdout + done.stderr).decode().replace("\r\n", "\n")


def shown_and_printed(shown, printed):
    """Both, the printed one without the members that the document leaves out."""
    if isinstance(shown, dict) and isinstance(printed, dict):
        return shown, {name: shown_and_printed(shown[name], value)[1] for name, value in printed.items() if name in shown}
    if isinstance(shown, list) and isinstance(printed, list) and len(shown) == len(printed):
        return shown, [shown_and_printed(*pair)[1] for pair in zip(shown, printed)]
    return shown, printed


def anchors_of(text: str) -> set:
    """Of the headings, as the web pages of repositories name them."""
    headings = re.findall(r"^#+ (.+)$", re.sub(r"^```.*?^```$", "", text, flags=re.M | re.S), re.M)
    return {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-") for heading in headings}


def shape_of(page: str) -> dict:
    """What a page has in every language."""
    text = text_of(page)
    prose = prose_of(text)
    tables = re.findall(r"^\|.*\|$", prose, re.M)
    # Remarks behind a command are translated.
    code = re.findall(r"^```.*?^```$|(?:^    [^\n]*\n)+", text, re.M | re.S)
    links = re.findall(r"\]\(([^)]+)\)", prose)
    return {
        "headings": re.findall(r"^(#+) ", prose, re.M),
        "code": [re.sub(r" +# .*", "", block) for block in code],
        "items": len(re.findall(r"^(?:- |\d+\. )", prose, re.M)),
        "tables": [(row.count("|"), re.findall(r"`[^`]+`", row.split("|")[1])) for row in tables],
        "links": [re.sub(r"(\.ja)?\.md(#.*)?$", ".md", link) for link in links if not link.startswith("#")],
        "inner links": len([link for link in links if link.startswith("#")]),
    }


class Documents(unittest.TestCase):
    maxDiff = None

    def test_the_host_of_the_readme_is_the_example(self):
        code = re.search(r"```c\n(.*?)```", text_of("README.md"), re.S).group(1)
        self.assertEqual(code, text_of("examples/host.c"))

    def test_commands_print_what_is_shown(self):
        for page, _ in PAIRS:
            examples = examples_in(page)
            self.assertTrue(examples, page)
            with folder_of_a_reader() as reader:
                for command, output in examples:
                    printed = output_of(command, reader)
                    with self.subTest(page=page, command=command):
                        if output.startswith("{\n") and "jq" not in command:
                            self.assertEqual(*shown_and_printed(json.loads(output), json.loads(printed)))
                        else:
                            self.assertEqual(output, printed)

    def test_both_languages_tell_the_same(self):
        for english, japanese in PAIRS:
            one, other = shape_of(english), shape_of(japanese)
            for part in one:
                with self.subTest(page=japanese, part=part):
                    self.assertEqual(one[part], other[part])

    def test_links_lead_somewhere(self):
        for page in [*ROOT.glob("*.md"), *ROOT.glob("docs/*.md")]:
            for link, anchor in re.findall(r"\]\(([^)#:]*)(?:#([^)]+))?\)", prose_of(page.read_text(encoding="utf-8"))):
                target = page.parent / link if link else page
                with self.subTest(page=page.name, link=link, anchor=anchor):
                    self.assertTrue(target.exists())
                    if anchor:
                        self.assertIn(anchor, anchors_of(target.read_text(encoding="utf-8")))

    def test_the_layout_names_every_folder(self):
        folders = [path for path in [*ROOT.iterdir(), *ROOT.glob("src/*")] if path.is_dir()]
        names = {str(path.relative_to(ROOT)) for path in folders} - {"src", "build"}
        layout = text_of("README.md").split("## How the repository")[1].split("\n## ")[0]
        told = re.findall(r"`([^`]+)/`", "\n".join(re.findall(r"^\|([^|]+)\|", layout, re.M)))
        self.assertEqual({name for name in names if not name.startswith(".")}, set(told))

    def test_type_codes_are_those_of_the_library(self):
        known = {}
        for name, code, mark in re.findall(r"FILETYPE_(\w+) = (\d+),?\s*(/\* \+)?", text_of("include/zat/zat.h")):
            known[name] = (int(code), "detected" if mark else "")
        for name in re.findall(r"\{\w+, \w+, FILETYPE_(\w+)", text_of("src/api/dispatch.cpp")):
            known[name] = (known[name][0], "**described**")
        told = {}
        for row in re.findall(r"^\| (\d+(?:, | to )?\d*) \| (.*?) \|.*\| ?(.*?) ?\|$", text_of("docs/host-guide.md"), re.M):
            first = int(re.match(r"\d+", row[0]).group())
            told |= {name: (first + i, row[2]) for i, name in enumerate(re.findall(r"`(\w+)`", row[1]))}
        self.assertEqual({name: told.get(name) for name in known}, known)

    def test_one_version(self):
        version = re.search(r"project\(zat VERSION (\S+)", text_of("CMakeLists.txt")).group(1)
        self.assertEqual(re.search(r"^## (\S+)", text_of("CHANGELOG.md"), re.M).group(1), version)


if __name__ == "__main__":
    unittest.main()
