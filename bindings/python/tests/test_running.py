"""Threads and memory."""

import os
import sys
import threading
import time
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path
from typing import Any, Dict, List

import pytest

import qelrcpt
from samples import SAMPLES, named, samples_in_forms

RECEIPTS = int(os.environ.get("QELRCPT_RECEIPTS", "20000"))  # a million by hand


def test_threads_render_the_same() -> None:
    wanted = {(sample.name, form): str(sample.render(form)) for sample, form in samples_in_forms()}

    def differences(_: int) -> List[str]:
        return [
            sample.name
            for sample, form in samples_in_forms()
            if str(sample.render(form)) != wanted[sample.name, form]
        ]

    with ThreadPoolExecutor(8) as pool:
        assert [found for found in pool.map(differences, range(32)) if found] == []


def ticks_while_rendering(record: Dict[str, Any]) -> int:
    """How often this thread ran while the library rendered in another, its beginning and end left
    out, in which texts are handed over."""
    span: List[float] = []

    def render() -> None:
        span.append(time.perf_counter())
        qelrcpt.render(record, "html")
        span.append(time.perf_counter())

    other = threading.Thread(target=render)
    ticks: List[float] = []
    other.start()
    while other.is_alive():
        ticks.append(time.perf_counter())
        time.sleep(0)
    begin, end = span
    quarter = (end - begin) / 4
    return sum(1 for tick in ticks if begin + quarter < tick < end - quarter)


def test_others_run_while_one_renders() -> None:
    # Nothing is shown of items without a name, so the call takes long and hands over little.
    record = {"line_items": '[{"price": "1"}' + ',{"price": "1"}' * 300_000 + "]"}
    assert any(ticks_while_rendering(record) > 10 for _ in range(5))


class Text(str):
    """A text of which references can be counted: there is one of each."""


def test_references_are_given_back() -> None:
    good = Text("good"), Text("custref"), Text("bad\0"), object()
    records: List[Dict[str, Any]] = [
        {good[1]: good[0], "amount": 5, "tax": None},
        {good[1]: good[2], good[0]: good[0]},
        {"action": good[0], good[1]: good[3]},
        {"action": good[0], good[3]: good[0]},  # type: ignore[dict-item]
    ]
    renderer = qelrcpt.Renderer()
    counted = (*good, renderer, renderer._settings, *records, None)

    def run() -> None:
        for record in records:
            for take in (renderer.render, renderer.check):
                try:
                    result: Any = take(record)
                    str(result)
                except (TypeError, ValueError):
                    pass

    run()
    before = [sys.getrefcount(one) for one in counted]
    for _ in range(100):
        run()
    after = [sys.getrefcount(one) for one in counted]
    assert all(abs(now - then) < 50 for now, then in zip(after, before)), (before, after)


def resident() -> int:
    """Bytes of memory in use."""
    pages = int(Path("/proc/self/statm").read_text().split()[1])
    return pages * os.sysconf("SC_PAGE_SIZE")


@pytest.mark.skipif(not Path("/proc/self/statm").exists(), reason="no /proc")
def test_memory_stays_the_same() -> None:
    """Over receipts of which half fail, after their values were taken, and printing."""
    samples = [named("chip-credit-sale.json"), named("euro-sale-german.json")]
    failing = {**samples[0].record, "rcpt_user_notes": "bad\0", "z": object()}
    forms: List[qelrcpt.Form] = ["plain", "html", "json"]
    renderers = [qelrcpt.Renderer(form, time_zone="UTC") for form in forms]

    def run(count: int) -> None:
        for at in range(count):
            renderer = renderers[at // 2 % len(renderers)]
            if at % 2 == 1:
                with pytest.raises((TypeError, ValueError)):
                    renderer.render(failing)
                continue
            receipt = renderer.render(samples[at // 2 % 2].record)
            if at % 10 == 0 and renderer.form == "plain":
                receipt.merchant.print_bytes(barcode=True)
                renderer.check(samples[0].record)

    run(2000)
    before = resident()
    run(RECEIPTS)
    grown = resident() - before
    print(f"\n{RECEIPTS} receipts: {grown} bytes more")
    # A leak of a receipt's smallest text would be 50 bytes.
    assert grown < max(1 << 20, RECEIPTS * 10)
