"""The examples that use the package."""

import importlib.util
import json
import subprocess
import sys
from datetime import datetime, timezone
from decimal import Decimal
from types import ModuleType

import pytest

import qelrcpt
from samples import SOURCE, named

EXAMPLES = SOURCE / "examples"


def loaded(name: str) -> ModuleType:
    spec = importlib.util.spec_from_file_location(name, EXAMPLES / f"{name}.py")
    assert spec is not None and spec.loader is not None
    module = importlib.util.module_from_spec(spec)
    spec.loader.exec_module(module)
    return module


def run(name: str, given: str = "") -> str:
    command = [sys.executable, "-B", str(EXAMPLES / name)]
    done = subprocess.run(command, input=given.encode(errors="surrogateescape"), stdout=subprocess.PIPE, check=True)
    return done.stdout.decode()


def test_receipt() -> None:
    printed = run("receipt.py").splitlines()
    for line in ("GESAMT:                   €18,40", "ZEIT:          14/03/26 16:41:07",
                 "EARL GREY (2)              €9,80", "Total: €18,40"):  # fmt: skip
        assert line in printed


def test_lines_answer_lines() -> None:
    sale = named("void.json").record
    deep = '{"line_items": ' + "[" * 100_000
    lines = [json.dumps(sale), '{"amount": }', '{"amount": 1.005}', '["sale"]', json.dumps(sale),
             deep, '{"custref": "\udcff"}', '{"amount": 1e1000000000000000000}',
             '{"amount":\r5}\r']  # fmt: skip
    answers = [json.loads(line) for line in run("receipt_lines.py", "\n".join(lines)).splitlines()]
    wanted = qelrcpt.render(sale, time_zone="America/Denver")
    assert answers[0] == answers[4] == {
        "customer": str(wanted.customer), "merchant": str(wanted.merchant)
    }  # fmt: skip
    faults = [list(answer) for answer in answers[1:4] + answers[5:8]]
    assert faults == [["error"]] * 6 and "'amount'" in answers[2]["error"]
    assert "$5.00" in answers[8]["customer"] and len(answers) == len(lines)


def test_frames_as_spark_hands_them_over() -> None:
    pd = pytest.importorskip("pandas")
    spark = loaded("spark_receipts")
    time = pd.Timestamp(datetime(2026, 3, 14, 15, 41, 7), tz="UTC")
    frames = [
        pd.DataFrame({
            "ttid": ["1", "2", "3"],
            "action": ["sale", "sale", "refund"],
            "amount": [Decimal("12.30"), None, Decimal("1.001")],
            "tax": [1.5, float("nan"), 0.25],
            "timestamp": [time, pd.NaT, time],
        }),
        pd.DataFrame({"ttid": ["4"], "amount": [7]}),
        pd.DataFrame({"ttid": [], "amount": []}),
    ]  # fmt: skip
    told = list(spark.receipts(iter(frames)))
    assert [list(frame.columns) for frame in told] == [spark.COLUMNS] * 3
    rows = [row for frame in told for row in frame.to_dict("records")]
    assert [row["ttid"] for row in rows] == ["1", "2", "3", "4"]
    record = {"ttid": "1", "action": "sale", "amount": "12.30", "tax": "1.50",
              "timestamp": datetime(2026, 3, 14, 15, 41, 7, tzinfo=timezone.utc)}  # fmt: skip
    wanted = qelrcpt.render(record, time_zone="America/Denver")
    assert rows[0] == {"ttid": "1", "customer": str(wanted.customer),
                       "merchant": str(wanted.merchant), "error": None}  # fmt: skip
    assert "TOTAL" not in rows[1]["customer"] and rows[1]["error"] is None
    assert rows[2]["customer"] is None and "'amount'" in rows[2]["error"]
    assert "$7.00" in rows[3]["customer"]


def test_the_first_example_of_the_documents() -> None:
    document = (SOURCE / "README.md").read_text(encoding="utf-8")
    code = document.split("```python\n")[1].split("```")[0]
    printed = subprocess.run([sys.executable, "-c", code], stdout=subprocess.PIPE, check=True)
    assert printed.stdout.decode() == (
        "SUBTOTAL:                         $12.34\nTOTAL:                            $12.34\n"
    )
