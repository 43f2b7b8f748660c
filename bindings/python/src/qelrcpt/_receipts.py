"""Rendered receipts: plain values, which can be pickled and sent elsewhere."""

from dataclasses import dataclass
from typing import Dict, Iterator, List, Literal, Mapping, NamedTuple, Optional, Union

from . import _native
from ._values import text_of

Form = Literal["plain", "html", "xml", "json", "moneris", "moneris-ecomm"]


class Printed(bytes):
    """The bytes that print a copy."""

    replaced: int
    """Characters that the code page does not have: printed as their nearest, or as '?'."""
    has_barcode: bool
    """Whether the order number stands below the receipt as a barcode."""


class Layout(NamedTuple):
    """How the blocks of a receipt were made."""

    form: Form
    width: int
    line_break: str
    raw: bool


class Copy(Mapping[str, str]):
    """One copy of a receipt: its blocks by name, in the order of the receipt.

    A block with nothing to show is not there. A copy that the merchant does not get has no blocks
    and is false. `str()` gives the whole copy: texts and HTML with a blank line between blocks, XML
    as an element and JSON as an object of the copy's blocks.
    """

    __slots__ = ("_blocks", "_layout", "_name", "_record")

    def __init__(
        self, name: str, blocks: Dict[str, str], layout: Layout, record: Dict[str, object]
    ) -> None:
        self._name = name
        self._blocks = blocks
        self._layout = layout
        self._record = record  # what printers are told beside the blocks

    def __getitem__(self, block: str) -> str:
        return self._blocks[block]

    def __iter__(self) -> Iterator[str]:
        return iter(self._blocks)

    def __len__(self) -> int:
        return len(self._blocks)

    def __repr__(self) -> str:
        return f"<{self._layout.form} {self._name} copy: {', '.join(self._blocks) or 'no blocks'}>"

    def __str__(self) -> str:
        if not self._blocks:
            return ""
        if self._layout.form == "json":
            return self._json()
        text = (self._layout.line_break * 2).join(self._blocks.values())
        return f"<{self._name}>\n{text}\n</{self._name}>" if self._layout.form == "xml" else text

    def _json(self) -> str:
        members = (f'"{name}": {block}' for name, block in self._blocks.items())
        return "{\n" + ",\n".join(members) + "\n}"

    def print_bytes(
        self,
        *,
        language: Literal["escpos", "star"] = "escpos",
        paper: int = 48,
        columns: Optional[int] = None,
        code_page: str = "cp858",
        code_page_number: Optional[int] = None,
        emphasis: bool = True,
        cut: Literal["full", "partial", "none"] = "full",
        feed: int = 0,
        drawer: int = 0,
        logo: Union[int, str, None] = None,
        barcode: bool = False,
        qr: str = "",
        qr_level: Literal["L", "M", "Q", "H"] = "M",
        qr_module: int = 0,
    ) -> Printed:
        """The bytes that print this copy, of a plain or Moneris receipt, on a receipt printer.

        language: of the printer: "escpos" or "star" (StarPRNT).
        paper: characters of the printer's font A across the paper: 48 or 42 on 80 mm, 32 on 58 mm.
        columns: the receipt's width; otherwise that with which it was rendered.
        code_page: "cp437", "cp850", "cp852", "cp858", "cp860", "cp863", "cp865", "cp866", "cp1252"
            or "iso8859-15".
        code_page_number: the number that selects it, where it is not the maker's.
        emphasis: title, total, outcome and the merchant's name stand out.
        cut: "full", "partial" or "none".
        feed: lines behind the receipt.
        drawer: 1 or 2 opens that cash drawer; 0 none.
        logo: one that is stored in the printer, by its number (from 1) or its key of two characters.
        barcode: the order number as CODE128 below the receipt.
        qr: the text of a QR code below the receipt.
        qr_level: its error correction: "L", "M", "Q" or "H".
        qr_module: dots of a module; 0 for what fits.

        Raises ValueError for what cannot be printed: a copy without blocks, a form that is no text,
        a receipt that is wider than the paper, and options that do not exist.
        """
        width = self._layout.width if columns is None else columns
        printer = (
            _one_of("language", language, _native.PRINTER_LANGUAGES),
            _number("paper", paper, 1, 0xFFFF),
            _number("columns", width, 1, 0xFFFF),
            _one_of("code_page", code_page, _native.CODE_PAGES),
            code_page_number is not None,
            _number("code_page_number", code_page_number or 0, 0, 0xFF),
            emphasis,
            _one_of("cut", cut, _native.CUTS),
            _number("feed", feed, 0, 0xFF),
            _number("drawer", drawer, 0, 2),
            _number("logo", logo, 1, 0xFF) if isinstance(logo, int) else 0,
            logo if isinstance(logo, str) else "",
            barcode,
            qr,
            _one_of("qr_level", qr_level, _native.QR_LEVELS),
            _number("qr_module", qr_module, 0, 16),
        )
        text, replaced, has_barcode = _native.print_copy(
            self._blocks, self._record, text_of, self._name == "customer", not self._layout.raw,
            printer,
        )  # fmt: skip
        printed = Printed(text)
        printed.replaced = replaced
        printed.has_barcode = has_barcode
        return printed


@dataclass(frozen=True)
class Receipt:
    """What one transaction's record was rendered as. `str()` gives the whole document."""

    customer: Copy
    merchant: Copy

    def __str__(self) -> str:
        layout = self.customer._layout
        copies = [(copy._name, str(copy)) for copy in (self.customer, self.merchant) if copy]
        texts = [text for _, text in copies]
        if layout.form == "json":
            members = (f'"{name}": {text}' for name, text in copies)
            return "{\n" + ",\n".join(members) + "\n}"
        if layout.form == "xml":
            head = '<?xml version="1.0" encoding="UTF-8"?>'
            return "\n".join([head, "<receipt>", *texts, "</receipt>"])
        divider = '<hr class="rcpt_cut">' if layout.form == "html" else _cut_line(layout.width)
        line_break = layout.line_break
        return f"{line_break * 2}{divider}{line_break * 2}".join(texts)


def _cut_line(width: int) -> str:
    """As wide as the receipt and the same from both ends."""
    line = [" "] * width
    for at in range(0, (width + 1) // 2, 2):
        line[at] = line[width - 1 - at] = "-"
    return "".join(line)


def _one_of(option: str, value: str, numbers: Mapping[str, int]) -> int:
    if not isinstance(value, str):
        raise TypeError(f"{option}: is of type {type(value).__name__}, expected a str")
    if value not in numbers:
        raise ValueError(f"{option}: {value!r} is unknown, expected {listed(numbers)}")
    return numbers[value]


def _number(option: str, value: int, least: int, most: int) -> int:
    if isinstance(value, bool) or not isinstance(value, int):
        raise TypeError(f"{option}: is of type {type(value).__name__}, expected an int")
    if not least <= value <= most:
        raise ValueError(f"{option}: {value} is out of range, expected {least} to {most}")
    return value


def listed(names: Mapping[str, object]) -> str:
    """The names with commas between them and "or" before the last."""
    first: List[str] = [name if name.isprintable() else repr(name) for name in names]
    last = first.pop()
    return f"{', '.join(first)} or {last}" if first else last
