"""Reads what a program or library for macOS says of itself: the oldest system it runs on, the libraries it
needs, and the symbols it takes from them."""
import pathlib
import struct

SYMTAB, LOAD_DYLIB, LOAD_WEAK_DYLIB, REEXPORT_DYLIB = 0x2, 0xC, 0x80000018, 0x8000001F
RPATH, VERSION_MIN_MACOSX, BUILD_VERSION, CODE_SIGNATURE = 0x8000001C, 0x24, 0x32, 0x1D
MACHINES = {0x01000007: "x86_64", 0x0100000C: "arm64"}
FAT = {b"\xca\xfe\xba\xbe": ">IIIII", b"\xca\xfe\xba\xbf": ">IIQQII"}
THIN = b"\xcf\xfa\xed\xfe"  # 64 bits, little-endian
FROM_ANYWHERE = 0xFE  # the library of a symbol that is looked for in all of them


class Slice:
    """The code for one machine."""

    def __init__(self, data):
        _, machine, _, _, count, _, _, _ = struct.unpack_from("<8I", data)
        self.machine = MACHINES.get(machine, hex(machine))
        self.oldest = None  # (major, minor) of macOS
        self.libraries = []
        self.search = []  # what @rpath stands for
        self.signed = False
        self._symbols = []
        at = 32
        for _ in range(count):
            command, size = struct.unpack_from("<II", data, at)
            self._read(data, data[at:at + size], command)
            at += size

    def _read(self, data, body, command):
        if command in (LOAD_DYLIB, LOAD_WEAK_DYLIB, REEXPORT_DYLIB):
            self.libraries.append(_text(body))
        elif command == RPATH:
            self.search.append(_text(body))
        elif command == BUILD_VERSION:
            self.oldest = _version(struct.unpack_from("<I", body, 12)[0])
        elif command == VERSION_MIN_MACOSX:
            self.oldest = _version(struct.unpack_from("<I", body, 8)[0])
        elif command == CODE_SIGNATURE:
            self.signed = True
        elif command == SYMTAB:
            self._symbols = list(_undefined(data, *struct.unpack_from("<4I", body, 8)))

    def wanted(self):
        """Pairs of a symbol and the library that has it; None for one that any library may have."""
        for name, library in self._symbols:
            known = 0 < library <= len(self.libraries)
            yield name, self.libraries[library - 1] if known else None


def _text(body):
    return body[struct.unpack_from("<I", body, 8)[0]:].split(b"\0")[0].decode()


def _version(packed):
    return packed >> 16, packed >> 8 & 0xFF


def _undefined(data, symbols, count, names, _size):
    for place in range(symbols, symbols + count * 16, 16):
        name, kind, _, description, _ = struct.unpack_from("<IBBHQ", data, place)
        if kind & 0xE0 == 0 and kind & 0x0F == 0x01:  # external, undefined, and no debugger's
            end = data.index(b"\0", names + name)
            yield data[names + name:end].decode(), description >> 8


def slices(path):
    """Those of a file; none if it is no program or library for macOS."""
    path = pathlib.Path(path)
    with open(path, "rb") as file:
        if file.read(4) not in (THIN, *FAT):
            return []
    data = path.read_bytes()
    layout = FAT.get(data[:4])
    if layout is None:
        return [Slice(data)]
    count = struct.unpack_from(">I", data, 4)[0]
    entries = [struct.unpack_from(layout, data, 8 + i * struct.calcsize(layout)) for i in range(count)]
    return [Slice(data[entry[2]:entry[2] + entry[3]]) for entry in entries if data[entry[2]:entry[2] + 4] == THIN]
