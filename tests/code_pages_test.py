#!/usr/bin/env python3
"""code_pages_test.py LIBQELRCPT.SO: Python's codecs know the same code pages as the printing."""

import codecs
import ctypes
import sys

PAGES = {
    437: "cp437",
    850: "cp850",
    852: "cp852",
    858: "cp858",
    860: "cp860",
    863: "cp863",
    865: "cp865",
    866: "cp866",
    1252: "cp1252",
    28605: "iso8859-15",
}
OTHERS = "…‘“–Łß€\u0416\u4e2d\u2009ÀÿŒšĳ"  # beside the pages' own, to be replaced where they lack


class Printer(ctypes.Structure):
    """Qel_rcpt_printer_t."""

    _fields_ = [
        ("language", ctypes.c_uint32),
        ("paper_columns", ctypes.c_uint16),
        ("columns", ctypes.c_uint16),
        ("code_page", ctypes.c_uint32),
        ("has_code_page_number", ctypes.c_bool),
        ("code_page_number", ctypes.c_uint8),
        ("no_emphasis", ctypes.c_bool),
        ("cut", ctypes.c_uint32),
        ("feed", ctypes.c_uint8),
        ("drawer", ctypes.c_uint32),
        ("logo_number", ctypes.c_uint8),
        ("logo_key", ctypes.c_char_p),
        ("barcode", ctypes.c_bool),
        ("qr_text", ctypes.c_char_p),
        ("qr_level", ctypes.c_uint32),
        ("qr_module", ctypes.c_uint8),
    ]


class Printed(ctypes.Structure):
    """Qel_rcpt_printed_t."""

    _fields_ = [
        ("len", ctypes.c_size_t),
        ("replaced", ctypes.c_size_t),
        ("has_barcode", ctypes.c_bool),
        ("fault", ctypes.c_uint32),
    ]


def load(path):
    library = ctypes.CDLL(path)
    library.Qel_rcpt_print.restype = ctypes.c_void_p
    library.Qel_rcpt_print.argtypes = [
        ctypes.c_void_p,
        ctypes.c_void_p,
        ctypes.c_bool,
        ctypes.POINTER(Printer),
        ctypes.POINTER(Printed),
    ]
    library.Qel_hash_dict_create.restype = ctypes.c_void_p
    library.Qel_hash_dict_create.argtypes = [ctypes.c_size_t, ctypes.c_size_t, ctypes.c_uint32]
    library.Qel_hash_dict_insert.argtypes = [ctypes.c_void_p, ctypes.c_char_p, ctypes.c_char_p]
    library.Qel_hash_dict_destroy.argtypes = [ctypes.c_void_p]
    library.Qel_free.argtypes = [ctypes.c_void_p]
    return library


def printed_lines(library, page, characters):
    """Each character in a line of its own, as the printer gets it."""
    blocks = library.Qel_hash_dict_create(4, 75, 0)
    library.Qel_hash_dict_insert(blocks, b"cust_notes", "\n".join(characters).encode())
    printer = Printer(code_page=page, no_emphasis=True, has_code_page_number=True)
    printed = Printed()
    result = library.Qel_rcpt_print(blocks, None, True, ctypes.byref(printer), ctypes.byref(printed))
    assert result, f"page {page}: fault {printed.fault}"
    lines = ctypes.string_at(result, printed.len).split(b"\n")
    library.Qel_free(result)
    library.Qel_hash_dict_destroy(blocks)
    lines[0] = lines[0][len(b"\x1b@\x1c.\x1bR\0\x1bt\0\x1bM\0") :]
    return lines[: len(characters)], printed.replaced


def check_page(library, page, name):
    faults = 0
    known = {}
    for byte in range(0x20, 0x100):
        character = codecs.decode(bytes([byte]), name, "replace")
        if character != "\ufffd" and not 0x7F <= ord(character) < 0xA0:
            known[character] = bytes([byte])
    lacking = [other for other in OTHERS if other not in known]
    characters = list(known) + lacking
    lines, replaced = printed_lines(library, page, characters)
    for character, line in zip(characters, lines):
        expected = known.get(character)
        is_right = line == expected if expected else len(line) == 1 and 0x20 <= line[0] < 0x7F
        if not is_right:
            print(f"page {page}: U+{ord(character):04X} is printed as {line}, not {expected}")
            faults += 1
    if replaced != len(lacking):
        print(f"page {page}: {replaced} characters were replaced, not {len(lacking)}")
        faults += 1
    return faults, len(known)


def main():
    library = load(sys.argv[1])
    results = [check_page(library, page, name) for page, name in PAGES.items()]
    assert sum(known for _, known in results) > 2100  # nearly all of ten pages
    return 1 if any(faults for faults, _ in results) else 0


if __name__ == "__main__":
    sys.exit(main())
