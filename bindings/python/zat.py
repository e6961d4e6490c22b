"""What a media file holds, by the zat library: one file, no dependencies.

    >>> import zat
    >>> info = zat.info("samples/sine-vbr.mp3")
    >>> info.type_name, info.play_time
    >>> print(info.report)

The library is searched for beside this file, in the directory that the environment variable
ZAT_LIBRARY_DIR names, in a build folder of the repository, and where the system keeps libraries. On
Windows a 32-bit Python loads zat.dll and a 64-bit one zat64.dll.

`info` is a pure function of a path and may be called from any number of threads and processes at
once, so an engine that spreads work over machines needs nothing more than the call:

    dask:     dask.bag.from_sequence(paths, npartitions=64).map(zat.info).to_dataframe()
    ray:      ray.data.from_items(paths).map(lambda row: dataclasses.asdict(zat.info(row["item"])))
    pyspark:  sc.parallelize(paths, 64).map(lambda path: dataclasses.asdict(zat.info(path)))

with this module and the library on every machine. `set_catalogue` is the one thing that is shared by
all calls: call it, if at all, before the first `info`.
"""

from __future__ import annotations

import ctypes
import ctypes.util
import dataclasses
import os
import pathlib
import sys
import threading
from typing import List, Optional, Union

__all__ = ["Info", "ZatError", "info", "set_catalogue", "version"]

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

_TYPE_NAMES = {
    0: "ERROR", 1: "UNKNOWN", 2: "OPENFAILED", 3: "PATHTOOLONG", 12: "AVI", 13: "MPEG1", 14: "MPEG1VCD",
    15: "QUICKTIME", 16: "OGGMEDIA", 17: "MPEG2", 18: "MPEG2_TS", 19: "MPEG2_M2TS", 20: "WMV",
    21: "REALMEDIA", 22: "3GPP", 23: "3GPP2", 24: "MPEG4", 25: "AMC", 26: "MATROSKA", 27: "MPEG",
    28: "FLV", 101: "WAV", 106: "MP3", 108: "RMP3", 109: "OGGVORBIS", 110: "OGGSPEEX", 111: "OGGFLAC",
    112: "OGGOPUS", 114: "AC3", 115: "MONKEY", 116: "MUSEPACK", 117: "FLAC", 118: "AAC", 120: "TTA",
    123: "DTS16LE", 124: "DTS16BE", 125: "WAVPACK", 126: "OPTIMFROG", 128: "SHOCKWAVEMP3", 129: "TAK",
    130: "DSDIFF", 131: "DSF", 132: "WSD",
}


class ZatError(OSError):
    """The library cannot be loaded, or a path cannot be handed to it."""


@dataclasses.dataclass(frozen=True)
class Info:
    """What the library tells of one file. Texts that are no valid Shift-JIS hold U+FFFD."""

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

    @property
    def described(self) -> bool:
        """True when the file could be read and is of a known type."""
        return self.type_code >= 10


_library: Optional[ctypes.CDLL] = None
_lock = threading.Lock()


def _candidates() -> List[str]:
    windows = sys.platform == "win32"
    bits = 8 * ctypes.sizeof(ctypes.c_void_p)
    name = ("zat64.dll" if bits == 64 else "zat.dll") if windows else "libzat.so"
    here = pathlib.Path(__file__).resolve().parent
    build = "win64" if bits == 64 else "win32"
    directories = [here, here.parent.parent, here.parent.parent / "build" / (build if windows else "linux")]
    if os.environ.get("ZAT_LIBRARY_DIR"):
        directories.insert(0, pathlib.Path(os.environ["ZAT_LIBRARY_DIR"]))
    found = [str(directory / name) for directory in directories if (directory / name).exists()]
    installed = ctypes.util.find_library("zat")
    return found + ([installed] if installed else []) + ([] if windows else ["libzat.so.1"])


def _load() -> ctypes.CDLL:
    global _library
    with _lock:
        if _library is not None:
            return _library
        # 32-bit Windows calls the exports as stdcall; elsewhere the two are one.
        loader = getattr(ctypes, "WinDLL", ctypes.CDLL)
        problem: Optional[OSError] = None
        for candidate in _candidates():
            try:
                library = loader(candidate)
                break
            except OSError as error:
                problem = error
        else:
            raise ZatError(f"the zat library cannot be loaded: {problem or 'not found'}")
        library.SetPath.argtypes = [ctypes.c_char_p]
        library.SetPath.restype = None
        library.GetInfo.argtypes = [ctypes.POINTER(_Record)]
        library.GetInfo.restype = None
        library.ReFormFullBounded.argtypes = [ctypes.POINTER(_Record), ctypes.c_char_p, ctypes.c_uint32]
        library.ReFormFullBounded.restype = ctypes.c_uint32
        library.GetDllVersion.argtypes = []
        library.GetDllVersion.restype = ctypes.c_int32
        catalogue = _default_catalogue(library)
        if catalogue is not None:
            library.SetPath(catalogue)
        _library = library
        return library


def _default_catalogue(library: ctypes.CDLL) -> Optional[bytes]:
    here = pathlib.Path(__file__).resolve().parent
    beside = pathlib.Path(getattr(library, "_name", "")).parent
    for directory in (beside, here, here.parent.parent / "catalogue", pathlib.Path("/usr/share/zat"),
                      pathlib.Path("/usr/local/share/zat")):
        if (directory / "zat-codec.ini").is_file():
            return _encoded(os.path.join(directory, ""))
    return None


def _encoded(path: Union[str, bytes, "os.PathLike[str]"]) -> bytes:
    if sys.platform == "win32":
        # The library opens names in the system's code page.
        try:
            return os.fsdecode(path).encode("mbcs", "strict")
        except UnicodeEncodeError as error:
            raise ZatError(f"outside the system's code page: {os.fsdecode(path)!r}") from error
    return os.fsencode(path)


def _text(value: bytes) -> str:
    return value.decode("cp932", "replace")


def _lines(lines: "ctypes.Array[ctypes.Array[ctypes.c_char]]", count: int) -> List[str]:
    return [_text(lines[i].value) for i in range(max(0, min(count, len(lines))))]


def set_catalogue(directory: Union[str, bytes, "os.PathLike[str]"]) -> None:
    """Sets the directory of zat-codec.ini. No other thread may be inside the library meanwhile."""
    _load().SetPath(os.path.join(_encoded(directory), b""))


def version() -> int:
    """The library's build number."""
    return int(_load().GetDllVersion())


def info(path: Union[str, bytes, "os.PathLike[str]"]) -> Info:
    """Describes one file. A file that cannot be read or is of unknown type raises nothing: its
    type code is below 10 and its general line says why. Raises ZatError when the library cannot be
    loaded, or the path holds a zero byte or has 512 bytes or more."""
    library = _load()
    name = _encoded(path)
    if len(name) >= _LINE or b"\0" in name:
        raise ZatError(f"no path for the library: {os.fsdecode(path)!r}")
    record = _Record(path=name)
    library.GetInfo(ctypes.byref(record))
    size = library.ReFormFullBounded(ctypes.byref(record), None, 0) + 1
    report = ctypes.create_string_buffer(size)
    library.ReFormFullBounded(ctypes.byref(record), report, size)
    name_text = _TYPE_NAMES.get(record.type_code, "")
    return Info(
        path=os.fsdecode(path), type_code=record.type_code, type_name=name_text,
        label=_text(record.label), general=_lines(record.general, record.general_count),
        video=_lines(record.video, record.video_count), audio=_lines(record.audio, record.audio_count),
        extra_info=_text(record.extra_info), extra=_lines(record.extra, record.extra_count),
        play_time=record.play_time, data_size=record.data_size, file_size=record.file_size,
        report=_text(report.value))
