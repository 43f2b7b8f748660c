"""What a receipt costs in Python: receipts.py [SAMPLE.json [FORM]]

Prints the least time of both copies of the sample, from the record as json.loads gives it, and of the
parts of it. With --count N it renders N receipts and prints nothing, for Callgrind.
"""

import argparse
import json
import timeit
from pathlib import Path
from typing import Callable, Dict

import qelrcpt
from qelrcpt import _native
from qelrcpt._values import text_of

SAMPLE = Path(__file__).resolve().parents[3] / "examples" / "records" / "chip-credit-sale.json"


def microseconds(run: Callable[[], object], count: int = 200) -> float:
    return min(timeit.repeat(run, number=count, repeat=100)) / count * 1e6


def main() -> None:
    parser = argparse.ArgumentParser()
    parser.add_argument("sample", nargs="?", default=str(SAMPLE))
    parser.add_argument("form", nargs="?", default="plain")
    parser.add_argument("--count", type=int)
    arguments = parser.parse_args()
    record = json.loads(Path(arguments.sample).read_text(encoding="utf-8"))["record"]
    texts: Dict[str, object] = {key: text_of(key, value) for key, value in record.items()}

    renderer = qelrcpt.Renderer(arguments.form, time_zone="America/Denver")
    if arguments.count is not None:
        for _ in range(arguments.count):
            renderer.render(texts)
        return

    for what, run in (
        ("Renderer.render, all values texts", lambda: renderer.render(texts)),
        ("Renderer.render, numbers and line items as they are", lambda: renderer.render(record)),
        (
            "qelrcpt.render, all values texts",
            lambda: qelrcpt.render(texts, arguments.form, time_zone="America/Denver"),
        ),
        (
            "of which in the extension module",
            lambda: _native.render(texts, renderer._settings, text_of),
        ),
    ):
        print(f"{microseconds(run):6.1f} µs  {what}")


if __name__ == "__main__":
    main()
