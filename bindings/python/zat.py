"""What a media file holds, by the zat library: one file, no dependencies.

    >>> import zat
    >>> info = zat.info("samples/sine-vbr.mp3")
    >>> info.type_name, info.duration
    >>> [(stream.kind, stream.codec, stream.sample_rate) for stream in info.streams]
    >>> print(info.report)

The library is searched for in the directory that the environment variable ZAT_LIBRARY_DIR names, beside
this file, in the repository or installation that this file is in, and where the system keeps libraries;
its catalogue of names beside it, or where it is installed. On Windows a 32-bit Python loads zat.dll and
a 64-bit one zat64.dll.

`info` is a function of a path alone and may be called from any number of threads and processes at once:
examples/cluster spreads it over machines with Dask, Spark or Ray. `set_catalogue` is the one thing that is
shared by all calls: call it, if at all, before the first `info`.
"""

from __future__ import annotations

import contextlib
import ctypes
import dataclasses
import math
import os
import pathlib
import re
import sys
import sysconfig
import threading
from typing import Any, Dict, Iterator, List, Optional, Tuple, Union

__all__ = ["Info", "Stream", "ZatError", "info", "set_catalogue", "version"]

_LINE = 512
_LINES = 10


class _Record(ctypes.Structure):
    _fields_ = [
        ("path", ctypes.c_char * _LINE),
        ("type_code", ctypes.c_uint32),
        ("label", ctypes.c_char * 32),
        ("general", (ctypes.c_char * _LINE) * 2),
        ("general_count", ctypes.c_int32),
        ("reserved", ctypes.c_uint8 * 128),
        ("video", (ctypes.c_char * _LINE) * _LINES),
        ("video_count", ctypes.c_int32),
        ("audio", (ctypes.c_char * _LINE) * _LINES),
        ("audio_count", ctypes.c_int32),
        ("extra_info", ctypes.c_char * _LINE),
        ("extra", (ctypes.c_char * _LINE) * _LINES),
        ("extra_count", ctypes.c_int32),
        ("unused", ctypes.c_uint8 * 4),
        ("play_time", ctypes.c_double),
        ("options", ctypes.c_uint32),
        ("scan_budget", ctypes.c_uint32),
        ("data_size", ctypes.c_uint64),
        ("file_size", ctypes.c_uint64),
    ]


assert ctypes.sizeof(_Record) == 17624

_STREAM_SLOTS = 64


class _StreamRecord(ctypes.Structure):
    _fields_ = [
        ("kind", ctypes.c_uint32),
        ("flags", ctypes.c_uint32),
        ("estimated", ctypes.c_uint32),
        ("bit_rate_mode", ctypes.c_uint32),
        ("id", ctypes.c_uint64),
        ("start", ctypes.c_double),
        ("duration", ctypes.c_double),
        ("bit_rate", ctypes.c_uint64),
        ("nominal_bit_rate", ctypes.c_uint64),
        ("bytes", ctypes.c_uint64),
        ("frame_rate", ctypes.c_double),
        ("nominal_frame_rate", ctypes.c_double),
        ("frames", ctypes.c_uint64),
        ("width", ctypes.c_uint32),
        ("height", ctypes.c_uint32),
        ("pixel_aspect", ctypes.c_uint32 * 2),
        ("display_aspect", ctypes.c_uint32 * 2),
        ("frame_rate_ratio", ctypes.c_uint32 * 2),
        ("scan", ctypes.c_uint32),
        ("field_order", ctypes.c_uint32),
        ("samples", ctypes.c_uint64),
        ("sample_rate", ctypes.c_uint32),
        ("channels", ctypes.c_uint32),
        ("bit_depth", ctypes.c_uint32),
        ("reserved", ctypes.c_uint32 * 5),
        ("codec", ctypes.c_char * 32),
        ("codec_id", ctypes.c_char * 64),
        ("profile", ctypes.c_char * 32),
        ("level", ctypes.c_char * 16),
        ("language", ctypes.c_char * 32),
        ("title", ctypes.c_char * 256),
        ("encoder", ctypes.c_char * 128),
        ("layout", ctypes.c_char * 128),
        ("chroma", ctypes.c_char * 16),
        ("primaries", ctypes.c_char * 32),
        ("transfer", ctypes.c_char * 32),
        ("matrix", ctypes.c_char * 32),
        ("range", ctypes.c_char * 16),
        ("hdr", ctypes.c_char * 32),
        ("reserved2", ctypes.c_char * 128),
    ]


class _Details(ctypes.Structure):
    _fields_ = [
        ("size", ctypes.c_uint32),
        ("stream_count", ctypes.c_uint32),
        ("duration", ctypes.c_double),
        ("bit_rate", ctypes.c_uint64),
        ("missing_bytes", ctypes.c_uint64),
        ("chapters", ctypes.c_uint32),
        ("pictures", ctypes.c_uint32),
        ("estimated", ctypes.c_uint32),
        ("reserved", ctypes.c_uint32 * 5),
        ("format", ctypes.c_char * 32),
        ("format_profile", ctypes.c_char * 32),
        ("title", ctypes.c_char * 256),
        ("artist", ctypes.c_char * 256),
        ("writer", ctypes.c_char * 256),
        ("created", ctypes.c_char * 32),
        ("notes", ctypes.c_char * 256),
        ("reserved2", ctypes.c_char * 256),
        ("streams", _StreamRecord * _STREAM_SLOTS),
    ]


assert ctypes.sizeof(_Details) == 1440 + _STREAM_SLOTS * 1144

# Enumerators of details.h from 1 on, and bits from the lowest on.
_WORDS = {
    "kind": ["video", "audio", "text", "data"],
    "bit_rate_mode": ["constant", "variable"],
    "scan": ["progressive", "interlaced"],
    "field_order": ["top", "bottom"],
}
_FLAGS = ["default", "forced", "commentary", "hearing_impaired", "visual_impaired", "encrypted", "no_data",
          "lossless"]
_ESTIMATED = ["duration", "bit_rate", "frame_rate", "frames", "samples", "bytes"]
_RATIOS = {"pixel_aspect": ":", "display_aspect": ":", "frame_rate_ratio": "/"}

class ZatError(OSError):
    """The library cannot be loaded, or a path cannot be handed to it."""


@dataclasses.dataclass(frozen=True)
class Stream:
    """What is known of one stream; None for what is not."""

    kind: Optional[str]
    """"video", "audio", "text" or "data"."""
    id: int
    """The container's own: track number, PID, serial, stream id."""
    codec: Optional[str]
    """One vocabulary for all containers: "H.264", "AAC"."""
    codec_id: Optional[str]
    """The container's own name: "avc1", "V_VP9", "0x0055"."""
    profile: Optional[str]
    level: Optional[str]
    language: Optional[str]
    """ISO 639-2 or BCP 47, as the file has it."""
    title: Optional[str]
    start: Optional[float]
    """Seconds; 0 is a value."""
    duration: Optional[float]
    bit_rate: Optional[int]
    """Bits a second: counted where the container counts, else claimed."""
    nominal_bit_rate: Optional[int]
    bit_rate_mode: Optional[str]
    """"constant" or "variable"."""
    bytes: Optional[int]
    encoder: Optional[str]
    width: Optional[int]
    """Pixels after cropping."""
    height: Optional[int]
    pixel_aspect: Optional[str]
    """"64:45", reduced."""
    display_aspect: Optional[str]
    frame_rate: Optional[float]
    """Frames, never fields, a second."""
    frame_rate_ratio: Optional[str]
    """"24000/1001"."""
    nominal_frame_rate: Optional[float]
    frames: Optional[int]
    scan: Optional[str]
    """"progressive" or "interlaced"."""
    field_order: Optional[str]
    """"top" or "bottom", the first field."""
    chroma: Optional[str]
    primaries: Optional[str]
    """This and the next two: names of ITU-T H.273."""
    transfer: Optional[str]
    matrix: Optional[str]
    range: Optional[str]
    hdr: Optional[str]
    sample_rate: Optional[int]
    """Hz, as decoded."""
    channels: Optional[int]
    layout: Optional[str]
    """"L R C LFE Ls Rs"."""
    bit_depth: Optional[int]
    samples: Optional[int]
    """Per channel."""
    default: bool = False
    forced: bool = False
    commentary: bool = False
    hearing_impaired: bool = False
    visual_impaired: bool = False
    encrypted: bool = False
    no_data: bool = False
    lossless: bool = False
    estimated: Tuple[str, ...] = ()
    """Members measured on a part of the file, or that follow from an assumption."""


@dataclasses.dataclass(frozen=True)
class Info:
    """What the library tells of one file: the record with its lines, then the typed details, None for
    what is not known. Lines that are no valid Shift-JIS hold U+FFFD."""

    path: str
    type_code: int
    """A ZatFileType of zat.h; below 10 the file was refused and `general` says why."""
    type_name: str
    """The type code's name without its prefix, such as "MP3"; empty for a code without one."""
    label: str
    general: List[str]
    video: List[str]
    audio: List[str]
    extra_info: str
    extra: List[str]
    play_time: float
    """Seconds; may be negative or not finite for a damaged file."""
    data_size: int
    file_size: int
    report: str
    """The whole report, lines ended by "\\r\\n"."""
    format: Optional[str]
    """The container: "MP4", "Matroska"."""
    format_profile: Optional[str]
    title: Optional[str]
    artist: Optional[str]
    writer: Optional[str]
    """The program that wrote the file."""
    created: Optional[str]
    """UTC, ISO 8601."""
    duration: Optional[float]
    """Seconds, as the file declares it."""
    bit_rate: Optional[int]
    """Bits a second of the whole file."""
    missing_bytes: Optional[int]
    chapters: Optional[int]
    pictures: Optional[int]
    notes: List[str]
    estimated: Tuple[str, ...]
    stream_count: int
    """Streams of the file, of which the first 64 are in `streams`."""
    streams: List[Stream]

    @property
    def described(self) -> bool:
        """True when the file could be read and is of a known type."""
        return self.type_code >= 10


_library: Optional[ctypes.CDLL] = None
_lock = threading.Lock()


_HERE = pathlib.Path(__file__).resolve().parent
_WINDOWS = sys.platform == "win32"
_BITS = 8 * ctypes.sizeof(ctypes.c_void_p)


def _library_directories() -> Iterator[pathlib.Path]:
    if os.environ.get("ZAT_LIBRARY_DIR"):
        yield pathlib.Path(os.environ["ZAT_LIBRARY_DIR"])
    yield _HERE
    root = _HERE.parent.parent  # of the repository, of an unpacked .zip, of an installation (share/zat)
    yield root
    yield root / "build" / (f"win{_BITS}" if _WINDOWS else "linux")
    for directory in ["lib", f"lib/{sysconfig.get_config_var('MULTIARCH')}", f"lib{_BITS}"]:
        yield root / directory


def _candidates() -> List[str]:
    if _WINDOWS:
        name = "zat64.dll" if _BITS == 64 else "zat.dll"
        names, system = [name], [name]
    else:
        names, system = ["libzat.so", "libzat.so.1"], ["libzat.so.1"]
    files = (directory / name for directory in _library_directories() for name in names)
    return [str(file.absolute()) for file in files if file.is_file()] + system


def _load() -> ctypes.CDLL:
    global _library
    with _lock:
        if _library is not None:
            return _library
        # 32-bit Windows calls the exports as stdcall; elsewhere the two are one.
        loader = getattr(ctypes, "WinDLL", ctypes.CDLL)
        problems = []
        for candidate in _candidates():
            try:
                library = loader(candidate)
                break
            except OSError as error:
                problems.append(str(error))
        else:
            raise ZatError("the zat library cannot be loaded: " + "; ".join(problems))
        library.SetPath.argtypes = [ctypes.c_char_p]
        library.SetPath.restype = None
        library.GetDetails.argtypes = [ctypes.POINTER(_Record), ctypes.POINTER(_Details)]
        library.GetDetails.restype = ctypes.c_int32
        library.ReFormFullBounded.argtypes = [ctypes.POINTER(_Record), ctypes.c_char_p, ctypes.c_uint32]
        library.ReFormFullBounded.restype = ctypes.c_uint32
        library.GetTypeName.argtypes = [ctypes.c_uint32, ctypes.c_char_p, ctypes.c_uint32]
        library.GetTypeName.restype = ctypes.c_uint32
        library.GetDllVersion.argtypes = []
        library.GetDllVersion.restype = ctypes.c_int32
        catalogue = _default_catalogue(library)
        if catalogue is not None:
            library.SetPath(catalogue)
        _library = library
        return library


class _SymbolOrigin(ctypes.Structure):
    _fields_ = [("file", ctypes.c_char_p), ("base", ctypes.c_void_p), ("name", ctypes.c_char_p),
                ("address", ctypes.c_void_p)]


def _file_of(library: ctypes.CDLL) -> pathlib.Path:
    """Where the system found the library, which the name that it was asked for by does not tell."""
    if _WINDOWS:
        name = ctypes.create_unicode_buffer(32768)
        ctypes.windll.kernel32.GetModuleFileNameW(ctypes.c_void_p(library._handle), name, len(name))
        return pathlib.Path(name.value)
    origin = _SymbolOrigin()
    ctypes.CDLL(None).dladdr(ctypes.cast(library.GetDetails, ctypes.c_void_p), ctypes.byref(origin))
    return pathlib.Path(os.fsdecode(origin.file)).resolve()


def _default_catalogue(library: ctypes.CDLL) -> Optional[bytes]:
    """Beside the library or this file, else where the same prefix keeps it."""
    prefixes = _file_of(library).parents
    for directory in [prefixes[0], _HERE, _HERE.parent.parent / "catalogue",
                      *(prefix / "share" / "zat" for prefix in prefixes)]:
        if (directory / "zat-codec.ini").is_file():
            return _encoded(os.path.join(directory, ""))
    return None


def _short_name(path: str) -> str:
    """The 8.3 name of a file on Windows; empty when it has none."""
    whole = os.path.abspath(path)
    extended = whole if whole.startswith("\\\\") else "\\\\?\\" + whole
    name = ctypes.create_unicode_buffer(32768)
    ctypes.windll.kernel32.GetShortPathNameW(extended, name, len(name))
    return name.value[4:] if name.value.startswith("\\\\?\\") else name.value


def _encoded(path: Union[str, bytes, "os.PathLike[str]"]) -> bytes:
    if not _WINDOWS:
        return os.fsencode(path)
    # The library opens names in the system's code page, of at most 259 bytes.
    name = os.fsdecode(path)
    for spelling in (lambda: name, lambda: _short_name(name)):
        try:
            encoded = spelling().encode("mbcs", "strict")
        except UnicodeEncodeError:
            continue
        if 0 < len(encoded) < 260:
            return encoded
    raise ZatError(f"too long, or outside the system's code page, and without a short form: {name!r}")


# What Python takes cp932 to hold beyond the code page's characters.
_UNASSIGNED = re.compile("[\x80\ue000-\uf8ff]")


def _character(value: bytes, at: int) -> Tuple[str, int]:
    """The character there and its bytes; a byte that belongs to none is U+FFFD."""
    for size in (1, 2):
        try:
            text = value[at:at + size].decode("cp932")
        except UnicodeDecodeError:
            continue
        if len(text) == 1 and not _UNASSIGNED.match(text):
            return text, size
    return "\ufffd", 1


def _text(value: bytes) -> str:
    text = value.decode("cp932", "replace")
    if not _UNASSIGNED.search(text):
        return text
    out, at = [], 0
    while at < len(value):
        character, size = _character(value, at)
        out.append(character)
        at += size
    return "".join(out)


def _lines(lines: "ctypes.Array[ctypes.Array[ctypes.c_char]]", count: int) -> List[str]:
    return [_text(lines[i].value) for i in range(max(0, min(count, len(lines))))]


def _words(bits: int, names: List[str]) -> Tuple[str, ...]:
    return tuple(name for i, name in enumerate(names) if bits >> i & 1)


def _member(record: ctypes.Structure, name: str) -> Any:
    """A member of the typed details; None for what the structure holds when it is not known."""
    value = getattr(record, name)
    if name in _WORDS:
        return _WORDS[name][value - 1] if 1 <= value <= len(_WORDS[name]) else None
    if name in _RATIOS:
        return f"{value[0]}{_RATIOS[name]}{value[1]}" if value[0] and value[1] else None
    if isinstance(value, bytes):
        return value.decode("utf-8", "replace") or None
    if isinstance(value, float):
        return value if math.isfinite(value) and (value > 0 or name == "start") else None
    return value if value != 0 or name == "id" else None


def _members(record: ctypes.Structure, target: type) -> Dict[str, Any]:
    held = {name for name, _ in type(record)._fields_}
    special = {"notes", "estimated", "streams", "stream_count"}
    return {field.name: _member(record, field.name) for field in dataclasses.fields(target)
            if field.name in held - special}


def _stream(record: _StreamRecord) -> Stream:
    return Stream(**_members(record, Stream), **dict.fromkeys(_words(record.flags, _FLAGS), True),
                  estimated=_words(record.estimated, _ESTIMATED))


def _typed(details: _Details) -> Dict[str, Any]:
    count = min(details.stream_count, _STREAM_SLOTS)
    return {
        **_members(details, Info), "notes": details.notes.decode("utf-8", "replace").split("\n") if details.notes else [],
        "estimated": _words(details.estimated, _ESTIMATED), "stream_count": details.stream_count,
        "streams": [_stream(details.streams[i]) for i in range(count)],
    }


def set_catalogue(directory: Union[str, bytes, "os.PathLike[str]"]) -> None:
    """Sets the directory of zat-codec.ini. No other thread may be inside the library meanwhile."""
    _load().SetPath(os.path.join(_encoded(directory), b""))


def version() -> int:
    """The library's build number."""
    return int(_load().GetDllVersion())


@contextlib.contextmanager
def _short_enough(path: Union[str, bytes, "os.PathLike[str]"]) -> Iterator[bytes]:
    """A name of the file that the record has room for."""
    name = _encoded(path)
    if b"\0" in name:
        raise ZatError(f"no path: {os.fsdecode(path)!r}")
    if len(name) < _LINE:
        yield name
        return
    try:
        descriptor = os.open(name, os.O_RDONLY | os.O_CLOEXEC | os.O_NONBLOCK | os.O_NOCTTY)
    except OSError as error:
        raise ZatError(error.errno, error.strerror, os.fsdecode(path)) from error
    try:
        yield f"/proc/self/fd/{descriptor}".encode()
    finally:
        os.close(descriptor)


def info(path: Union[str, bytes, "os.PathLike[str]"]) -> Info:
    """Describes one file. A file that cannot be read or is of unknown type raises nothing: its
    type code is below 10 and its general line says why. Raises ZatError when the library cannot be
    loaded, or cannot be handed the path: it holds a zero byte, or is one of 512 bytes or more that
    cannot be opened, or one on Windows that the system's code page has no name for."""
    library = _load()
    record = _Record()
    details = _Details(size=ctypes.sizeof(_Details))
    with _short_enough(path) as record.path:
        library.GetDetails(ctypes.byref(record), ctypes.byref(details))
    size = library.ReFormFullBounded(ctypes.byref(record), None, 0) + 1
    report = ctypes.create_string_buffer(size)
    library.ReFormFullBounded(ctypes.byref(record), report, size)
    type_name = ctypes.create_string_buffer(32)
    library.GetTypeName(record.type_code, type_name, len(type_name))
    return Info(
        path=os.fsdecode(path), type_code=record.type_code, type_name=type_name.value.decode("ascii"),
        label=_text(record.label), general=_lines(record.general, record.general_count),
        video=_lines(record.video, record.video_count), audio=_lines(record.audio, record.audio_count),
        extra_info=_text(record.extra_info), extra=_lines(record.extra, record.extra_count),
        play_time=record.play_time, data_size=record.data_size, file_size=record.file_size,
        report=_text(report.value), **_typed(details))
