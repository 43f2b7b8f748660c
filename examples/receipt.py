#!/usr/bin/env python3
"""The receipts of a sale, from the standard library alone: receipt.py [LIBQELRCPT.SO]"""

import ctypes
import ctypes.util
import json
import sys


class Config(ctypes.Structure):
    """Qel_rcpt_config_t."""

    _fields_ = [
        ("cust_lang", ctypes.c_uint32),
        ("merch_lang", ctypes.c_uint32),
        ("country_code", ctypes.c_uint32),
        ("currency_code", ctypes.c_uint32),
        ("industry", ctypes.c_uint32),
        ("merch_timezone", ctypes.c_void_p),
    ]


class Library:
    """The operations that a receipt takes. The dictionaries of the utility layer, which the
    library is linked with, are found through it."""

    _operations = {
        "Qel_rcpt_init": (None, []),
        "Qel_rcpt_deinit": (None, []),
        "Qel_rcpt_generate_plain": (
            ctypes.c_void_p,
            [ctypes.c_void_p, ctypes.POINTER(Config), ctypes.c_size_t, ctypes.c_char_p],
        ),
        "Qel_rcpt_generate_json": (ctypes.c_void_p, [ctypes.c_void_p, ctypes.POINTER(Config)]),
        "Qel_hash_dict_create": (
            ctypes.c_void_p,
            [ctypes.c_size_t, ctypes.c_size_t, ctypes.c_uint32],
        ),
        "Qel_hash_dict_insert": (
            ctypes.c_bool,
            [ctypes.c_void_p, ctypes.c_char_p, ctypes.c_char_p],
        ),
        "Qel_hash_dict_enumerate": (
            ctypes.c_size_t,
            [ctypes.c_void_p, ctypes.POINTER(ctypes.c_void_p)],
        ),
        "Qel_hash_dict_enumerate_next": (
            ctypes.c_bool,
            [
                ctypes.c_void_p,
                ctypes.c_void_p,
                ctypes.POINTER(ctypes.c_char_p),
                ctypes.POINTER(ctypes.c_char_p),
            ],
        ),
        "Qel_hash_dict_enumerate_free": (None, [ctypes.c_void_p]),
        "Qel_hash_dict_destroy": (None, [ctypes.c_void_p]),
        "Qel_time_tz_load": (ctypes.c_void_p, [ctypes.c_char_p]),
        "Qel_time_tz_destroy": (None, [ctypes.c_void_p]),
    }

    def __init__(self, path=None):
        path = path or ctypes.util.find_library("qelrcpt") or "libqelrcpt.so.1"
        library = ctypes.CDLL(path)
        for name, (result, arguments) in self._operations.items():
            operation = getattr(library, name)
            operation.restype = result
            operation.argtypes = arguments
            setattr(self, name, operation)

    def __enter__(self):
        self.Qel_rcpt_init()
        return self

    def __exit__(self, *_):
        self.Qel_rcpt_deinit()

    def render(self, generate, record, *arguments):
        """The blocks that a generator makes of the record: a dict of str in the receipt's order."""
        kvs = self.Qel_hash_dict_create(len(record), 75, 0)
        for key, value in record.items():
            self.Qel_hash_dict_insert(kvs, key.encode(), value.encode())
        blocks = generate(kvs, *arguments)
        self.Qel_hash_dict_destroy(kvs)
        rendered = self._to_dict(blocks)
        self.Qel_hash_dict_destroy(blocks)
        return rendered

    def _to_dict(self, blocks):
        walk, key, text = ctypes.c_void_p(), ctypes.c_char_p(), ctypes.c_char_p()
        rendered = {}
        self.Qel_hash_dict_enumerate(blocks, ctypes.byref(walk))
        while self.Qel_hash_dict_enumerate_next(
            blocks, walk, ctypes.byref(key), ctypes.byref(text)
        ):
            rendered[key.value.decode()] = text.value.decode()
        self.Qel_hash_dict_enumerate_free(walk)
        return rendered


RECORD = {
    "merch_name": "Schwanenfeder Tee",
    "merch_addr1": "Lindengasse 4",
    "merch_phone": "030 5550 0142",
    "action": "sale",
    "cardtype": "VISA",
    "u_cardclass": "debit",
    "account": "XXXXXXXXXXXX7788",  # masked: what stands here is printed
    "timestamp": "1773502867",
    "amount": "18.40",
    "tax": "2.94",
    "code": "AUTH",
}


def main():
    with Library(*sys.argv[1:2]) as qel:
        zone = qel.Qel_time_tz_load(b"Europe/Berlin")
        if not zone:  # the times would be those of this machine
            sys.exit("This system does not know the time zone Europe/Berlin.")
        shop = Config(cust_lang=3, country_code=276, currency_code=978, merch_timezone=zone)

        plain = qel.render(qel.Qel_rcpt_generate_plain, RECORD, shop, 32, b"\n")
        print("\n\n".join(text for key, text in plain.items() if key.startswith("cust_")))

        data = qel.render(qel.Qel_rcpt_generate_json, RECORD, shop)
        print("\nTotal:", json.loads(data["cust_money"])["totalamount"])
        qel.Qel_time_tz_destroy(zone)


if __name__ == "__main__":
    main()
