"""What values of a record mean: the text that stands for each in the library's record.

Messages name the key and never show the value, which may be what nobody should read in a log.
"""

import json
import operator
from collections.abc import Mapping as AnyMapping
from datetime import datetime, timedelta, timezone
from decimal import Decimal
from typing import Dict, Mapping, Optional

# Not narrower, for a dict of several kinds of values is one of objects to a type checker.
Record = Mapping[str, object]

_EPOCH = datetime(1970, 1, 1, tzinfo=timezone.utc)
_HOST_YEARS = range(1969, 2069)  # what two digits of a year can say
_encode = json.JSONEncoder(ensure_ascii=False).encode
_DEEPEST = 100  # levels of a document
_MOST_DIGITS = 400
_LARGEST = 1 << 1024
_SCALARS = (str, int, float, Decimal, type(None))
_CONTAINERS = (list, tuple, AnyMapping)
_PERCENT_TYPES = ("discount_percent", "cashdiscount")
_EXPECTED = "expected a str, int, float, Decimal, bool or None"
_DOCUMENT = "expected a {} or its JSON text"


def text_of(key: str, value: object) -> Optional[str]:
    """The text of a record's value; None for one that is not there."""
    if isinstance(value, _SCALARS):  # before the mappings, for which the test takes longer
        return _scalar_text(key, value)
    if isinstance(value, datetime):
        return _time_text(key, value)
    if isinstance(value, _CONTAINERS):
        return _document_text(key, value)
    return _scalar_text(key, value)


def _wrong_kind(key: str, value: object, expected: str = _EXPECTED) -> TypeError:
    return TypeError(f"{key!r} is of type {type(value).__name__}, {expected}")


def _scalar_text(key: str, value: object, is_amount: bool = True) -> Optional[str]:
    if value is None or isinstance(value, str):
        return value
    if isinstance(value, bool):
        return "true" if value else "false"
    if isinstance(value, float):
        value = Decimal(float.__repr__(value))
    if isinstance(value, Decimal):
        return _decimal_text(key, value, is_amount)
    try:
        number = operator.index(value)  # type: ignore[arg-type]  # what has no index is refused
    except TypeError:
        raise _wrong_kind(key, value) from None
    if abs(number) >= _LARGEST:
        raise ValueError(f"{key!r} has too many digits, expected at most {_MOST_DIGITS}")
    return int.__repr__(number)  # str() of an IntEnum is its name before Python 3.11


def _decimal_text(key: str, number: Decimal, is_amount: bool) -> str:
    if not number.is_finite():
        raise ValueError(f"{key!r} is not finite, expected a number")
    if not -_MOST_DIGITS <= number.adjusted() < _MOST_DIGITS:
        raise ValueError(f"{key!r} has too many digits, expected at most {_MOST_DIGITS}")
    units, _, decimals = format(number, "f").partition(".")
    decimals = decimals.rstrip("0")
    if not is_amount:
        return f"{units}.{decimals}" if decimals else units
    if len(decimals) > 2:
        raise ValueError(f"{key!r} has more than two decimals, expected an amount in hundredths")
    return f"{units}.{decimals:0<2}"


def _time_text(key: str, time: datetime) -> str:
    is_aware = time.utcoffset() is not None
    if key == "timestamp" and is_aware:
        return str((time - _EPOCH) // timedelta(seconds=1))
    if key == "timestamp":
        raise ValueError("'timestamp' is a datetime without a time zone, expected one with")
    if key != "rcpt_host_ts":
        raise _wrong_kind(key, time, f"which only 'timestamp' and 'rcpt_host_ts' take; {_EXPECTED}")
    if time.year not in _HOST_YEARS:
        raise ValueError("'rcpt_host_ts' has a year that two digits cannot say, expected "
                         f"{_HOST_YEARS[0]} to {_HOST_YEARS[-1]}")
    return time.strftime("%m%d%y%H%M%S")


def _document_text(key: str, value: object) -> Optional[str]:
    is_object = isinstance(value, AnyMapping)
    if key == "rcpt_custom" and isinstance(value, AnyMapping):
        return _custom_text(value)
    if (key == "line_items" and not is_object) or (key == "moneris_rcpt_data" and is_object):
        return _encode(_json_value(key, value, 1))
    expected = {
        "line_items": _DOCUMENT.format("list of dicts"),
        "moneris_rcpt_data": _DOCUMENT.format("dict"),
        "rcpt_custom": "expected a dict, or text such as name:value,name:value",
    }
    raise _wrong_kind(key, value, expected.get(key, _EXPECTED))


def _custom_text(fields: Mapping[object, object]) -> str:
    parts = []
    for name, value in fields.items():
        if not isinstance(name, str):
            raise _wrong_kind("rcpt_custom", name, "expected names that are str")
        text = _scalar_text(f"rcpt_custom.{name}", value)
        if text is not None:
            parts.append(":".join('"' + part.replace('"', '""') + '"' for part in (name, text)))
    return ",".join(parts)


def _json_value(path: str, value: object, depth: int) -> object:
    if depth > _DEEPEST:
        raise ValueError(f"{path[:60]!r} is nested too deeply, expected at most {_DEEPEST} levels")
    if isinstance(value, (dict, AnyMapping)):
        return _json_object(path, value, depth)
    if isinstance(value, (list, tuple)):
        return [
            _json_value(f"{path}[{at}]", element, depth + 1) for at, element in enumerate(value)
        ]
    return _json_text(path, value)


def _json_object(path: str, value: Mapping[object, object], depth: int) -> Dict[str, object]:
    is_percent = str(value.get("type")).lower() in _PERCENT_TYPES
    members: Dict[str, object] = {}
    for name, member in value.items():
        if not isinstance(name, str):
            raise _wrong_kind(path, name, "expected names that are str")
        if member is None:
            continue
        here = f"{path}.{name}"
        if not isinstance(member, _SCALARS) and isinstance(member, _CONTAINERS):
            members[name] = _json_value(here, member, depth + 1)
        else:
            is_amount = name != "qty" and not (is_percent and name == "price")
            members[name] = _json_text(here, member, is_amount)
    return members


def _json_text(path: str, value: object, is_amount: bool = True) -> str:
    text = _scalar_text(path, value, is_amount)
    if text is None:
        raise _wrong_kind(path, value, "expected a dict or a text")
    if "\0" in text:
        raise ValueError(f"{path!r} holds a NUL character, expected a text without")
    return text
