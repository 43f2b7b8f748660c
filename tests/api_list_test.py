#!/usr/bin/env python3
"""api_list_test.py CC LIBRARY...: share/qelrcpt-api.json tells the truth about what is exported.

The list has the symbols that the libraries export, a C compiler takes its types for those of the
headers, and a binding made of nothing but the list calls every function: without each argument that
may be absent, and releasing what the list gives to the caller, after which the heap holds what it
held before."""

import ctypes
import gc
import itertools
import json
import subprocess
import sys
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
API = json.loads((ROOT / "share" / "qelrcpt-api.json").read_text())
FUNCTIONS = {function["name"]: function for function in API["functions"]}
FOLDERS = ("include", "qelstdlib/include", "src")


# What a compiler says


def declaration(member):
    count = f"[{member['count']}]" if "count" in member else ""
    return f"{member['type']} {member['name']}{count}"


def field_checks(structure):
    """Name, type, place and number of the fields."""
    name, fields = structure["name"], structure["fields"]
    body = " ".join(f"{declaration(field)};" for field in fields)
    yield f"struct own_{name} {{ {body} }};"
    yield f'_Static_assert(sizeof(struct own_{name}) == sizeof({name}), "");'
    for field in fields:
        count = f"(*)[{field['count']}]" if "count" in field else "*"
        address = f"&(({name} *)0)->{field['name']}"
        yield f'_Static_assert(_Generic({address}, {field["type"]} {count}: 1), "");'
        own, theirs = (f"offsetof({of}, {field['name']})" for of in (f"struct own_{name}", name))
        yield f'_Static_assert({own} == {theirs}, "");'


def as_c(api):
    """The list beside the headers in C, where what is declared again has to have the same type."""
    yield from sorted({f"#include <{function['header']}>" for function in api["functions"]})
    for function in api["functions"]:
        arguments = [declaration(argument) for argument in function["arguments"]]
        arguments += ["..."] if function["is_variadic"] else [] if arguments else ["void"]
        yield f"{function['result']['type']} {function['name']}({', '.join(arguments)});"
    for callback in api["callbacks"]:
        arguments = ", ".join(declaration(argument) for argument in callback["arguments"])
        yield f"typedef {callback['result']} (*{callback['name']})({arguments});"
    for alias in api["aliases"]:
        yield f"typedef {alias['type']} {alias['name']};"
    for enumeration in api["enumerations"]:
        size = f"sizeof({enumeration['name']}) == sizeof({enumeration['type']})"
        yield f'_Static_assert({size}, "");'
        for value in enumeration["values"]:
            yield f'_Static_assert({value["name"]} == {value["value"]}, "");'
    for structure in api["structures"]:
        yield from field_checks(structure)


def compiler_says(compiler, api):
    """Its errors; none when it agrees."""
    with tempfile.NamedTemporaryFile("w", suffix=".c") as source:
        source.write("\n".join(as_c(api)) + "\n")
        source.flush()
        folders = [f"-I{ROOT / folder}" for folder in FOLDERS]
        command = [compiler, "-std=c11", "-fsyntax-only", "-Wall", "-Werror", *folders, source.name]
        return subprocess.run(command, capture_output=True, text=True).stderr


def test_types(compiler):
    assert not (errors := compiler_says(compiler, API)), errors
    text = json.dumps(API)
    for right, wrong in (
        ('"type": "const char *", "may_be', '"type": "char *", "may_be'),
        ('"type": "uint16_t"', '"type": "uint8_t"'),
        ('"value": 437', '"value": 7'),
    ):
        assert right in text
        assert "error: " in compiler_says(compiler, json.loads(text.replace(right, wrong))), wrong


def test_symbols(libraries):
    for library in libraries:
        name = Path(library).name.split(".")[0].removeprefix("lib")
        lines = subprocess.check_output(["nm", "-D", "--defined-only", library], text=True)
        symbols = (line.split() for line in lines.splitlines())
        exported = {symbol.split("@")[0] for _, kind, symbol in symbols if kind == "T"}
        assert exported == {f["name"] for f in API["functions"] if f["library"] == name}, name


# A binding made of the list


class Binding:
    """The functions as attributes. A handle is an address, a text that is the caller's too."""

    def __init__(self, libraries):
        self.types = {"void": None, "char": ctypes.c_char}
        for name in ("bool", "size_t", "uint8_t", "uint16_t", "uint32_t", "uint64_t", "int64_t"):
            ours = name if name == "size_t" else name.removesuffix("_t")
            self.types[name] = getattr(ctypes, f"c_{ours}")
        self.types |= {each["name"]: ctypes.c_uint32 for each in API["enumerations"]}
        self.types |= {each["name"]: self.types[each["type"]] for each in API["aliases"]}
        for each in API["structures"]:
            fields = [(field["name"], self.field_type(field)) for field in each["fields"]]
            kind = type(each["name"], (ctypes.Structure,), {"_fields_": fields})
            self.types[each["name"]] = kind
        for each in API["callbacks"]:
            arguments = [self.type_of(argument["type"]) for argument in each["arguments"]]
            self.types[each["name"]] = ctypes.CFUNCTYPE(self.types[each["result"]], *arguments)
        for function in API["functions"]:
            library = next(l for l in libraries if f"lib{function['library']}.so" in l)
            call = getattr(ctypes.CDLL(library), function["name"])
            call.argtypes = [self.type_of(argument["type"]) for argument in function["arguments"]]
            call.restype = self.type_of(function["result"]["type"])
            setattr(self, function["name"], call)

    def field_type(self, field):
        kind = self.type_of(field["type"])
        return kind * field["count"] if "count" in field else kind

    def type_of(self, text):
        if text == "const char *":
            return ctypes.c_char_p
        if not text.endswith("*"):
            return self.types[text]
        pointed = text.removesuffix("*").strip()
        if pointed.endswith("*"):
            return ctypes.POINTER(self.type_of(pointed))
        known = self.types.get(pointed.removeprefix("const "))
        return ctypes.c_void_p if known in (None, ctypes.c_char) else ctypes.POINTER(known)


RECORD = {
    "action": "sale",
    "amount": "12.34",
    "authamount": "5.00",
    "order_total": "20.00",
    "discountamount": "3.00",
    "rcpt_issuer_resp_code": "00",
    "u_need_signature": "1",
    "u_emv_chip_malfunction": "1",
    "rcpt_entry_mode": "F",
    "rcpt_emv_pinbypass": "1",
    "cardtype": "Interac",
    "rcpt_acct_type": "savings",
    "code": "AUTH",
    "phard_code": "SUCCESS",
    "u_flowflags": "SIGCAPTURED",
    "12.50000": "a key that is one of the texts",
    "cust_money": "TOTAL: 1",  # a block, for what takes blocks
}
TEXTS = (b"12.50000", b'{"a": 1}', b'["abcd"]', b"a:1,bb:2", b"a:b,c:d:", b"America/Toronto")
BYTES = {"pair_sep": b",", "kv_sep": b":", "quote": b'"', "escape": b'"'}
LENGTH = 8  # of what is given with a length; no text is shorter
ROUNDS = 24


class Caller:
    """Calls functions with values of their arguments' types, and releases what the list says."""

    def __init__(self, api):
        self.api = api
        self.gave_something, self.gave_nothing = set(), set()
        self.releases = {}
        for function in API["functions"]:
            result = function["result"]
            gifts = [result, *function["arguments"]]
            for gift in (gift for gift in gifts if "released_by" in gift):
                kind = gift["type"] if gift is result else gift["type"].removesuffix("*")
                ways = self.releases.setdefault(kind, gift["released_by"])
                assert ways == gift["released_by"], function["name"]
        self.enumerations = {each["name"]: each["values"] for each in API["enumerations"]}

    def release(self, kind, value, turn=0):
        """In one of the ways that there are."""
        ways = self.releases[kind]
        function = FUNCTIONS[ways[turn % len(ways)]]
        absent = [None] * (len(function["arguments"]) - 1)
        given = getattr(self.api, function["name"])(value, *absent)
        if function["result"].get("ownership") == "caller":
            self.release(function["result"]["type"], given)

    def handle(self, kind, turn):
        """A new one, with something in it, and what has to be released after it."""
        api = self.api
        if kind == "Qel_hash_dict_t":
            made = api.Qel_hash_dict_create(8, 75, 0)
            for key, value in RECORD.items():
                api.Qel_hash_dict_insert(made, key.encode(), value.encode())
        elif kind == "Qel_json_node_t":
            text = (b'{"12.50000": "a"}', b'["a"]')[turn // len(TEXTS) % 2]
            made = api.Qel_json_read(text, len(text), 0, None, None, None, None)
        elif kind == "Qel_hash_dict_enum_t":
            made = ctypes.c_void_p()
            api.Qel_hash_dict_enumerate(self.last_dictionary, ctypes.byref(made))
            made = made.value
        elif kind == "Qel_time_tz_t":
            made = api.Qel_time_tz_load(b"America/Toronto")
        elif kind == "Qel_xml_node_t":
            made = api.Qel_xml_create_doc()
        elif kind == "Qel_list_str_t":
            made = api.Qel_list_str_create(1)
            api.Qel_list_str_insert(made, b"a line")
        elif kind == "Qel_hash_u64str_t":
            made = api.Qel_hash_u64str_create(8, 75, 0)
            api.Qel_hash_u64str_insert(made, LENGTH, b"a value")
        else:
            made = api.Qel_buf_create()
        assert made, kind
        return made

    def value_of(self, argument, turn):
        """A value for the argument, and what to do with it after the call."""
        name, kind = argument["name"], argument["type"]
        pointed = kind.removesuffix("*").strip().removeprefix("const ")
        if kind in self.enumerations:
            values = self.enumerations[kind]
            return values[turn % len(values)]["value"], None
        if kind in self.api.types:
            if name in BYTES:
                return BYTES[name], None
            if kind.endswith("_cb"):
                return self.api.types[kind](lambda *_: None), None
            by_name = {"idx": 1000 * (turn % 2), "index": 1000 * (turn % 2), "flags": 0}
            value = b":" if kind == "char" else by_name.get(name, LENGTH)
            return (value if kind != "bool" else turn % 2 == 0), None
        if kind == "const char *":
            return TEXTS[turn % len(TEXTS)], None
        if argument.get("ownership") == "taken" and kind == "void *":
            return self.api.Qel_strdup(b"text"), None
        if argument["direction"] == "in" and name in ("info", "ret"):
            return None, None
        if kind in ("void *", "char *", "const void *"):
            return ctypes.create_string_buffer(TEXTS[0], 64), None
        if pointed in {handle["name"] for handle in API["handles"]}:
            value = self.handle(pointed, turn)
            self.last_dictionary = value if pointed == "Qel_hash_dict_t" else self.last_dictionary
            return value, lambda is_taken: is_taken or self.release(f"{pointed} *", value)
        if pointed.endswith("*") and argument.get("ownership") == "caller":
            place = ctypes.c_void_p()
            if argument["direction"] == "in-out":
                place.value = self.handle(pointed.removesuffix("*").strip(), turn)
            kind = pointed
            return ctypes.pointer(place), lambda _: place.value and self.release(kind, place.value)
        if pointed.endswith("*"):
            return ctypes.pointer(ctypes.c_char_p()), None
        return ctypes.pointer(self.api.types[pointed]()), None

    def call(self, function, turn, absent):
        """With the arguments whose names are in absent left out."""
        self.last_dictionary = None
        self.walked = None
        if any(a["type"] == "Qel_hash_dict_enum_t *" for a in function["arguments"]):
            self.walked = self.last_dictionary = self.handle("Qel_hash_dict_t", turn)
        values, endings = [], []
        for argument in function["arguments"]:
            is_absent = argument["name"] in absent
            value, ending = (None, None) if is_absent else self.value_of(argument, turn)
            if is_absent and argument["type"].endswith("_cb"):
                value = self.api.types[argument["type"]]()
            if argument["type"] == "const Qel_hash_dict_t *" and self.walked and not is_absent:
                ending(False)  # the walk's own
                value, ending = self.walked, None
                self.last_dictionary = value
            values.append(value)
            if ending:
                is_left = argument.get("unless_absent") in absent
                endings.append((None if is_left else argument.get("ownership"), ending))
        given = getattr(self.api, function["name"])(*values)
        self.judge(function["name"], function["result"], given, absent, turn)
        for ownership, ending in reversed(endings):
            ending(ownership == "taken" or (ownership == "taken if true" and given is True))
        if self.walked:
            self.api.Qel_hash_dict_destroy(self.walked)

    def judge(self, name, result, given, absent, turn):
        if not result["type"].endswith("*"):
            return
        is_something = given == b"" or bool(given)
        (self.gave_something if is_something else self.gave_nothing).add(name)
        assert result["may_be_absent"] or is_something, f"{name} gives nothing without {absent}"
        is_ours = result["ownership"] == "caller" or (
            result["ownership"] == "caller if absent" and result["argument"] in absent
        )
        if is_ours and is_something:
            self.release(result["type"], given, turn)


class Mallinfo(ctypes.Structure):
    """struct mallinfo2 of the C library."""

    _fields_ = [(f"fact{place}", ctypes.c_size_t) for place in range(10)]


def heap():
    """Bytes that malloc has given out, from its arenas and mapped for one text alone."""
    mallinfo2 = ctypes.CDLL(None).mallinfo2
    mallinfo2.restype = Mallinfo
    gc.collect()
    told = mallinfo2()
    return told.fact7 + told.fact4


def test_calls(caller):
    """What stays on the heap each time, not what Python keeps now and then, is a leak."""
    for function in API["functions"]:
        pointers = [a["name"] for a in function["arguments"] if a.get("may_be_absent")]
        patterns = [(), *[(name,) for name in pointers], tuple(pointers)]
        sizes = []
        for _ in range(6):
            for turn, absent in itertools.product(range(ROUNDS), patterns):
                caller.call(function, turn, absent)
            sizes.append(heap())
        leak = min(after - before for before, after in itertools.pairwise(sizes[1:]))
        assert leak <= 0, f"{function['name']} leaves {leak} bytes each time"
    pointers = {name for name, each in FUNCTIONS.items() if each["result"]["type"].endswith("*")}
    may_be_absent = {name for name in pointers if FUNCTIONS[name]["result"]["may_be_absent"]}
    assert not (untried := pointers - caller.gave_something), f"nothing but absent: {untried}"
    assert not (untried := may_be_absent - caller.gave_nothing), f"never absent: {untried}"


def test_receipt(api):
    api.Qel_rcpt_init()
    record = api.Qel_hash_dict_create(8, 75, 0)
    api.Qel_hash_dict_insert(record, b"amount", b"5.00")
    config = api.types["Qel_rcpt_config_t"](country_code=840, currency_code=840)
    blocks = api.Qel_rcpt_generate_plain(record, config, 20, b"\n")
    money = api.Qel_hash_dict_get_direct(blocks, b"cust_money")
    assert money == b"SUBTOTAL:      $5.00\nTOTAL:         $5.00", money
    for dictionary in (blocks, record):
        api.Qel_hash_dict_destroy(dictionary)


def main():
    compiler, *libraries = sys.argv[1:]
    subprocess.run([ROOT / "scripts" / "api-list", "--check"], check=True)
    test_types(compiler)
    test_symbols(libraries)
    api = Binding(libraries)
    test_receipt(api)
    test_calls(Caller(api))


if __name__ == "__main__":
    main()
