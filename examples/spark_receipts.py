#!/usr/bin/env python3
"""Receipts of a table of transactions with Spark: spark_receipts.py INPUT.parquet OUTPUT.parquet

The columns are keys of the record. Those of amounts may be decimals; make strings of all others, for
pandas makes floats of whole numbers where one is missing. `receipts` needs no Spark: any iterator of
pandas frames will do.
"""

import sys
from datetime import datetime
from typing import Any, Dict, Iterator

import pandas as pd

import qelrcpt

RENDERER = qelrcpt.Renderer(country="US", currency="USD", time_zone="America/Denver")
COLUMNS = ["ttid", "customer", "merchant", "error"]
SCHEMA = ", ".join(f"{column} string" for column in COLUMNS)


def is_there(value: object) -> bool:
    """Missing values are None, or what pandas makes of it in columns of numbers and of times."""
    return value is not None and not (isinstance(value, (float, datetime)) and value != value)


def receipt_of(row: Dict[str, Any]) -> Dict[str, Any]:
    record = {key: value for key, value in row.items() if is_there(value)}
    told: Dict[str, Any] = dict.fromkeys(COLUMNS)
    told["ttid"] = record.get("ttid")
    try:
        receipt = RENDERER.render(record)
    except (TypeError, ValueError) as fault:
        return {**told, "error": str(fault)}
    return {**told, "customer": str(receipt.customer), "merchant": str(receipt.merchant)}


def receipts(frames: Iterator[pd.DataFrame]) -> Iterator[pd.DataFrame]:
    """A frame of receipts for each of records, a row for each, in order."""
    for frame in frames:
        rows = [receipt_of(row) for row in frame.to_dict("records")]
        yield pd.DataFrame(rows, columns=COLUMNS, dtype=object)


def main() -> None:
    from pyspark.sql import SparkSession

    source, target = sys.argv[1:]
    transactions = SparkSession.builder.getOrCreate().read.parquet(source)
    transactions.mapInPandas(receipts, SCHEMA).write.parquet(target)


if __name__ == "__main__":
    main()
