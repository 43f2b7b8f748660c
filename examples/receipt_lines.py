#!/usr/bin/env python3
"""Receipts of JSON records, a line each: receipt_lines.py < archive.jsonl > receipts.jsonl

A line out for each line in, at once and in order: the receipt's copies, or what is wrong with the line.
"""

import json
import sys
from decimal import Decimal
from typing import Dict

import qelrcpt

RENDERER = qelrcpt.Renderer(country="US", currency="USD", time_zone="America/Denver")


def answer_to(line: str) -> Dict[str, str]:
    try:
        receipt = RENDERER.render(json.loads(line, parse_float=Decimal))
    except (TypeError, ValueError, RecursionError) as fault:
        return {"error": str(fault)}
    except ArithmeticError:
        return {"error": "a number's exponent is too large"}
    return {"customer": str(receipt.customer), "merchant": str(receipt.merchant)}


def main() -> None:
    for line in open(sys.stdin.fileno(), encoding="utf-8", errors="surrogateescape", newline="\n"):
        print(json.dumps(answer_to(line)), flush=True)


if __name__ == "__main__":
    main()
