"""What a user of the command line sees: exit status, standard output, standard error.

    cli_test.py PROGRAM...    PROGRAM and its first arguments, such as: build/linux/zat
"""

import contextlib
import csv
import io
import json
import os
import pathlib
import re
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import time
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
PROGRAM = sys.argv[1:]
WINDOWS = any(argument.endswith(".exe") for argument in PROGRAM)
SANITIZED = "linux-debug" in PROGRAM[0]  # and not optimised
VERSION = re.search(r"project\(zat VERSION (\S+)", (ROOT / "CMakeLists.txt").read_text()).group(1)
SAMPLE = "sine-vbr.mp3"
OK, FAILURES, USAGE = 0, 1, 2
ENGLISH = ["--lang", "en"] if WINDOWS else []  # Wine's locale is Japanese
os.environ.update(LC_ALL="C.UTF-8")


def zat(*arguments, **options):
    options.setdefault("stdin", subprocess.DEVNULL)
    if "input" in options:
        del options["stdin"]
    language = [] if "--lang" in arguments else ENGLISH
    done = subprocess.run([*PROGRAM, *language, *arguments], capture_output=True, timeout=120, **options)
    out = done.stdout
    if WINDOWS and b"--raw" not in [os.fsencode(a) for a in arguments]:
        out = out.replace(b"\r\n", b"\n")
    return done.returncode, out, done.stderr.replace(b"\r\n", b"\n")


def text_of(output):
    return output.decode("utf-8")  # without a console on Windows too


@contextlib.contextmanager
def folder():
    with tempfile.TemporaryDirectory(dir=ROOT / "build") as name:
        before = os.getcwd()
        os.chdir(name)
        try:
            yield pathlib.Path(name)
        finally:
            os.chdir(before)


class Cli(unittest.TestCase):
    def setUp(self):
        self.exit_stack = contextlib.ExitStack()
        self.addCleanup(self.exit_stack.close)
        self.folder = self.exit_stack.enter_context(folder())
        shutil.copy(ROOT / "samples" / SAMPLE, self.folder)
        (self.folder / "unknown.bin").write_bytes(bytes(range(256)) * 40)

    def check(self, arguments, status, out=(), err=(), **options):
        actual, stdout, stderr = zat(*arguments, **options)
        shown = f"{arguments}\n{stdout!r}\n{stderr!r}"
        self.assertEqual(actual, status, shown)
        stdout, stderr = text_of(stdout), text_of(stderr)
        for part in [out] if isinstance(out, str) else out:
            self.assertIn(part, stdout, shown)
        for part in [err] if isinstance(err, str) else err:
            self.assertIn(part, stderr, shown)
        if not out:
            self.assertEqual(stdout, "", shown)
        if not err:
            self.assertEqual(stderr, "", shown)
        return stdout, stderr

    def test_options(self):
        line = "MPEG1-LayerIII 44100Hz [VBR Xing"
        (self.folder / "list.txt").write_text(f"\n{SAMPLE}\n\n")
        (self.folder / "marked.txt").write_text(f"\ufeff{SAMPLE}\n", encoding="utf-8")
        rows = [
            # arguments, status, standard output, standard error
            ([SAMPLE], OK, [line, "Byte 0:00:"], ""),
            (["--help"], OK, ["Usage: zat", "Examples:", "--files-from", "Exit status"], ""),
            (["--version"], OK, f"zat {VERSION} (library build 161225)\n", ""),
            ([], USAGE, "", "no file named"),
            (["--nonsense", SAMPLE], USAGE, "", "--nonsense"),
            (["--format", "xml", SAMPLE], USAGE, "", "zat: --format: xml is none of text, table, json, jsonl, csv, html\n"),
            (["--raw", "--format", "json", SAMPLE], USAGE, "", "zat: --raw goes with --format text only"),
            (["--with-report", SAMPLE], USAGE, "", "zat: --with-report goes with --format json|jsonl only"),
            (["--per-file", SAMPLE], USAGE, "", "zat: --per-file goes with --format csv only"),
            (["--bom", "--format", "json", SAMPLE], USAGE, "", "zat: --bom goes with --format csv only"),
            (["--null", SAMPLE], USAGE, "", "zat: --null goes with --files-from|- only"),
            (["--list-encoding", "console", SAMPLE], USAGE, "", "zat: --list-encoding goes with --files-from|- only"),
            (["--files-from", "list.txt", "-"], USAGE, "", "zat: - does not go with --files-from"),
            (["--detect-only", "--catalogue", ".", SAMPLE], USAGE, "", "zat: --detect-only does not go with --catalogue"),
            (["--detect-only", "--sort", "duration", SAMPLE], USAGE, "", "zat: --detect-only does not go with --sort"),
            (["--version", SAMPLE], USAGE, "", "zat: --version does not go with PATH"),
            (["--catalogue", "nowhere", SAMPLE], USAGE, "", "zat: --catalogue: nowhere is no directory"),
            (["--jobs", "0", SAMPLE], USAGE, "", "zat: --jobs: 0 is no number from 1 to 256"),
            (["--max-depth", "2x", SAMPLE], USAGE, "", "zat: --max-depth: 2x is no number from 1 to 10000"),
            (["--jobs"], USAGE, "", "zat: --jobs needs a value"),
            (["--raw=no", SAMPLE], USAGE, "", "zat: --raw takes no value"),
            (["--format", "csv", "--format", "json", SAMPLE], USAGE, "", "zat: --format is given twice"),
            (["--type", "film", SAMPLE], USAGE, "", ["zat: --type: film is none of video, audio, picture, ", ", Matroska, "]),
            (["--sort", "date", SAMPLE], USAGE, "", "zat: --sort: date is none of name, size, time, duration\n"),
            ([""], FAILURES, "", "zat: : the name is empty\n"),
            (["missing.mp3"], FAILURES, "", "missing.mp3: "),
            (["missing.mp3", SAMPLE], FAILURES, line, "missing.mp3: "),
            (["--quiet", "missing.mp3", SAMPLE], FAILURES, line, ""),
            (["unknown.bin"], FAILURES, ["未対応の形式", "[1:0.0.0]"], "unknown.bin: unknown type: unsupported format\n"),
            (["--detect-only", SAMPLE], OK, ["MPEG audio\n", "[106:0.0.0]"], ""),
            (["--format", "table", "missing.mp3", SAMPLE], FAILURES, ["6.0s  ", f" 52k  {SAMPLE}\n"], "missing.mp3: "),
            (["--files-from", "list.txt"], OK, [f"==> {SAMPLE} <==", line], ""),
            (["--files-from", "marked.txt"], OK, f"==> {SAMPLE} <==", ""),
            (["--files-from", "."], FAILURES, "", "zat: .: "),
            (["--files-from", "missing.txt"], FAILURES, "", "missing.txt: "),
            (["--jobs", "3", SAMPLE, SAMPLE], OK, line, ""),
            (["--format", "html", SAMPLE], OK, ["<!DOCTYPE html>\n", f'"path":"{SAMPLE}"', "</html>\n"], ""),
        ]
        for arguments, status, out, err in rows:
            with self.subTest(arguments=arguments):
                _, messages = self.check(arguments, status, out, err)
                self.assertTrue(messages.isascii(), messages)
                if "--lang" not in arguments:
                    _, _, messages = zat("--lang", "ja", *arguments)
                    for message in text_of(messages).splitlines():
                        self.assertFalse(message.isascii(), message)

    @unittest.skipIf(WINDOWS, "Wine's is Japanese")
    def test_the_locale_chooses_the_language(self):
        absent = ["zat: x: No such file or directory\n", "zat: x: ファイルまたはフォルダがありません\n"]
        for locale, expected, encoding in [
            ({"LC_ALL": "ja_JP.UTF-8"}, absent[1], "utf-8"),
            ({"LC_ALL": "", "LC_MESSAGES": "ja_JP"}, absent[1], "utf-8"),
            ({"LC_ALL": "", "LC_MESSAGES": "en_GB", "LANG": "ja_JP"}, absent[0], "ascii"),
        ]:
            done = subprocess.run([*PROGRAM, "x"], capture_output=True, env=os.environ | locale)
            self.assertEqual(done.stderr.decode(encoding), expected)
        self.check(["--lang", "fr", SAMPLE], USAGE, "", "zat: --lang: fr is none of en, ja\n")

    @unittest.skipIf(WINDOWS, "the same code")
    def test_help_is_for_every_terminal_and_needs_no_library(self):
        alone = shutil.copy(PROGRAM[0], self.folder)
        done = subprocess.run([alone, "--help"], capture_output=True)
        self.assertEqual(done.returncode, OK)
        self.assertLessEqual(max(map(len, done.stdout.decode().splitlines())), 80)

    def test_list_on_standard_input(self):
        for arguments, listed in [
            (["-"], f"{SAMPLE}\n\n{SAMPLE}"),
            (["-0", "-"], f"{SAMPLE}\0\0{SAMPLE}\0"),
            (["-0", "--files-from", "-"], f"{SAMPLE}\0{SAMPLE}"),
        ]:
            with self.subTest(arguments=arguments):
                out, _ = self.check(arguments, OK, "MPEG1-LayerIII", input=listed.encode())
                self.assertEqual(out.count("==> "), 2)

    def test_directories_are_walked_in_order(self):
        for name in ["b/2.mp3", "b/10.mp3", "a/z/1.mp3", "c.mp3"]:
            path = self.folder / "tree" / name
            path.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(SAMPLE, path)
        os.symlink("..", self.folder / "tree/b/loop")  # a folder in itself for Windows programs, as on network drives
        expected = ["tree/a/z/1.mp3", "tree/b/10.mp3", "tree/b/2.mp3", "tree/c.mp3"]
        for jobs in ["1", "4"]:
            out, _ = self.check(["--jobs", jobs, "--format", "jsonl", "tree"], OK, "{", "4 files: 4 described")
            self.assertEqual([json.loads(line)["path"] for line in out.splitlines()], expected)

    def test_an_output_file_is_whole_or_none(self):
        (self.folder / "out.txt").write_text("before")
        self.check(["-o", "out.txt", SAMPLE, "missing.mp3"], FAILURES, "", "missing.mp3: ")
        self.assertIn(b"MPEG1-LayerIII", (self.folder / "out.txt").read_bytes())
        self.check(["-o", "nowhere/out.txt", SAMPLE], FAILURES, "", "zat: nowhere/out.txt: ")
        (self.folder / "own").mkdir()
        self.check(["-o", "own", SAMPLE], FAILURES, "", "zat: own: ")
        self.assertEqual(sorted(os.listdir()), ["out.txt", "own", SAMPLE, "unknown.bin"])

    def test_walks_find_what_is_asked_for(self):
        for name in ["a.mp3", "B.MP3", "b.wav", ".hidden.mp3", "sub/a.mp3", "sub/deep/x.mp3", ".git/a.mp3", "日本.mp3"]:
            path = self.folder / "tree" / name
            path.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(SAMPLE, path)
        everything = {"a.mp3", "B.MP3", "b.wav", "sub/a.mp3", "sub/deep/x.mp3", "日本.mp3"}
        for arguments, expected in [
            ([], everything),
            (["--hidden"], everything | {".hidden.mp3", ".git/a.mp3"}),
            (["--only", "*.mp3"], everything - {"b.wav"}),
            (["--only", "?.mp3", "--only", "*av"], everything - {"日本.mp3"}),
            (["--only", "*本*"], {"日本.mp3"}),
            (["--exclude", "SUB"], {"a.mp3", "B.MP3", "b.wav", "日本.mp3"}),
            (["--exclude", "a*", "--exclude", "deep"], {"B.MP3", "b.wav", "日本.mp3"}),
            (["--only", "*.mp3", "--exclude", "??.mp3"], {"a.mp3", "B.MP3", "sub/a.mp3", "sub/deep/x.mp3"}),
            (["--max-depth", "1"], {"a.mp3", "B.MP3", "b.wav", "日本.mp3"}),
            (["--max-depth", "2"], everything - {"sub/deep/x.mp3"}),
        ]:
            if WINDOWS and "*本*" in arguments:
                continue  # Wine hands the arguments over in another code page
            with self.subTest(arguments=arguments):
                _, out, _ = zat("--format", "jsonl", "-q", *arguments, "tree")
                found = {json.loads(line)["path"].removeprefix("tree/") for line in text_of(out).splitlines()}
                self.assertEqual(found, expected)

    def test_files_found_that_are_no_media_are_counted(self):
        (self.folder / "tree").mkdir()
        for name in ["cover.jpg", "notes.txt", "song.mp3"]:
            shutil.copy(SAMPLE if name == "song.mp3" else "unknown.bin", self.folder / "tree" / name)
        counted = "zat: 3 files: 1 described, 2 not media\n"
        complaints = ["tree/cover.jpg: unknown type", "tree/notes.txt: unknown type"]
        for arguments, status, files, err in [
            (["tree"], OK, 1, counted),
            (["--quiet", "tree"], OK, 1, ""),
            (["--format", "table", "tree"], OK, 1, counted),
            (["--format", "jsonl", "tree"], OK, 3, counted),
            (["--strict", "tree"], FAILURES, 3, [counted, *complaints]),
            (["tree", "tree/notes.txt"], FAILURES, 2, ["4 files: 1 described, 3 not media", complaints[1]]),
            (["tree", "missing.mp3"], FAILURES, 1, ["4 files: 1 described, 2 not media, 1 unreadable"]),
        ]:
            with self.subTest(arguments=arguments):
                out, _ = self.check(arguments, status, "tree/", err)
                self.assertEqual(out.count("tree/"), files)

    def test_types_and_order(self):
        tree = self.folder / "tree"
        (tree / "sub").mkdir(parents=True)
        for i, (name, seconds) in enumerate([("sub/b.wav", 3), ("C.wav", 1), ("a.wav", 2)]):
            (tree / name).write_bytes(wav(seconds))
            os.utime(tree / name, (1e9, 1e9 - i))
        shutil.copy(SAMPLE, tree / "d.mp3")
        os.utime(tree / "d.mp3", (1e9, 1e9 - 9))
        shutil.copy(ROOT / "fuzz/seeds/avc.mkv", tree / "e.mkv")
        os.utime(tree / "e.mkv", (1e9, 1e9 - 10))
        (tree / "notes.txt").write_text("text\n" * 99)
        os.utime(tree / "notes.txt", (1e9, 1e9 - 11))
        size = sorted(["a.wav", "C.wav", "sub/b.wav", "d.mp3", "e.mkv", "notes.txt"], key=lambda n: -(tree / n).stat().st_size)
        everything = "6 files: 5 described, 1 not media\n"
        for arguments, expected, counted in [
            (["--sort", "name"], ["a.wav", "sub/b.wav", "C.wav", "d.mp3", "e.mkv", "notes.txt"], everything),
            (["--sort", "size"], size, everything),
            (["--sort", "time"], ["sub/b.wav", "C.wav", "a.wav", "d.mp3", "e.mkv", "notes.txt"], everything),
            (["--sort", "duration"], ["d.mp3", "sub/b.wav", "a.wav", "C.wav", "e.mkv", "notes.txt"], everything),
            (["--type", "audio"], ["C.wav", "a.wav", "d.mp3", "sub/b.wav"], "4 described, 1 of other types, 1 not media"),
            (["--type", "Video", "--type", "wav", "--sort", "duration"], ["sub/b.wav", "a.wav", "C.wav", "e.mkv"], "4 described, 1 of"),
            (["--type", "MPEG Audio", "--detect-only"], ["d.mp3"], "1 described, 4 of other types"),
            (["--type", "picture"], [], "6 files: 5 of other types, 1 not media"),
        ]:
            for jobs in ["1", "3"]:
                with self.subTest(arguments=arguments, jobs=jobs):
                    _, out, err = zat("--format", "jsonl", "--jobs", jobs, *arguments, "tree")
                    found = [json.loads(line)["path"].removeprefix("tree/") for line in text_of(out).splitlines()]
                    self.assertEqual(found, expected)
                    self.assertIn(counted, text_of(err))
        out, _ = self.check(["--sort", "size", SAMPLE, "missing.mp3", "tree/a.wav"], FAILURES, "==> ", "missing.mp3: ")
        self.assertEqual(re.findall("==> (.*) <==", out), [SAMPLE, "tree/a.wav"][:: 1 if os.path.getsize(SAMPLE) > len(wav(2)) else -1])
        self.check(["--type", "video", SAMPLE], OK)

    def test_a_refused_file_keeps_its_line(self):
        (self.folder / "tag.mp3").write_bytes(b"ID3\4\0\0\0\0\0\x0a" + bytes(10))
        message = "zat: tag.mp3: nothing could be read\n"
        self.check(["tag.mp3"], FAILURES, ["バッファリードエラー", "[0:0.0.0]"], message)
        out, _ = self.check(["--format", "json", "tag.mp3"], FAILURES, "[", message)
        record = json.loads(out)[0]
        self.assertEqual((record["error_code"], record["general"]), ("read-error", ["バッファリードエラー"]))
        self.assertNotIn("play_time", record)
        out, _ = self.check(["--format", "csv", "tag.mp3"], FAILURES, "path,", message)
        rows = list(csv.DictReader(io.StringIO(out)))
        self.assertEqual([(row["kind"], row["play_time"]) for row in rows], [("error", ""), ("general", "")])

    def test_raw_report(self):
        status, out, _ = zat("--raw", "unknown.bin", "-q")
        self.assertEqual(status, FAILURES)
        self.assertTrue(out.startswith("未対応の形式\r\n".encode("cp932")), out)

    def test_json_follows_the_schema(self):
        import jsonschema

        schema = json.loads((ROOT / "docs" / "zat.schema.json").read_text())
        jsonschema.Draft7Validator.check_schema(schema)
        strict = without_later_members(schema)
        arguments = ["--format", "json", "--with-report", SAMPLE, "missing.mp3", "unknown.bin", "-q"]
        _, out, _ = zat(*arguments)
        records = json.loads(out.decode("utf-8"))
        jsonschema.validate(records, strict)
        self.assertEqual([record["path"] for record in records], [SAMPLE, "missing.mp3", "unknown.bin"])
        self.assertEqual(records[0]["type"], {"code": 106, "name": "FILETYPE_MP3"})
        self.assertEqual(records[0]["file_size"], os.path.getsize(SAMPLE))
        self.assertIn("MPEG1-LayerIII", records[0]["report"])
        self.assertIn("error", records[1])
        self.assertEqual(records[2]["general"], ["未対応の形式"])
        _, lines, _ = zat("--format", "jsonl", "--with-report", SAMPLE, "missing.mp3", "unknown.bin", "-q")
        self.assertEqual([json.loads(line) for line in lines.decode("utf-8").splitlines()], records)
        _, empty, _ = zat("--format", "json", "-", input=b"")
        self.assertEqual(json.loads(empty), [])
        _, out, _ = zat("--format", "json", str(ROOT / "fuzz" / "seeds"), "-q")
        jsonschema.validate(json.loads(out.decode("utf-8")), strict)
        records[0]["later"] = records[0]["type"]["later"] = 1
        jsonschema.validate(records, schema)

    def test_reasons_have_fixed_words(self):
        long = "x" * 300
        for name, code, content in [
            ("missing.mp3", "not-found", None), (long, "path-too-long", None), (".", "not-a-file", None),
            ("empty", "empty", b""), ("text", "text", b"text" * 99), ("exe", "executable", b"MZ" + bytes(99)),
            ("zip", "archive", b"PK" + bytes(99)), ("unknown.bin", "unsupported", None),
        ]:
            with self.subTest(name=name):
                if content is not None:
                    (self.folder / name).write_bytes(content)
                # A list's name, unlike a path, is not walked when it is a directory.
                arguments = ["--files-from", "."] if name == "." else [name]
                _, out, _ = zat("--format", "jsonl", "-q", *arguments)
                record = json.loads(out)
                if not (WINDOWS and name in (long, ".")):  # other errors there
                    self.assertEqual(record["error_code"], code, record)
        _, out, _ = zat("--format", "jsonl", "--detect-only", SAMPLE)
        self.assertEqual(json.loads(out)["format"], "MPEG audio")

    def test_csv_has_a_row_a_stream(self):
        _, out, _ = zat("--format", "csv", SAMPLE, "missing.mp3", "-q")
        rows = list(csv.DictReader(io.StringIO(out.decode("utf-8"))))
        self.assertEqual([row["kind"] for row in rows], ["audio", "extra", "error"])
        self.assertTrue(rows[0]["line"].startswith("MPEG1-LayerIII"))
        self.assertEqual(rows[0]["type_code"], "106")
        self.assertGreater(float(rows[0]["play_time"]), 0)

    def test_csv_for_spreadsheets_and_of_files(self):
        (self.folder / "tone.wav").write_bytes(wav(2))
        _, out, _ = zat("--format", "csv", "--per-file", "--bom", SAMPLE, "tone.wav", "missing.mp3", "unknown.bin", "-q")
        self.assertTrue(out.startswith(b"\xef\xbb\xbfpath,"))
        rows = list(csv.DictReader(io.StringIO(out.decode("utf-8-sig"))))
        self.assertEqual([row["path"] for row in rows], [SAMPLE, "tone.wav", "missing.mp3", "unknown.bin"])
        self.assertEqual([row["duration"] for row in rows], [rows[0]["duration"], "2.0", "", ""])
        self.assertEqual([row["audio_streams"] for row in rows], ["1", "1", "", ""])
        self.assertEqual([row["audio_codec"] for row in rows], ["MP3", "PCM", "", ""])
        self.assertEqual([row["error_code"] for row in rows], ["", "", "not-found", "unsupported"])
        self.assertEqual(rows[3]["error"], "unsupported format")
        self.assertNotIn(None, [*rows[0], *rows[0].values()])  # no field without a column, no column without a field

    def test_catalogue_option(self):
        (self.folder / "tone.wav").write_bytes(wav(0))
        (self.folder / "own").mkdir()
        (self.folder / "own" / "zat-codec.ini").write_text("[AVI-Audio]\n0001\tOwn name\n")
        self.check(["tone.wav"], OK, "[PCM")
        self.check(["--catalogue", "own", "tone.wav"], OK, "[Own name]")
        (self.folder / "empty").mkdir()
        self.check(["--catalogue", "empty", "tone.wav"], OK, "[C無0001]")

    def test_names_outside_the_usual(self):
        names = ["日本 語.mp3", "-dash.mp3"]
        for name in names:
            shutil.copy(SAMPLE, self.folder / name)
            out, _ = self.check(["--format", "jsonl", "--", name], OK, "{") if not WINDOWS else ("", "")
            if not WINDOWS:
                self.assertEqual(json.loads(out)["path"], name)
        if WINDOWS:
            self.check([names[0]], OK, "MPEG1-LayerIII")

    @unittest.skipIf(WINDOWS, "names are Unicode on Windows")
    def test_names_of_any_bytes(self):
        name = b"\xff\xfe.mp3"
        shutil.copy(SAMPLE, name)
        _, out, _ = zat("--format", "jsonl", name)
        self.assertEqual(json.loads(out)["path"], "\ufffd\ufffd.mp3")
        self.assertEqual(json.loads(out)["path_percent"], "%FF%FE.mp3")

    def test_names_of_any_length(self):
        deep = "/".join(["d" * 200] * 4)
        os.makedirs(deep)
        shutil.copy(SAMPLE, deep)
        path = f"{deep}/{SAMPLE}"
        (self.folder / "list.txt").write_text(path)
        for arguments in [[path], ["d" * 200], ["--files-from", "list.txt"]]:
            _, out, _ = zat("--format", "jsonl", *arguments)
            record = json.loads(out)
            self.assertEqual((record["path"], record["format"]), (path, "MPEG audio"))
        if WINDOWS:
            root = "\\\\?\\Z:" + str(self.folder.resolve()).replace("/", "\\")
            _, out, _ = zat("--format", "jsonl", "--sort", "size", f"{root}\\{'d' * 200}")
            self.assertEqual(json.loads(out)["path"], f"{root}\\{path}".replace("/", "\\"))

    @unittest.skipUnless(WINDOWS, "names are bytes elsewhere")
    def test_lists_in_any_encoding(self):
        shutil.copy(SAMPLE, "日本.mp3")
        for encoding, works in [("utf-8", ["auto", "utf-8"]), ("cp932", ["auto", "console"])]:
            (self.folder / "list.txt").write_text("日本.mp3\r\n", encoding=encoding)
            for option in ["auto", "utf-8", "console"]:
                status, _, _ = zat("--list-encoding", option, "--files-from", "list.txt")
                self.assertEqual(status, OK if option in works else FAILURES, (encoding, option))

    @unittest.skipIf(WINDOWS, "made with POSIX calls")
    def test_what_is_no_file_is_passed_over(self):
        os.mkfifo("pipe")
        self.check(["pipe", "/dev/zero", SAMPLE], FAILURES, "MPEG1-LayerIII",
                   ["pipe: is no regular file", "/dev/zero: is no regular file"])
        if os.path.exists("/dev/full"):
            with open("/dev/full", "wb") as full:
                done = subprocess.run([*PROGRAM, SAMPLE], stdout=full, stderr=subprocess.PIPE)
            self.assertEqual(done.returncode, FAILURES)
            self.assertIn(b"standard output cannot be written", done.stderr)

    @unittest.skipIf(WINDOWS, "made with POSIX calls")
    def test_without_threads_the_files_are_described_all_the_same(self):
        import resource

        def no_room_for_stacks():  # of threads, that are as large as this
            resource.setrlimit(resource.RLIMIT_STACK, (1 << 46, resource.RLIM_INFINITY))

        out, _ = self.check(["--jobs", "3", *[SAMPLE] * 500], OK, "==> ", preexec_fn=no_room_for_stacks)
        self.assertEqual(out.count("MPEG1-LayerIII"), 500)

    @unittest.skipIf(WINDOWS, "made with POSIX calls")
    def test_a_closed_pipe_is_no_error(self):
        process = subprocess.Popen([*PROGRAM, *[SAMPLE] * 2000], stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        process.stdout.read(10)
        process.stdout.close()
        self.assertEqual(process.stderr.read(), b"")
        process.stderr.close()
        self.assertEqual(process.wait(60), OK)

    @unittest.skipIf(WINDOWS, "made with POSIX calls")
    def test_an_interrupt_leaves_whole_output(self):
        for ending in [signal.SIGINT, signal.SIGTERM]:
            reader, writer = os.pipe()
            process = subprocess.Popen([*PROGRAM, "--format", "json", "-"], stdin=reader, stdout=subprocess.PIPE)
            os.close(reader)
            os.write(writer, f"{SAMPLE}\n".encode())
            head = process.stdout.read(20)
            process.send_signal(ending)
            out = head + process.stdout.read()
            os.close(writer)
            process.stdout.close()
            self.assertEqual(process.wait(60), 128 + ending)
            self.assertEqual(len(json.loads(out)), 1)

    @unittest.skipIf(WINDOWS, "the same code; slow to start")
    def test_many_paths(self):
        count = 10000 if SANITIZED else 100000
        listed = f"{SAMPLE}\n".encode() * count
        start = time.monotonic()
        done = subprocess.run([*PROGRAM, "--format", "jsonl", "-"], input=listed, capture_output=True)
        self.assertEqual(done.returncode, OK)
        self.assertEqual(done.stdout.count(b"\n"), count)
        self.assertLess(time.monotonic() - start, 100)

    @unittest.skipIf(WINDOWS, "no such names there")
    def test_control_characters_do_not_reach_a_terminal(self):
        shutil.copy("unknown.bin", "a\x1b[2J\n\x9b.bin")
        status, shown = in_terminal([*PROGRAM, "a\x1b[2J\n\x9b.bin", "unknown.bin"])
        self.assertEqual(status, FAILURES)
        shown = shown.decode()
        self.assertIn("==> a\\x1B[2J\n\\x9B.bin <==".replace("\n", "\r\n"), shown)
        self.assertIn("zat: a\\x1B[2J\\x0A\\x9B.bin: unknown type", shown)
        self.assertNotIn("\x1b", shown)
        self.check(["a\x1b[2J\n\x9b.bin", "unknown.bin"], FAILURES, "==> a\x1b[2J", "zat: a\x1b[2J")

    @unittest.skipUnless(WINDOWS, "shells expand them elsewhere")
    def test_wildcards(self):
        shutil.copy(SAMPLE, "other.mp3")
        out, _ = self.check(["*.mp3"], OK, "MPEG1-LayerIII")
        self.assertEqual(out.count("==> "), 2)

    @unittest.skipUnless(WINDOWS, "consoles have code pages only there")
    def test_consoles_of_any_code_page_show_japanese(self):
        program = pathlib.Path(PROGRAM[-1])
        for code_page in ["932", "1252", "65001"]:
            with self.subTest(code_page=code_page):
                status, shown = in_terminal(
                    [*PROGRAM[:-1], str(program.with_name("in_code_page.exe")), code_page,
                     f"Z:{program}", "unknown.bin"])
                self.assertEqual(status, FAILURES, shown)
                self.assertIn("未対応の形式".encode(), shown)


def wav(seconds):
    """8-bit mono PCM of 8,000 samples a second."""
    size = 8000 * seconds
    return struct.pack("<4sI8sIHHIIHH4sI", b"RIFF", 36 + size, b"WAVEfmt ", 16, 1, 1, 8000, 8000, 1, 8, b"data", size) + bytes(size)


def without_later_members(schema):
    """The schema for this version's output alone: no member that it does not name."""
    if not isinstance(schema, dict):
        return schema
    closed = {} if "properties" not in schema else {"additionalProperties": False}
    return {name: without_later_members(part) for name, part in schema.items()} | closed


def in_terminal(command):
    """Runs the command with a terminal for its streams; returns its status and what it showed."""
    import pty

    leader, follower = pty.openpty()
    process = subprocess.Popen(command, stdin=follower, stdout=follower, stderr=follower)
    os.close(follower)
    shown = b""
    with contextlib.suppress(OSError):  # the terminal's end
        while part := os.read(leader, 65536):
            shown += part
    os.close(leader)
    return process.wait(60), shown


if __name__ == "__main__":
    del sys.argv[1:]
    PROGRAM = [str(pathlib.Path(part).resolve()) if os.path.sep in part else part for part in PROGRAM]
    unittest.main()
