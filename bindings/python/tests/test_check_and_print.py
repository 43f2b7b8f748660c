"""Findings and printer bytes, against the command, which has them from the same library."""

import dataclasses
import json
import os
import subprocess
import time
from typing import Any, Dict, List

import pytest

import qelrcpt
from samples import RECORDS, SAMPLES, Sample, forms_of, named

COMMAND = os.environ.get("QELRCPT_COMMAND")
needs_command = pytest.mark.skipif(COMMAND is None, reason="QELRCPT_COMMAND is not set")
SALE = named("chip-credit-sale.json")


def run(*arguments: str) -> bytes:
    assert COMMAND is not None
    return subprocess.run([COMMAND, *arguments], stdout=subprocess.PIPE, check=False).stdout


@needs_command
@pytest.mark.parametrize("sample", SAMPLES, ids=lambda sample: str(sample.name))
def test_findings_are_those_of_the_command(sample: Sample) -> None:
    form = forms_of(sample)[0]
    path = str(RECORDS / sample.name)
    told = json.loads(run("--check", "--output", "json", "--form", form, path))
    wanted = sorted((one["rule"], one["severity"], one["message"]) for one in told)
    found = qelrcpt.check(sample.record, form, **sample.options)
    assert sorted((one.rule, one.severity, one.message) for one in found) == wanted


def test_places_of_many_findings_are_found_in_proportion_to_the_text() -> None:
    text = "[" + ",".join(['{"name":"","é😀":""}'] * 100_000) + "]"
    begins = {"member-unknown": '"é😀"', "entry-without-name": '{"name"'}
    before = time.process_time()
    found = [one for one in qelrcpt.check({"line_items": text}) if one.rule in begins]
    assert time.process_time() - before < 10
    assert len(found) == 200_000
    assert all(text.startswith(begins[one.rule], one.offset) for one in found)


def test_findings() -> None:
    record = {"action": "sale", "amount": "€5", "custref": "né 4000 1234 5678 9017"}
    by_rule = {one.rule: one for one in qelrcpt.check(record)}
    unreadable = by_rule["amount-unreadable"]
    assert (unreadable.severity, unreadable.key) == ("error", "amount")
    assert str(unreadable).startswith("amount: ") and "amount-unreadable" in str(unreadable)
    number = by_rule["card-number"]
    assert number.offset == 3 and "4000 1234" not in number.message
    with pytest.raises(dataclasses.FrozenInstanceError):
        number.key = ""  # type: ignore[misc]
    assert "amount-unreadable" not in {one.rule for one in qelrcpt.check({"amount": 5.0})}


@needs_command
@pytest.mark.parametrize(
    "arguments, options",
    [
        ([], {}),
        (["--output", "star"], {"language": "star"}),
        (["--paper", "42", "--width", "42", "--code-page", "cp1252"],
         {"paper": 42, "code_page": "cp1252"}),
        (["--code-page-number", "99"], {"code_page_number": 99}),
        (["--no-emphasis", "--cut", "none", "--feed", "7"],
         {"emphasis": False, "cut": "none", "feed": 7}),
        (["--other-drawer", "--logo", "3"], {"drawer": 2, "logo": 3}),
        (["--logo", "key:AB", "--barcode"], {"logo": "AB", "barcode": True}),
        (["--qr", "https://r.example/8", "--cut", "partial"],
         {"qr": "https://r.example/8", "cut": "partial"}),
    ],
)  # fmt: skip
def test_bytes_are_those_of_the_command(arguments: List[str], options: Dict[str, Any]) -> None:
    output = [] if "--output" in arguments else ["--output", "escpos"]
    width = 42 if "--width" in arguments else 40
    for sample in (SALE, named("euro-sale-german.json"), named("moneris-refund.json")):
        form = forms_of(sample)[0]
        if form == "moneris" and "--width" in arguments:
            continue
        path = str(RECORDS / sample.name)
        wanted = run(*output, *arguments, "--form", form, "--copy", "merchant", path)
        assert wanted and sample.render(form, width=width).merchant.print_bytes(**options) == wanted


def test_what_was_printed_is_told() -> None:
    record = {"merch_name": "Τέα", "amount": "5", "ordernum": "A-1047"}
    printed = qelrcpt.render(record).customer.print_bytes(barcode=True)
    assert printed.has_barcode and printed.replaced == 3 and printed.count(b"{BA-1047") == 1
    assert not qelrcpt.render({"amount": "5"}).customer.print_bytes(barcode=True).has_barcode


@pytest.mark.parametrize(
    "form, options, said",
    [
        ("html", {}, "markup"),
        ("plain", {"paper": 20}, "wider than the paper"),
        ("plain", {"logo": "A"}, "key is not two"),
        ("plain", {"logo": 0}, "logo: 0"),
        ("plain", {"qr": "x" * 8000}, "QR"),
        ("plain", {"language": "pcl"}, "language: 'pcl' is unknown, expected escpos or star"),
        ("plain", {"language": "star", "code_page": "cp850"}, "no such code page"),
        ("plain", {"code_page": "cp1"}, "code_page: 'cp1'"),
        ("plain", {"cut": "half"}, "cut"),
        ("plain", {"feed": 256}, "feed: 256 .*0 to 255"),
        ("plain", {"drawer": 3}, "drawer"),
        ("plain", {"qr_level": "X"}, "qr_level"),
        ("plain", {"paper": 70000}, "paper"),
    ],
)
def test_what_cannot_be_printed(form: qelrcpt.Form, options: Dict[str, Any], said: str) -> None:
    copy = SALE.render(form).customer
    with pytest.raises(ValueError, match=said):
        copy.print_bytes(**options)


def test_a_copy_that_the_merchant_does_not_get_is_not_printed() -> None:
    copy = qelrcpt.render({"amount": "5"}, industry="autofuel").merchant
    with pytest.raises(ValueError, match="no such copy"):
        copy.print_bytes()
