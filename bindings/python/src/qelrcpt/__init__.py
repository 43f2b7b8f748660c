"""Receipts of card transactions: a transaction's record in, the customer's and the merchant's copy
out.

>>> import qelrcpt
>>> sale = {"action": "sale", "amount": 12.34, "code": "AUTH"}
>>> print(qelrcpt.render(sale, width=24).customer["money"])
SUBTOTAL:         $12.34
TOTAL:            $12.34
"""

from ._native import VERSION as __version__
from ._receipts import Copy, Form, Printed, Receipt
from ._renderer import Finding, Renderer, check, render
from ._values import Record

__all__ = [
    "Copy",
    "Finding",
    "Form",
    "Printed",
    "Receipt",
    "Record",
    "Renderer",
    "__version__",
    "check",
    "render",
]
