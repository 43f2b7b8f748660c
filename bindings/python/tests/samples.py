"""The sample records and the receipts that were read and approved for them."""

import json
from decimal import Decimal
from pathlib import Path
from typing import Any, Dict, Iterator, List, NamedTuple, Tuple

import qelrcpt

SOURCE = Path(__file__).resolve().parents[3]
RECORDS = SOURCE / "examples" / "records"
RECEIPTS = SOURCE / "tests" / "receipts"
GENERAL_FORMS: Tuple[qelrcpt.Form, ...] = ("plain", "html", "xml", "json")


class Sample(NamedTuple):
    name: str
    record: Dict[str, Any]
    options: Dict[str, Any]

    def render(self, form: qelrcpt.Form, **options: Any) -> qelrcpt.Receipt:
        return qelrcpt.render(self.record, form, **self.options, **options)


def _options(config: Dict[str, Any]) -> Dict[str, Any]:
    both = config.get("lang", "en")
    options = {
        "language": config.get("customer_lang", both),
        "merchant_language": config.get("merchant_lang", both),
        "time_zone": config.get("timezone"),
    }
    options.update((name, config[name]) for name in ("country", "currency", "industry")
                   if name in config)  # fmt: skip
    return options


def read(path: Path) -> Sample:
    """Numbers and documents stay what they are in JSON: the package makes texts of them."""
    text = path.read_text(encoding="utf-8")
    if path.suffix == ".json":
        content = json.loads(text, parse_float=Decimal)
        if "record" not in content:
            content = {"record": content}
        return Sample(path.name, content["record"], _options(content.get("config", {})))
    lines = (line.split("=", 1) for line in text.splitlines() if line and line[0] != "#")
    return Sample(path.name, {key.strip(): value for key, value in lines}, {})


def named(name: str) -> Sample:
    return read(RECORDS / name)


SAMPLES: List[Sample] = [read(path) for path in sorted(RECORDS.iterdir())]


def forms_of(sample: Sample) -> Tuple[qelrcpt.Form, ...]:
    return ("moneris",) if sample.name.startswith("moneris") else GENERAL_FORMS


def samples_in_forms() -> Iterator[Tuple[Sample, qelrcpt.Form]]:
    for sample in SAMPLES:
        for form in forms_of(sample):
            yield sample, form
