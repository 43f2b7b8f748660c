"""Values that are no texts, and those that no record can hold."""

import json
import random
from datetime import date, datetime, time, timedelta, timezone
from decimal import Decimal
from enum import Enum, IntEnum
from fractions import Fraction
from typing import Any, Callable, Dict, List, Type
from zoneinfo import ZoneInfo

import pytest

import qelrcpt
from samples import GENERAL_FORMS


class Word(str, Enum):
    SALE = "sale"


class Lane(IntEnum):
    FRONT = 3


def shown(value: Any, key: str = "custref") -> Any:
    """The value's text as data of the receipt; None without one."""
    receipt = qelrcpt.render({"action": "sale", key: value}, "json", time_zone="UTC")
    return json.loads(receipt.customer["reference"]).get(key)


@pytest.mark.parametrize(
    "value, text",
    [
        ("12.3", "12.3"),
        ("é€😀", "é€😀"),
        (Word.SALE, "sale"),
        (0, "0"),
        (-7, "-7"),
        (10**30, "1" + "0" * 30),
        (Lane.FRONT, "3"),
        (True, "true"),
        (False, "false"),
        (None, None),
        (Decimal("12.3"), "12.30"),
        (Decimal("12"), "12.00"),
        (Decimal("-0.5"), "-0.50"),
        (Decimal("12.3400"), "12.34"),
        (Decimal("1.2E+3"), "1200.00"),
        (Decimal("9" * 50 + ".99"), "9" * 50 + ".99"),
        (12.3, "12.30"),
        (5.0, "5.00"),
        (1e22, "1" + "0" * 22 + ".00"),
        (-0.07, "-0.07"),
    ],
)
def test_values_are_taken_for_what_they_mean(value: Any, text: str) -> None:
    assert shown(value) == text


def test_amounts_and_flags_count() -> None:
    record = {"action": "sale", "amount": Decimal("12.3"), "tax": 1.5, "rcpt_duplicate": True}
    as_texts = {"action": "sale", "amount": "12.30", "tax": "1.50", "rcpt_duplicate": "yes"}
    for form in GENERAL_FORMS:
        assert qelrcpt.render(record, form) == qelrcpt.render(as_texts, form)
    assert "$10.80" in str(qelrcpt.render(record))
    assert "DUPLICATE" in str(qelrcpt.render(record))
    assert "DUPLICATE" not in str(qelrcpt.render({**record, "rcpt_duplicate": False}))


@pytest.mark.parametrize(
    "key, value, time_shown",
    [
        ("timestamp", datetime(2026, 3, 14, 9, 41, 7, tzinfo=timezone.utc), "03/14/26 09:41:07"),
        ("timestamp", datetime(2026, 3, 14, 9, 41, 7, 999999, timezone.utc), "03/14/26 09:41:07"),
        ("timestamp", datetime(2026, 7, 1, 1, tzinfo=ZoneInfo("America/Toronto")),
         "07/01/26 05:00:00"),
        ("timestamp", datetime(2026, 1, 1, tzinfo=timezone(timedelta(hours=14))),
         "12/31/25 10:00:00"),
        ("timestamp", 1773502867, "03/14/26 15:41:07"),
        ("rcpt_host_ts", datetime(2026, 3, 14, 9, 41, 7), "03/14/26 09:41:07"),
        ("rcpt_host_ts", datetime(2026, 7, 1, 1, tzinfo=ZoneInfo("America/Toronto")),
         "07/01/26 01:00:00"),
    ],
)  # fmt: skip
def test_times(key: str, value: Any, time_shown: str) -> None:
    receipt = qelrcpt.render({"action": "sale", key: value}, "json", time_zone="UTC")
    assert json.loads(receipt.customer["reference"])["time"] == time_shown


def test_line_items() -> None:
    items = [
        {"name": "Tea", "qty": 2, "price": Decimal("7.5"), "notes": None,
         "modifiers": ({"name": "Milk", "qty": 1, "price": 0.5, "type": "addon"},)},
        {"name": "Beans", "qty": Decimal("0.755"), "price": 12},
        {"name": "Sugar", "qty": 1.0, "price": "1.20"},
        {"name": "Loyalty", "qty": 1, "type": "discount_percent", "price": Decimal("12.50")},
    ]  # fmt: skip
    as_text = json.dumps([
        {"name": "Tea", "qty": "2", "price": "7.50",
         "modifiers": [{"name": "Milk", "qty": "1", "price": "0.50", "type": "addon"}]},
        {"name": "Beans", "qty": "0.755", "price": "12"},
        {"name": "Sugar", "qty": "1", "price": "1.20"},
        {"name": "Loyalty", "qty": "1", "type": "discount_percent", "price": "12.5"},
    ])  # fmt: skip
    for form in GENERAL_FORMS:
        taken = qelrcpt.render({"line_items": items}, form)
        assert taken == qelrcpt.render({"line_items": as_text}, form)
    text = str(qelrcpt.render({"line_items": items}))
    assert "$7.50" in text and "BEANS (0.755)" in text and "- 12.5%" in text


def test_custom_fields_and_receipt_data() -> None:
    fields = {"Table": 4, 'The "Chef"': "Ada, née: X", "none": None}
    custom = qelrcpt.render({"rcpt_custom": fields}, "json", time_zone="UTC").customer["reference"]
    assert json.loads(custom)["rcpt_custom"] == {"Table": "4", 'The "Chef"': "Ada, née: X"}
    data = {"items": [{"sku": "1", "descr": "Cup", "qty": 2, "amount": 3.5, "subtotal": 7}],
            "customer": {"bill_name": "Pat"}, "policy": "Within 30 days"}  # fmt: skip
    text = str(qelrcpt.render({"moneris_rcpt_data": data, "action": "sale"}, "moneris-ecomm"))
    assert all(shown in text for shown in ("CUP", "2     3.50", "PAT", "WITHIN 30 DAYS"))


ENDLESS: Dict[str, Any] = {}
ENDLESS["modifiers"] = [ENDLESS]

REFUSED = [
    ("amount", 12.345, ValueError, "more than two decimals"),
    ("amount", 0.1 + 0.2, ValueError, "more than two decimals"),
    ("amount", Decimal("1.001"), ValueError, "more than two decimals"),
    ("amount", float("nan"), ValueError, "not finite"),
    ("amount", Decimal("-Infinity"), ValueError, "not finite"),
    ("amount", Decimal("1E+999999"), ValueError, "too many digits"),
    ("amount", Decimal("1E-999999"), ValueError, "too many digits"),
    ("amount", 10**500, ValueError, "too many digits"),
    ("amount", Fraction(1, 2), TypeError, "Fraction"),
    ("amount", 5j, TypeError, "complex"),
    ("custref", b"PO-7", TypeError, "bytes"),
    ("custref", object, TypeError, "type"),
    ("custref", ["PO-7"], TypeError, "list"),
    ("custref", {"PO": 7}, TypeError, "dict"),
    ("custref", {"PO-7"}, TypeError, "set"),
    ("custref", "PO\0-7", ValueError, "NUL"),
    ("custref", "PO\ud83d", ValueError, "surrogate"),
    ("auth", datetime(2026, 1, 1, tzinfo=timezone.utc), TypeError, "'timestamp'"),
    ("timestamp", datetime(2026, 1, 1), ValueError, "without a time zone"),
    ("timestamp", date(2026, 1, 1), TypeError, "date"),
    ("timestamp", time(9, 41), TypeError, "time"),
    ("rcpt_host_ts", datetime(2070, 1, 1), ValueError, "1969 to 2068"),
    ("line_items", {"name": "Tea"}, TypeError, "list of dicts"),
    ("line_items", [None], TypeError, r"line_items\[0\]"),
    ("line_items", [{"name": "Tea", "price": 1.005}], ValueError, r"line_items\[0\]\.price"),
    ("line_items", [{"name": "Tea"}, {"name": b"Tea"}], TypeError, r"line_items\[1\]\.name"),
    ("line_items", [{"name": "T\0ea"}], ValueError, "NUL"),
    ("line_items", [{"name": "\udc00"}], ValueError, "surrogate"),
    ("line_items", [{1: "Tea"}], TypeError, "names that are str"),
    ("line_items", [ENDLESS], ValueError, "nested too deeply"),
    ("moneris_rcpt_data", [], TypeError, "dict"),
    ("rcpt_custom", ["Table"], TypeError, "name:value"),
    ("rcpt_custom", {4: "Table"}, TypeError, "names that are str"),
    ("rcpt_custom", {"Table": [4]}, TypeError, "rcpt_custom.Table"),
]


@pytest.mark.parametrize("key, value, error, said", REFUSED)
def test_what_no_record_can_hold_is_refused_by_its_key(
    key: str, value: Any, error: Type[Exception], said: str
) -> None:
    takers: List[Callable[[Any], object]] = [qelrcpt.render, qelrcpt.check]
    for take in takers:
        with pytest.raises(error, match=said) as refused:
            take({"action": "sale", key: value})
        assert key in str(refused.value)


@pytest.mark.parametrize(
    "key, error", [(5, TypeError), (None, TypeError), ("a\0", ValueError), ("\ud800", ValueError)]
)
def test_keys_are_texts(key: Any, error: Type[Exception]) -> None:
    with pytest.raises(error, match=r"5|None|a\\x00|\\ud800"):
        qelrcpt.render({key: "value"})


def test_messages_do_not_show_values() -> None:
    number = "4000123412341234"
    for value in (number + "\0", number + "\ud800", number.encode(), [number], {number}):
        with pytest.raises((TypeError, ValueError)) as refused:
            qelrcpt.render({"account": value})
        assert number not in str(refused.value)


def test_any_text_is_rendered() -> None:
    """Whatever texts a record holds, all forms render it, and JSON can be read."""
    chance = random.Random(7)
    pieces = ["é", "€", "😀", "\x1b", "\n", '"', "\\", "<", "&", "1.", "-", ",", ":", "{", "[", "\x85"]
    keys = ["action", "amount", "tax", "merch_name", "line_items", "rcpt_custom", "account",
            "moneris_rcpt_data", "printdata", "timestamp", "order_total", "code"]  # fmt: skip
    for _ in range(200):
        record = {key: "".join(chance.choices(pieces, k=chance.randrange(9)))
                  for key in chance.sample(keys, 6)}  # fmt: skip
        for form in (*GENERAL_FORMS, "moneris", "moneris-ecomm"):
            receipt = qelrcpt.render(record, form)
            assert form != "plain" or "\ufffd" not in str(receipt)
            if form == "json":
                json.loads(str(receipt))
