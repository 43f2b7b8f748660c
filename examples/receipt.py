#!/usr/bin/env python3
"""The receipts of a sale with the package qelrcpt: bindings/python tells how to install it."""

import dataclasses
import json
from datetime import datetime, timezone
from decimal import Decimal
from zoneinfo import ZoneInfo

import qelrcpt

SALE = {
    "merch_name": "Schwanenfeder Tee",
    "merch_addr1": "Lindengasse 4",
    "merch_phone": "030 5550 0142",
    "action": "sale",
    "cardtype": "VISA",
    "u_cardclass": "debit",
    "account": "XXXXXXXXXXXX7788",  # masked: what stands here is printed
    "timestamp": datetime(2026, 3, 14, 15, 41, 7, tzinfo=timezone.utc),
    "amount": Decimal("18.40"),
    "tax": Decimal("2.94"),
    "code": "AUTH",
    "auth": "083261",
    "line_items": [
        {"name": "Earl Grey", "qty": 2, "price": Decimal("9.80")},
        {"name": "Scones", "qty": 1, "price": Decimal("5.66")},
    ],
}

SHOP = qelrcpt.Renderer(
    width=32,
    language="de",
    country=276,
    currency="EUR",
    time_zone=ZoneInfo("Europe/Berlin"),
)


def main() -> None:
    for finding in SHOP.check(SALE):
        if finding.severity == "error":
            raise SystemExit(str(finding))

    print(SHOP.render(SALE).customer)

    data = dataclasses.replace(SHOP, form="json").render(SALE).customer
    print("\nTotal:", json.loads(data["money"])["totalamount"])


if __name__ == "__main__":
    main()
