"""Options: what they do, and what is said of those that are not there."""

import dataclasses
import pickle
from datetime import timezone, timedelta
from typing import Any, Dict, Type
from zoneinfo import ZoneInfo

import pytest

import qelrcpt

SALE = {"action": "sale", "amount": "12.34", "code": "AUTH", "timestamp": "1773502867",
        "merch_name": "Tea"}  # fmt: skip


@pytest.mark.parametrize(
    "options, customer, merchant",
    [
        ({"language": "fr"}, "ACHAT", "ACHAT"),
        ({"language": "FR", "merchant_language": "de"}, "ACHAT", "KAUF"),
        ({"merchant_language": "it"}, "PURCHASE", "ACQUISTA"),
        ({"currency": "EUR"}, "€12,34", "€12,34"),
        ({"currency": 978}, "€12,34", "€12,34"),
        ({"language": "fr", "country": "CA", "currency": "cad"}, "12.34$", "12.34$"),
        ({"country": "USA", "time_zone": "UTC"}, "03/14/26", "03/14/26"),
        ({"country": "276", "time_zone": "UTC"}, "14/03/26", "14/03/26"),
        ({"country": "00840", "time_zone": "UTC"}, "03/14/26", "03/14/26"),
        ({"time_zone": "America/Toronto"}, "11:41:07", "11:41:07"),
        ({"time_zone": ZoneInfo("Asia/Tokyo")}, "00:41:07", "00:41:07"),
        ({"time_zone": timezone.utc}, "15:41:07", "15:41:07"),
        ({"industry": "selfserv"}, "12.34", ""),
        ({"industry": ["retail", "autofuel"]}, "12.34", ""),
        ({"industry": "retail, grocery"}, "12.34", "12.34"),
    ],
)
def test_options(options: Dict[str, Any], customer: str, merchant: str) -> None:
    for receipt in (qelrcpt.render(SALE, **options), qelrcpt.Renderer(**options).render(SALE)):
        assert customer in str(receipt.customer)
        assert merchant in str(receipt.merchant)
        assert bool(merchant) == bool(receipt.merchant)


def test_width_is_that_of_the_lines() -> None:
    for width in (10, 33, 65535):
        lines = str(qelrcpt.render(SALE, width=width)).split("\n")
        assert max(len(line) for line in lines) == width


def test_ecommerce_merchants_get_the_layout_for_them() -> None:
    receipt = qelrcpt.render(SALE, "moneris", industry=("retail", "ecomm"))
    assert receipt.customer == qelrcpt.render(SALE, "moneris-ecomm").customer
    divider = str(receipt)[len(str(receipt.customer)) :].split("\n")[2]
    assert len(divider) == 70 and set(divider) == {"-", " "}


REFUSED = [
    ({"form": "pdf"}, ValueError, "form: 'pdf' is unknown, expected plain, html, .* or moneris-ecomm"),
    ({"form": None}, TypeError, "form: .*NoneType"),
    ({"width": 9}, ValueError, "width: 9 .*10 to 65535"),
    ({"width": 65536}, ValueError, "width"),
    ({"width": 40.0}, TypeError, "width: .*float"),
    ({"width": True}, TypeError, "width: .*bool"),
    ({"language": "fr-CA"}, ValueError, "language: 'fr-ca' .*expected en, fr, es, de or it"),
    ({"language": None}, TypeError, "language: .*NoneType"),
    ({"merchant_language": "xx"}, ValueError, "merchant_language: 'xx'"),
    ({"country": "DE"}, ValueError, "country: 'DE' .*US, CA, GB.* 1 to 999"),
    ({"country": 0}, ValueError, "country: 0"),
    ({"country": "²"}, ValueError, "country"),
    ({"country": True}, TypeError, "country: .*bool"),
    ({"currency": "JPY"}, ValueError, "currency: 'JPY' .*USD, CAD, EUR or GBP"),
    ({"currency": 1000}, ValueError, "currency: 1000"),
    ({"currency": 9.78}, TypeError, "currency: .*float"),
    ({"industry": "shop"}, ValueError, "industry: 'shop'"),
    ({"industry": ["retail", 5]}, TypeError, "industry: .*int"),
    ({"industry": 5}, TypeError, "industry: .*int"),
    ({"time_zone": "America/Toront"}, ValueError, "time_zone: 'America/Toront' is unknown"),
    ({"time_zone": ""}, ValueError, "time_zone"),
    ({"time_zone": "UTC\0x"}, ValueError, "time_zone"),
    ({"time_zone": "../../etc/passwd"}, ValueError, "time_zone"),
    ({"time_zone": timezone(timedelta(hours=1))}, TypeError, "time_zone: .*timezone"),
    ({"time_zone": 5}, TypeError, "time_zone: .*int"),
    ({"line_break": "<br>"}, ValueError, r"line_break: '<br>' .*expected '\\n', '\\r\\n' or '\\r'"),
    ({"line_break": None}, TypeError, "line_break"),
]


@pytest.mark.parametrize("options, error, said", REFUSED)
def test_options_that_are_not_there(
    options: Dict[str, Any], error: Type[Exception], said: str
) -> None:
    with pytest.raises(error, match=said):
        qelrcpt.render(SALE, **options)
    with pytest.raises(error, match=said):
        qelrcpt.Renderer(**options)


def test_a_renderer_is_a_value() -> None:
    shop = qelrcpt.Renderer(width=32, language="fr", industry=["retail"], time_zone="UTC")
    assert shop == qelrcpt.Renderer(width=32, language="fr", industry="retail", time_zone="UTC")
    assert hash(shop) == hash(pickle.loads(pickle.dumps(shop)))
    narrow = dataclasses.replace(shop, width=20)
    assert len(str(narrow.render(SALE)).split("\n")[0]) <= 20
    assert str(pickle.loads(pickle.dumps(shop)).render(SALE)) == str(shop.render(SALE))
    assert "width=32" in repr(shop) and "capsule" not in repr(shop)
    with pytest.raises(dataclasses.FrozenInstanceError):
        shop.width = 40  # type: ignore[misc]
