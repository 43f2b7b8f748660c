#!/usr/bin/env python3
"""ffi_test.py BUILD LANGUAGE FOLDER; ffi_test.py --document

The program of a language's foreign functions (examples/ffi), compiled against the library as it is
installed, prints what the command prints. FOLDER is for what is installed and compiled. Exit status
77: the language is not installed. With --document docs/integration.md quotes the programs as they
are."""

import json
import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
SOURCES = ROOT / "examples" / "ffi"

SALE = {
    "merch_name": "Schwanenfeder Tee",
    "action": "sale",
    "cardtype": "VISA",
    "account": "XXXXXXXXXXXX7788",
    "timestamp": "1773502867",
    "amount": "18.40",
    "code": "AUTH",
}
OPTIONS = (
    "--quiet --customer-lang de --country 276 --currency EUR --timezone Europe/Berlin "
    "--industry retail --width 32 --copy customer"
)

# Language: its program, what compiles that and what runs it; the first word has to be installed.
LANGUAGES = {
    "java": (
        "Receipt.java",
        "javac --release 22 -Xlint:all,-options,-restricted -Werror -d {folder} {source}",
        "java --enable-native-access=ALL-UNNAMED -cp {folder} Receipt",
    ),
    "csharp": (
        "Receipt.cs",
        "mcs -warnaserror -out:{folder}/receipt.exe {folder}/Receipt.cs",
        "mono {folder}/receipt.exe",
    ),
    "go": ("receipt.go", "go build -o {folder}/receipt {source}", "{folder}/receipt"),
    "rust": (
        "receipt.rs",
        "rustc -Dwarnings -L {prefix}/lib -o {folder}/receipt_rs {source}",
        "{folder}/receipt_rs",
    ),
}


def skip(message):
    print(message)
    sys.exit(77)


def as_dll_import(text):
    """For Mono, which has no LibraryImport: the same declarations as DllImport."""
    text = re.sub(r",\s+StringMarshalling = StringMarshalling.Utf8\)", ")", text)
    text = text.replace("[LibraryImport(", "[DllImport(").replace("partial class", "class")
    declarations = re.compile(r"static partial (\w+ \w+\([^)]*\);)")
    utf8 = "[MarshalAs(UnmanagedType.LPUTF8Str)] string "
    return declarations.sub(lambda m: "static extern " + m[1].replace("string ", utf8), text)


def test_document():
    document = (ROOT / "docs" / "integration.md").read_text()
    for tag, (program, _, _) in zip(("java", "csharp", "go", "rust"), LANGUAGES.values()):
        quotes = re.findall(rf"^```{tag}\n(.*?)^```$", document, re.DOTALL | re.MULTILINE)
        assert quotes, f"{program} is not quoted"
        for quote in quotes:
            assert quote in (SOURCES / program).read_text(), f"{program} has not:\n{quote}"


def main():
    if sys.argv[1] == "--document":
        test_document()
        return
    build, language, folder = sys.argv[1:4]
    program, compiling, running = LANGUAGES[language]
    compiler = compiling.split()[0]
    if not shutil.which(compiler):
        skip(f"{language} is not installed (scripts/setup --languages): not tried")
    if language == "java":
        version = subprocess.check_output(["javac", "-version"], text=True)
        if int(re.search(r"\d+", version)[0]) < 22:
            skip(f"{version.strip()} is older than 22: not tried; scripts/ffi-java brings its own")

    folder = Path(folder).resolve() / language
    prefix = folder / "prefix"
    shutil.rmtree(prefix, ignore_errors=True)
    install = ["cmake", "--install", build, "--prefix", prefix]
    subprocess.run(install, check=True, stdout=subprocess.DEVNULL)
    if language == "csharp":
        (folder / program).write_text(as_dll_import((SOURCES / program).read_text()))
    places = {"folder": folder, "prefix": prefix, "source": SOURCES / program}
    compiling, running = (
        [word.format(**places) for word in text.split()] for text in (compiling, running)
    )
    os.environ["PKG_CONFIG_PATH"] = f"{prefix}/lib/pkgconfig"
    os.environ["LD_LIBRARY_PATH"] = f"{prefix}/lib"
    os.environ["LC_ALL"] = "C"  # what is UTF-8 is that everywhere
    subprocess.run(compiling, check=True)

    command = [f"{prefix}/bin/qelrcpt", *OPTIONS.split()]
    expected = subprocess.check_output(command, input=json.dumps(SALE).encode()).rstrip(b"\n")
    assert "GESAMT:                   €18,40" in expected.decode()
    assert (shown := subprocess.check_output(running).rstrip(b"\n")) == expected, shown.decode()


if __name__ == "__main__":
    main()
