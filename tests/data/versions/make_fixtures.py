#!/usr/bin/env python3
"""Writes the small executables the product-version tests read: ELF images
with a package-metadata note (good and broken) and PE images with a version
resource. Run it in this folder; the files are committed."""
import struct


def elf(note_desc, note_name=b"FDO\0", note_type=0xCAFE1A7E, desc_size=None,
        section_table_offset=None, machine_bits=64):
    """An ELF64 little-endian image with .shstrtab and one .note.package."""
    def align4(b):
        return b + b"\0" * (-len(b) % 4)
    dsz = len(note_desc) if desc_size is None else desc_size
    note = struct.pack("<III", len(note_name), dsz, note_type) + align4(note_name) + align4(note_desc)
    names = b"\0.shstrtab\0.note.package\0"
    header_size = 64
    note_off = header_size
    names_off = note_off + len(note)
    sh_off = names_off + len(names)
    sh_off += -sh_off % 8
    body = bytearray(sh_off)
    body[note_off:note_off + len(note)] = note
    body[names_off:names_off + len(names)] = names

    def section(name, stype, offset, size):
        return struct.pack("<IIQQQQIIQQ", name, stype, 0, 0, offset, size, 0, 0, 4, 0)
    table = section(0, 0, 0, 0) + section(1, 3, names_off, len(names)) + section(11, 7, note_off, len(note))
    ident = b"\x7fELF" + bytes([2, 1, 1, 0]) + b"\0" * 8
    header = ident + struct.pack("<HHIQQQIHHHHHH", 2, 62, 1, 0, 0,
                                 sh_off if section_table_offset is None else section_table_offset,
                                 0, 64, 0, 0, 64, 3, 1)
    body[0:64] = header
    return bytes(body) + table


def block(key, value=b"", text=False, children=b""):
    """One VS_VERSION_INFO block: length, value length, type, key, value, children."""
    k = (key + "\0").encode("utf-16-le")
    head = 6 + len(k)
    pad1 = -head % 4
    vlen = len(value) // 2 if text else len(value)
    data = k + b"\0" * pad1 + value
    data += b"\0" * (-(6 + len(data)) % 4)
    data += children
    return struct.pack("<HHH", 6 + len(data), vlen, 1 if text else 0) + data


def string(key, value):
    return block(key, (value + "\0").encode("utf-16-le"), text=True)


def version_info(tables, translations):
    string_tables = b""
    for name, strings in tables:
        children = b"".join(string(k, v) for k, v in strings)
        string_tables += block(name, text=True, children=children)
    parts = block("StringFileInfo", text=True, children=string_tables)
    if translations is not None:
        trans = b"".join(struct.pack("<HH", lang, cp) for lang, cp in translations)
        parts += block("VarFileInfo", text=True, children=block("Translation", trans))
    fixed = struct.pack("<13I", 0xFEEF04BD, 0x10000, 0, 0, 0, 0, 0x3F, 0, 4, 1, 0, 0, 0)
    return block("VS_VERSION_INFO", fixed, children=parts)


def pe(resource):
    """A PE32 image whose only section, .rsrc at RVA 0x1000, holds one version resource."""
    rva = 0x1000
    # Root (type 16) -> name 1 -> language 0x0804 -> data entry -> resource.
    root = struct.pack("<IIHHHH", 0, 0, 0, 0, 0, 1) + struct.pack("<II", 16, 0x80000000 | 24)
    names = struct.pack("<IIHHHH", 0, 0, 0, 0, 0, 1) + struct.pack("<II", 1, 0x80000000 | 48)
    langs = struct.pack("<IIHHHH", 0, 0, 0, 0, 0, 1) + struct.pack("<II", 0x0804, 72)
    entry = struct.pack("<IIII", rva + 88, len(resource), 0, 0)
    section = root + names + langs + entry + resource
    section += b"\0" * (-len(section) % 0x200)
    dos = b"MZ" + b"\0" * 58 + struct.pack("<I", 0x40)
    coff = struct.pack("<HHIIIHH", 0x14C, 1, 0, 0, 0, 224, 0x0102)
    optional = bytearray(224)
    struct.pack_into("<H", optional, 0, 0x10B)
    struct.pack_into("<I", optional, 92, 16)
    struct.pack_into("<II", optional, 96 + 2 * 8, rva, len(section))
    sh = b".rsrc\0\0\0" + struct.pack("<IIIIIIHHI", len(section), rva, len(section), 0x200, 0, 0, 0, 0, 0x40000040)
    headers = dos + b"PE\0\0" + coff + bytes(optional) + sh
    headers += b"\0" * (0x200 - len(headers))
    return headers + section


files = {
    "elf-good": elf(b'{"type":"velmar","name":"VelmarD","version":"3.1.4"}\0'),
    "elf-bad-json": elf(b'{"type":"velmar","name":"GroupD","version":\0'),
    "elf-version-not-text": elf(b'{"type":"velmar","version":7}\0'),
    "elf-desc-too-long": elf(b'{"version":"9.9"}\0', desc_size=0x7FFFFFF0),
    "elf-wrong-owner": elf(b'{"version":"9.9"}\0', note_name=b"GNU\0"),
    "elf-bad-section-table": elf(b'{"version":"9.9"}\0', section_table_offset=0xFFFFFFF0),
    "pe-good": pe(version_info([("080404b0", [("CompanyName", "Velmar"), ("ProductVersion", "5.2.0.1")])],
                               [(0x0804, 0x04B0)])),
    "pe-second-translation": pe(version_info(
        [("040904b0", [("FileVersion", "1.0")]), ("080404b0", [("ProductVersion", "6.0.3")])],
        [(0x0409, 0x04B0), (0x0804, 0x04B0)])),
    "pe-no-translation": pe(version_info([("080404b0", [("ProductVersion", "5.2.0.1")])], None)),
}
for name, data in files.items():
    with open(name, "wb") as f:
        f.write(data)
    print(name, len(data))
