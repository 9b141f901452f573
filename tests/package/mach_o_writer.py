"""Programs and libraries for macOS that have headers only, for tests."""
import pathlib
import struct
import sys

sys.dont_write_bytecode = True
PACKAGING = pathlib.Path(__file__).resolve().parents[2] / "packaging/macos"
sys.path.insert(0, str(PACKAGING))
import mach_o  # noqa: E402

X86, ARM = 0x01000007, 0x0100000C
SYSTEM = "/usr/lib/libSystem.B.dylib"


def command(kind, body):
    body += b"\0" * (-len(body) % 8)
    return struct.pack("<II", kind, 8 + len(body)) + body


def program(libraries=(SYSTEM,), oldest=(10, 15), machine=X86, search=(), wanted=()):
    """`wanted`: pairs of a symbol and the number of its library, from 1, or mach_o.FROM_ANYWHERE."""
    parts = [command(mach_o.BUILD_VERSION, struct.pack("<IIII", 1, oldest[0] << 16 | oldest[1] << 8, 0, 0))]
    parts += [command(mach_o.LOAD_DYLIB, struct.pack("<IIII", 24, 0, 0, 0) + name.encode() + b"\0")
              for name in libraries]
    parts += [command(mach_o.RPATH, struct.pack("<I", 12) + name.encode() + b"\0") for name in search]
    end = 32 + sum(map(len, parts)) + 24
    entries, names = b"", b"\0"
    for symbol, library in wanted:
        entries += struct.pack("<IBBHQ", len(names), 1, 0, library << 8, 0)
        names += symbol.encode() + b"\0"
    parts.append(command(mach_o.SYMTAB, struct.pack("<4I", end, len(wanted), end + len(entries), len(names))))
    data = b"".join(parts)
    return struct.pack("<8I", 0xFEEDFACF, machine, 0, 2, len(parts), len(data), 0, 0) + data + entries + names


def universal(*slices):
    at = 4096
    header, body = struct.pack(">4sI", b"\xca\xfe\xba\xbe", len(slices)), b""
    for machine, data in zip((X86, ARM), slices):
        header += struct.pack(">IIIII", machine, 0, at + len(body), len(data), 0)
        body += data
    return header.ljust(at, b"\0") + body
