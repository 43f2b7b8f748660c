"""How receipts are rendered: options that are judged once, for any number of records."""

import functools
from collections.abc import Mapping as AnyMapping
from dataclasses import dataclass, field, fields
from datetime import timezone, tzinfo
from typing import Any, Dict, Iterable, List, Literal, Mapping, Optional, Tuple, Union
from zoneinfo import ZoneInfo

from . import _native
from ._receipts import Copy, Form, Layout, Receipt, listed, _number, _one_of
from ._values import Record, text_of

_SEVERITIES: Tuple[Literal["note"], Literal["warning"], Literal["error"]] = (
    "note",
    "warning",
    "error",
)
_LINE_BREAKS = {"\n": 0, "\r\n": 0, "\r": 0}
_PRINTED_KEYS = ("merch_name", "ordernum", "ptrannum")


@dataclass(frozen=True)
class Finding:
    """One thing that is wrong with a record."""

    severity: Literal["note", "warning", "error"]
    rule: str
    """The rule's name, such as "amount-unreadable"."""
    key: str
    """The key of the record; "" for the whole record or the options."""
    offset: Optional[int]
    """The place in characters inside the key's text; None for all of it."""
    message: str
    """What is wrong and what to do. It never shows a card number."""
    source: str
    """The document that asks for it; "" for a rule of the library."""
    date: str
    """When that document was read, as year and month."""

    def __str__(self) -> str:
        place = f"{self.key}: " if self.key else ""
        return f"{place}{self.message} ({self.rule})"


@dataclass(frozen=True)
class Renderer:
    """Renders records with the same options. Any number of threads may use it at once.

    form: "plain", "html", "xml" or "json", or a layout of the Moneris processor: "moneris" or
        "moneris-ecomm".
    width: characters of a line of plain text, 10 to 65535; the other forms have their own.
    language: of both copies: "en", "fr", "es", "de" or "it".
    merchant_language: of the merchant's copy, where it is another.
    country: ISO 3166-1, as a number or one of "US", "CA" and "GB"; the United States put the month
        first in dates.
    currency: ISO 4217, as a number or one of "USD", "CAD", "EUR" and "GBP"; all others are written
        with a dollar sign.
    industry: "retail", "mail", "ecomm", "restaurant", "lodging", "autofuel", "grocery", "selfserv"
        or "unknown", or several of them; there is no merchant copy with "autofuel" or "selfserv".
    time_zone: a name such as "America/Toronto" or a ZoneInfo; None is the system's own zone. Set it
        on a server.
    line_break: between the lines of a text: "\\n", "\\r\\n" or "\\r".
    raw: leave control characters in the values of text forms, which a printer or terminal obeys.

    Raises ValueError or TypeError for an option that is not one of these.
    """

    form: Form = "plain"
    width: int = 40
    language: str = "en"
    merchant_language: Optional[str] = None
    country: Union[int, str] = "US"
    currency: Union[int, str] = "USD"
    industry: Union[str, Iterable[str]] = "unknown"
    time_zone: Union[str, tzinfo, None] = None
    line_break: str = "\n"
    raw: bool = False
    _settings: "_native.Settings" = field(init=False, repr=False, compare=False)
    _layout: Layout = field(init=False, repr=False, compare=False)

    def __post_init__(self) -> None:
        _one_of("form", self.form, {name: 0 for name in _native.FORMS})
        _one_of("line_break", self.line_break, _LINE_BREAKS)
        industries = _names("industry", self.industry)
        object.__setattr__(self, "industry", industries)
        industry = functools.reduce(
            lambda bits, name: bits | _one_of("industry", name, _native.INDUSTRIES), industries, 0
        )
        language = _language("language", self.language)
        merchant_language = (
            language
            if self.merchant_language is None
            else _language("merchant_language", self.merchant_language)
        )
        width = _number("width", self.width, 10, 0xFFFF)
        form = _form_for(self.form, industry)
        own_width, _, is_text = _native.FORMS[form]
        settings = _native.settings(
            form,
            width,
            self.line_break,
            is_text and not self.raw,
            language,
            merchant_language,
            _code("country", self.country, _native.COUNTRIES),
            _code("currency", self.currency, _native.CURRENCIES),
            industry,
            _zone_name(self.time_zone),
        )
        line_break = self.line_break if is_text else "\n"
        object.__setattr__(self, "_settings", settings)
        object.__setattr__(self, "_layout", Layout(form, own_width or width, line_break, self.raw))

    def __reduce__(self) -> Tuple[Any, ...]:
        return Renderer, tuple(getattr(self, one.name) for one in fields(self) if one.init)

    def render(self, record: Record) -> Receipt:
        """The receipts of a record, which stays as it is."""
        values = _as_dict(record)
        customer, merchant = _native.render(values, self._settings, text_of)
        layout = self._layout
        printed = {key: values[key] for key in _PRINTED_KEYS if key in values}
        return Receipt(
            Copy("customer", customer, layout, printed), Copy("merchant", merchant, layout, printed)
        )

    def check(self, record: Record) -> List[Finding]:
        """What is wrong with a record that would be rendered so."""
        found = _native.check(_as_dict(record), self._settings, text_of)
        return [Finding(_SEVERITIES[one[0]], *one[1:]) for one in found]


_kept_renderer = functools.lru_cache(maxsize=64, typed=True)(Renderer)


def _renderer(*options: Any) -> Renderer:
    """One that was made before, where it can be."""
    try:
        return _kept_renderer(*options)
    except TypeError:  # a list of industries; or an option that is wrong
        return Renderer(*options)


def render(
    record: Record,
    form: Form = "plain",
    width: int = 40,
    language: str = "en",
    merchant_language: Optional[str] = None,
    country: Union[int, str] = "US",
    currency: Union[int, str] = "USD",
    industry: Union[str, Iterable[str]] = "unknown",
    time_zone: Union[str, tzinfo, None] = None,
    line_break: str = "\n",
    raw: bool = False,
) -> Receipt:
    """The customer's and the merchant's copy of a transaction's record.

    The options are those of Renderer. The record is a mapping of the keys in docs/record.md to
    texts or to values that have one:

    - int, bool: as they are; None: the key is not there
    - Decimal, float: amounts with two decimals; ValueError for one that has more
    - datetime: for "timestamp" with a time zone; for "rcpt_host_ts" as the clock shows it
    - list and dict: for "line_items", "moneris_rcpt_data" and "rcpt_custom"

    Raises TypeError for anything else and ValueError for a text that no record can hold. Both name
    the key.
    """
    return _renderer(
        form, width, language, merchant_language, country, currency, industry, time_zone,
        line_break, raw,
    ).render(record)  # fmt: skip


def check(
    record: Record,
    form: Form = "plain",
    language: str = "en",
    merchant_language: Optional[str] = None,
    country: Union[int, str] = "US",
    currency: Union[int, str] = "USD",
    industry: Union[str, Iterable[str]] = "unknown",
    time_zone: Union[str, tzinfo, None] = None,
) -> List[Finding]:
    """What is wrong with a record before it becomes a receipt: values that cannot be used,
    contradictions, card numbers, and what a receipt must show and would not.
    """
    return _renderer(
        form, 40, language, merchant_language, country, currency, industry, time_zone
    ).check(record)


def _kind(value: object) -> str:
    return type(value).__name__


def _as_dict(record: Record) -> Dict[str, object]:
    if type(record) is dict:
        return record
    if not isinstance(record, AnyMapping):
        raise TypeError(f"record: is of type {_kind(record)}, expected a mapping of keys to values")
    return dict(record)


def _names(option: str, value: Union[str, Iterable[str]]) -> Tuple[str, ...]:
    if isinstance(value, str):
        return tuple(name.strip().lower() for name in value.split(","))
    try:
        return tuple(value)
    except TypeError:
        raise TypeError(f"{option}: is of type {_kind(value)}, expected names") from None


def _language(option: str, value: str) -> int:
    return _one_of(option, value.lower() if isinstance(value, str) else value, _native.LANGUAGES)


def _form_for(form: Form, industry: int) -> Form:
    ecommerce = _native.FORMS[form][1]
    return ecommerce if ecommerce and industry & _native.INDUSTRIES["ecomm"] else form  # type: ignore[return-value]


def _code(option: str, value: Union[int, str], numbers: Mapping[str, int]) -> int:
    if isinstance(value, bool) or not isinstance(value, (int, str)):
        raise TypeError(f"{option}: is of type {_kind(value)}, expected a str or an int")
    code = numbers.get(value.upper(), 0) if isinstance(value, str) else value
    if isinstance(value, str) and value.isascii() and value.isdigit():
        code = int(value.lstrip("0")[:4] or "0")
    if not 1 <= code <= 999:
        raise ValueError(
            f"{option}: {value!r} is unknown, expected {listed(numbers)}, or a number from 1 to 999"
        )
    return code


def _zone_name(zone: Union[str, tzinfo, None]) -> Optional[str]:
    if zone is None:
        return None
    name = zone.key if isinstance(zone, ZoneInfo) else "UTC" if zone is timezone.utc else zone
    if not isinstance(name, (str, type(None))):
        raise TypeError(
            f"time_zone: is of type {_kind(zone)}, expected a ZoneInfo or the name of a zone"
        )
    if not name or "\0" in name:
        raise ValueError("time_zone: has no name, expected one such as America/Toronto")
    return name
