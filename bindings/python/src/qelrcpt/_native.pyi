from typing import Callable, Dict, List, Optional, Tuple

VERSION: str
# Width (0: any), the form that e-commerce merchants get or "", and whether it is text.
FORMS: Dict[str, Tuple[int, str, bool]]
LANGUAGES: Dict[str, int]
COUNTRIES: Dict[str, int]
CURRENCIES: Dict[str, int]
INDUSTRIES: Dict[str, int]
PRINTER_LANGUAGES: Dict[str, int]
CODE_PAGES: Dict[str, int]
CUTS: Dict[str, int]
QR_LEVELS: Dict[str, int]

class Settings: ...  # for the type checker alone

_TextOf = Callable[[str, object], Optional[str]]

def settings(
    form: str,
    width: int,
    line_break: str,
    strips_control: bool,
    customer_language: int,
    merchant_language: int,
    country: int,
    currency: int,
    industry: int,
    time_zone: Optional[str],
) -> Settings: ...
def render(
    record: Dict[str, object], settings: Settings, text_of: _TextOf
) -> Tuple[Dict[str, str], Dict[str, str]]: ...
def check(
    record: Dict[str, object], settings: Settings, text_of: _TextOf
) -> List[Tuple[int, str, str, Optional[int], str, str, str]]: ...
def print_copy(
    blocks: Dict[str, str],
    record: Dict[str, object],
    text_of: _TextOf,
    is_customer: bool,
    strips_control: bool,
    # language, paper columns, columns, code page, whether it has a number, that number, emphasis,
    # cut, feed, drawer, logo's number and key, barcode, QR text, level and module
    printer: Tuple[
        int, int, int, int, bool, int, bool, int, int, int, int, str, bool, str, int, int
    ],
) -> Tuple[bytes, int, bool]: ...
