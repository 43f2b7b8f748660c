"""What is rendered, and how it is handed over."""

import copy
import json
import pickle
import xml.etree.ElementTree as ElementTree
from collections import ChainMap, OrderedDict
from types import MappingProxyType
from typing import Any, Callable, List, Mapping, Tuple

import pytest

import qelrcpt
from samples import RECEIPTS, Sample, named, samples_in_forms

SALE = named("chip-credit-sale.json")


@pytest.mark.parametrize(
    "sample, form", samples_in_forms(), ids=lambda part: str(getattr(part, "name", part))
)
def test_samples_read_as_approved(sample: Sample, form: qelrcpt.Form) -> None:
    approved = (RECEIPTS / form / f"{sample.name}.txt").read_bytes().decode()
    before = copy.deepcopy(sample.record)
    assert str(sample.render(form)) + "\n" == approved
    assert sample.record == before


def test_a_copy_is_a_mapping_in_the_order_of_the_receipt() -> None:
    receipt = SALE.render("plain")
    assert list(receipt.merchant)[:3] == ["merch_info", "reference", "items"]
    assert receipt.customer["merch_info"] in str(receipt.customer)
    assert "signature" not in receipt.customer
    assert receipt.customer.get("signature", "none") == "none"
    assert str(receipt.customer) == "\n\n".join(receipt.customer.values())
    with pytest.raises(KeyError):
        receipt.customer["signature"]
    with pytest.raises(TypeError):
        receipt.customer["money"] = ""  # type: ignore[index]


def test_copies_of_data_are_data() -> None:
    as_json = SALE.render("json")
    assert json.loads(str(as_json))["merchant"] == json.loads(str(as_json.merchant))
    assert json.loads(str(as_json.customer))["money"] == json.loads(as_json.customer["money"])
    as_xml = SALE.render("xml")
    assert [child.tag for child in ElementTree.fromstring(str(as_xml))] == ["customer", "merchant"]
    assert [child.tag for child in ElementTree.fromstring(str(as_xml.merchant))] == list(
        as_xml.merchant
    )


@pytest.mark.parametrize("form", ["plain", "html", "xml", "json"])
def test_without_merchant_copy(form: qelrcpt.Form) -> None:
    receipt = qelrcpt.render(SALE.record, form, industry="autofuel")
    assert not receipt.merchant and str(receipt.merchant) == "" and len(receipt.merchant) == 0
    assert str(receipt.customer).strip() in str(receipt)


@pytest.mark.parametrize("form", ["plain", "json"])
def test_receipts_can_be_sent_elsewhere(form: qelrcpt.Form) -> None:
    receipt = SALE.render(form)
    for sent in (pickle.loads(pickle.dumps(receipt)), copy.deepcopy(receipt)):
        assert sent == receipt and str(sent) == str(receipt)
        if form == "plain":
            assert sent.customer.print_bytes() == receipt.customer.print_bytes()


@pytest.mark.parametrize(
    "kind", [OrderedDict, MappingProxyType, lambda record: ChainMap({}, record)]
)
def test_any_mapping_is_a_record(kind: Any) -> None:
    record: Mapping[str, Any] = kind(SALE.record)
    assert qelrcpt.render(record, **SALE.options) == SALE.render("plain")


@pytest.mark.parametrize("record", [None, "action=sale", [("action", "sale")], 5])
def test_what_is_no_mapping_is_refused(record: Any) -> None:
    takers: List[Callable[[Any], object]] = [
        qelrcpt.render, qelrcpt.check, qelrcpt.Renderer().render
    ]  # fmt: skip
    for take in takers:
        with pytest.raises(TypeError, match="record: .*expected a mapping"):
            take(record)


def test_line_breaks_are_those_asked_for() -> None:
    forms: Tuple[qelrcpt.Form, ...] = ("plain", "moneris")
    for form in forms:
        sample = named("moneris-refund.json")
        lines = str(sample.render(form)).split("\n")
        assert not any("\r" in line for line in lines)
        broken = sample.render(form, line_break="\r\n")
        assert str(broken).split("\r\n") == lines
        assert "\r\n" in broken.customer["merch_info"]
        assert broken.customer.print_bytes() == sample.render(form).customer.print_bytes()


def test_printers_are_not_obeyed_by_values_unless_raw() -> None:
    record = {"action": "sale", "amount": "5", "custref": "A\x1bB\nC"}
    forms: Tuple[qelrcpt.Form, ...] = ("plain", "moneris-ecomm")
    for form in forms:
        text = str(qelrcpt.render(record, form))
        assert "\x1b" not in text and "A?B C" in text
    assert "A\x1bB" in str(qelrcpt.render(record, raw=True))
