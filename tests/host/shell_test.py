"""What the shells complete and what the manual page tells: as much as the program's own help.

    shell_test.py PROGRAM DIRECTORY    DIRECTORY: where zat.1 and the completions were made
"""

import pathlib
import re
import shutil
import subprocess
import sys
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
PROGRAM, DIRECTORY = map(pathlib.Path, sys.argv[1:3])


def printed_by(*command) -> str:
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def options_of_help() -> list:
    return re.findall(r"^  (?:(-.),)?--([a-z-]+)", printed_by(PROGRAM, "--help"), re.M)


def completed(*words: str) -> list:
    """What bash proposes for the last word."""
    script = f"""
        compopt() {{ :; }} # works in a completion of a terminal only
        source {DIRECTORY}/zat.bash
        COMP_WORDS=("$@") COMP_CWORD=$(($# - 1))
        _zat
        printf '%s\\n' "${{COMPREPLY[@]}}"
    """
    return printed_by("bash", "-c", script, "bash", "zat", *words).split()


class Shell(unittest.TestCase):
    def test_every_option_is_told_everywhere(self):
        options = options_of_help()
        self.assertGreater(len(options), 15)
        manual = printed_by("mandoc", "-T", "ascii", DIRECTORY / "zat.1")
        manual = re.sub(".\b", "", manual)  # what is bold or underlined for a printer
        for short, name in options:
            shown = f"{short}, --{name}" if short else f"--{name}"
            with self.subTest(option=shown):
                self.assertRegex(manual, rf"(?m)^ +{shown}\b")
                self.assertEqual(completed(f"--{name}")[:1], [f"--{name}"])
                if short:
                    self.assertEqual(completed(short), [short])
                self.assertRegex((DIRECTORY / "_zat").read_text(), rf"--{name}[=[}}]")
                self.assertRegex((DIRECTORY / "zat.fish").read_text(), rf" -l {name} ")
                for page in ["cli.md", "cli.ja.md"]:
                    page = (ROOT / "docs" / page).read_text(encoding="utf-8")
                    cell = f"`{short}`, `--{name}" if short else f"`--{name}"
                    self.assertRegex(page, rf"(?m)^\| {cell}[ `]")

    def test_bash_completes_words(self):
        refusal = subprocess.run([PROGRAM, "--lang", "en", "--format", "?", "x"], capture_output=True, text=True).stderr
        formats = re.search(r"none of (.*)", refusal).group(1).split(", ")
        for words, expected in [
            (["--format", ""], formats),
            (["-f", "js"], ["json", "jsonl"]),
            (["--format", "=", "ta"], ["table"]),
            (["--format", "="], formats),
            (["--max"], ["--max-depth"]),
            (["--sort", "d"], ["duration"]),
            (["file"], []),
            (["--jobs", ""], []),
        ]:
            with self.subTest(words=words):
                self.assertEqual(completed(*words), expected)

    @unittest.skipUnless(shutil.which("fish"), "large, and seldom there")
    def test_fish_completes_words(self):
        for typed, expected in [("zat -f js", ["json", "jsonl"]), ("zat --max", ["--max-depth"])]:
            proposed = printed_by("fish", "-c", f"source {DIRECTORY}/zat.fish; complete -C '{typed}'")
            self.assertEqual([line.split("\t")[0] for line in proposed.splitlines()], expected)

    def test_the_files_are_well_formed(self):
        for command in [
            ["mandoc", "-T", "lint", "-W", "warning", "zat.1"],
            ["bash", "-n", "zat.bash"],
            ["zsh", "-n", "_zat"],
            ["fish", "--no-execute", "zat.fish"],
        ]:
            if shutil.which(command[0]) or command[0] not in ("zsh", "fish"):  # large, and seldom there
                done = subprocess.run(command, cwd=DIRECTORY, capture_output=True, text=True)
                self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "", ""), command)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
