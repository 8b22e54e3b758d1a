"""Holds every #include of the tree to the table of who may include whom.

A room is a folder that is a library of its own, or two or three. What a room may use beside its own folder is written down
once, in ROOMS; a folder with sources that is neither a room nor FREE is itself a finding.
"""

import fnmatch
import os
import re
from dataclasses import dataclass, field

QT_MODULES = ("QtCore", "QtGui", "QtWidgets")
QT_OTHERS = ("QtDBus",)  # modules that only some files may use


@dataclass(frozen=True)
class Room:
    rooms: tuple = ()  # rooms any header of which may be included
    headers: tuple = ()  # single headers of further rooms, as patterns
    libraries: tuple = ()  # besides the standard library
    special: dict = field(default_factory=dict)  # file name pattern -> further libraries

    def may_use(self, library, file):
        extra = [lib for pattern, libs in self.special.items() if fnmatch.fnmatch(file, pattern) for lib in libs]
        return library in ("std", *self.libraries, *extra)


FORM = Room(rooms=("app/shared", "ftp", "settings", "toolkit", "platform"), libraries=QT_MODULES)

ROOMS = {
    "ftp/engine/wire": Room(libraries=("tl",)),
    # What the system has to do itself stands in these files.
    "ftp/engine/net": Room(
        rooms=("ftp/engine/wire",), libraries=("tl", "asio"),
        special={"tls*": ("openssl",), "local_files_*": ("system",), "resolver.cpp": ("system",),
                 "socket_calls_*": ("system",)}),
    # Sequences see the interfaces of the network and the disk, not what stands behind them.
    "ftp/engine/session": Room(
        rooms=("ftp/engine/wire",),
        headers=tuple(f"ftp/engine/net/{name}.h" for name in ("stream", "task", "deadline", "local_files")),
        libraries=("tl", "asio")),
    "ftp/engine": Room(
        rooms=("ftp/engine/session", "ftp/engine/net", "ftp/engine/wire"), libraries=("tl", "asio")),
    "ftp": Room(rooms=("ftp/engine/wire",), headers=("ftp/engine/worker.h",), libraries=("tl", "QtCore")),
    "platform": Room(libraries=("QtCore", "system"), special={"shell*": ("glib",), "desktop_*": ("QtDBus",)}),
    "settings": Room(rooms=("platform",), libraries=("QtCore",)),
    "toolkit": Room(rooms=("platform",), libraries=QT_MODULES),
    "app/shared": Room(rooms=("ftp", "settings", "toolkit", "platform"), libraries=QT_MODULES),
    "forms/main": Room(rooms=FORM.rooms, headers=("forms/*/*_form.h",), libraries=QT_MODULES),
    "forms/*": FORM,
    "app": Room(rooms=("*",), libraries=("tl", "asio", "openssl", *QT_MODULES)),
}
FREE = ("tests", "bench", "tools", "packaging")  # they look into every room
UNSEEN = ("build", ".git", ".cache")

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.MULTILINE)


def room_of(path):
    """The room that a file lies in, by its nearest folder, or None."""
    folder = os.path.dirname(path)
    while folder:
        for pattern in ROOMS:
            if folder == pattern or (fnmatch.fnmatch(folder, pattern) and folder.count("/") == pattern.count("/")):
                return folder, ROOMS[pattern]
        folder = os.path.dirname(folder)
    return None


def library_of(header, qt_folder):
    """Which library a <header> belongs to; "system" is whatever only some systems have."""
    if header.startswith(("openssl/", "asio/ssl")):
        return "openssl"
    if header.startswith(("asio/", "asio.")):
        return "asio"
    if header.startswith("tl/"):
        return "tl"
    if header.startswith(("glib", "gobject/", "gio/")):
        return "glib"
    if header.startswith("Q"):
        found = [m for m in QT_MODULES + QT_OTHERS if header.startswith(m + "/") or os.path.exists(f"{qt_folder}/{m}/{header}")]
        return found[0] if found else "an unknown Qt module"
    return "std" if re.fullmatch(r"[a-z0-9_]+", header) else "system"


def is_generated(file, header):
    """What uic and moc make of a file of the same folder."""
    return "/" not in header and (header.startswith(("ui_", "moc_")) or header.endswith(".moc"))


def is_ours(header):
    """Whether a path leads into this tree, from its root."""
    return room_of(header) is not None or header.split("/")[0] in FREE


def check_include(file, kind, header, qt_folder):
    """What is wrong with one include, or None. Angle brackets do not hide that a header is ours."""
    folder, room = room_of(file)
    if kind == "<" and not is_ours(header):
        library = library_of(header, qt_folder)
        if not room.may_use(library, os.path.basename(file)):
            return f"{folder} must not use <{header}> ({library})"
        return None
    if is_generated(file, header):
        return None
    target = room_of(header)
    if target is None:
        return f'"{header}" is not a path from the root into a room'
    allowed = target[0] == folder or any(fnmatch.fnmatch(target[0], pattern) for pattern in room.rooms)
    if allowed or any(fnmatch.fnmatch(header, pattern) for pattern in room.headers):
        return None
    return f'{folder} must not include "{header}"'


def sources(root):
    for folder, names, files in os.walk(root):
        if folder == root:
            names[:] = [name for name in names if name not in (*FREE, *UNSEEN)]
        for name in files:
            if name.endswith((".h", ".cpp")):
                yield os.path.relpath(os.path.join(folder, name), root).replace(os.sep, "/")


def check_tree(root, qt_folder):
    """All findings of the tree, as lines "file: what", and the number of includes read."""
    findings, count = [], 0
    for file in sorted(sources(root)):
        if room_of(file) is None:
            findings.append(f"{file}: lies in no room")
            continue
        with open(os.path.join(root, file), encoding="utf-8") as source:
            for kind, header in INCLUDE.findall(source.read()):
                count += 1
                wrong = check_include(file, kind, header, qt_folder)
                if wrong:
                    findings.append(f"{file}: {wrong}")
    return findings, count
