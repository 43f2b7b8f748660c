#!/usr/bin/env python3
"""coprocess_test.py COMMAND LANGUAGE FOLDER [--bench COUNT]; coprocess_test.py COMMAND --document

The client for a language (examples/coprocess) beside the command that stays open: good and bad
records, a command that dies, one that cannot be started. With --bench the time of a round trip
instead. FOLDER is for what compilers write. Exit status 77: the language is not installed.
With --document the command answers as docs/coprocess.md shows."""

import json
import os
import re
import resource
import select
import shutil
import signal
import statistics
import subprocess
import sys
import threading
import time
from itertools import filterfalse
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
SOURCES = ROOT / "examples" / "coprocess"
SECONDS = 60  # more than any answer takes
LONGEST_CLIENT = 55  # lines of code
OPTIONS = ["--batch", "--jobs", "1", "--quiet", "--copy", "customer"]

SALE = {
    "record": {"amount": 5, "merch_name": "Zoë's 茶 £", "timestamp": 1},
    "config": {"currency": "GBP"},
}
UNKNOWN_LANGUAGE = {"config": {"lang": "tlh"}, "record": {"amount": 5}}

# Language: its client, what builds it and what runs it; the first word has to be installed.
LANGUAGES = {
    "java": (
        "java/Receipts.java",
        "javac -Xlint:all -Werror -d {folder} Receipts.java Main.java",
        "java -cp {folder} Main",
    ),
    "go": ("go/receipts.go", "go build -o {folder}/receipts .", "{folder}/receipts"),
    "csharp": (
        "csharp/Receipts.cs",
        "mcs -warnaserror -out:{folder}/receipts.exe Receipts.cs Main.cs",
        "mono {folder}/receipts.exe",
    ),
    "php": ("php/receipts.php", "php -l receipts.php", "php {sources}/main.php"),
    "node": ("node/receipts.mjs", "node --check receipts.mjs", "node {sources}/main.mjs"),
}


class Client:
    """The program around a client, which answers the lines that it is given."""

    def __init__(self, run, command):
        self.process = subprocess.Popen(
            [*run, *command],
            stdin=subprocess.PIPE,
            stdout=subprocess.PIPE,
            env=os.environ | {"LC_ALL": "C"},  # what is UTF-8 is that everywhere
        )
        self.text = b""

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.kill()
        self.process.wait()

    def send(self, line):
        self.process.stdin.write(line.encode() + b"\n")
        self.process.stdin.flush()

    def answer(self):
        deadline = time.monotonic() + SECONDS
        while b"\n" not in self.text:
            ready, _, _ = select.select([self.process.stdout], [], [], deadline - time.monotonic())
            assert ready, "no answer"
            part = os.read(self.process.stdout.fileno(), 1 << 16)
            assert part, f"the client has ended after {self.text!r}"
            self.text += part
        line, _, self.text = self.text.partition(b"\n")
        return line.decode()

    def ask(self, record):
        self.send(json.dumps(record, ensure_ascii=False))
        return self.answer()

    def command(self):
        """The process of the command that it has started, beside dead ones it may still wait for."""
        tasks = Path(f"/proc/{self.process.pid}/task").iterdir()
        children = {pid for task in tasks for pid in (task / "children").read_text().split()}
        [child] = filterfalse(is_dead, children)
        return int(child)

    def end(self):
        self.process.stdin.close()
        assert self.process.wait(SECONDS) == 0


def is_gone(pid):
    return not Path(f"/proc/{pid}").exists()


def is_dead(pid):
    """Also when its parent has not waited for it yet."""
    try:
        return ") Z " in Path(f"/proc/{pid}/stat").read_text()
    except OSError:
        return True


def comes_to_be(state, pid):
    deadline = time.monotonic() + SECONDS
    while not state(pid) and time.monotonic() < deadline:
        time.sleep(0.01)
    return state(pid)


def has_ended(pid):
    return comes_to_be(is_dead, pid)


def text_of(answer):
    assert not answer.startswith("fault: "), answer
    return "\n".join(json.loads(answer)["blocks"].values())


def test_answers(run, command):
    with Client(run, [command, *OPTIONS]) as client:
        for line in ("\ufeff", " \t"):  # which the command would not answer
            client.send(line)
            assert client.answer().startswith("fault: ")
        first = text_of(client.ask(SALE))
        assert "ZOË'S 茶 £" in first and " £5.00" in first, first
        error = client.ask(UNKNOWN_LANGUAGE)
        assert re.match("fault: .*'tlh' is unknown", error), error
        error = client.ask({"a\u2028": {}})  # a line end to some, which the message quotes
        assert re.match("fault: .*'a\u2028' is an object", error), error
        long_note = "é" * 200_000  # more than a pipe holds
        assert text_of(client.ask({"order_notes": long_note})).count("É") == len(long_note)
        assert text_of(client.ask(SALE)) == first

        before = client.command()
        os.kill(before, signal.SIGKILL)
        assert text_of(client.ask(SALE)) == first
        after = client.command()
        assert after != before
        os.kill(after, signal.SIGTERM)
        assert has_ended(after)
        assert text_of(client.ask(SALE)) == first
        assert comes_to_be(is_gone, after), "the dead command is not waited for"

        last = client.command()
        client.end()
        assert has_ended(last), "the command outlives the client"


def test_deaths(run, folder):
    """A command that dies within its answer or answers another line, once or each time, and one that
    is not there."""
    answer = '{"line": 1, "blocks": {"a": {"b": "1"}}}'
    starts, faulty = folder / "starts", folder / "faulty"
    stays = "exec sleep 20"
    for fault in (f"printf %s '{answer[:-1]}'", f"echo '{answer.replace('1', '2')}'; {stays}"):
        for faults, shows in ((1, '"b":"1"'), (2, "fault:")):
            starts.write_text("")
            faulty.write_text(
                "#!/bin/sh\n"
                f"echo $$ >>{starts}\n"
                "read -r line\n"
                f"[ $(wc -l <{starts}) -gt {faults} ] || {{ {fault}; exit 1; }}\n"
                f"echo '{answer}'\n"
                f"{stays if 'node' not in run else ''}\n"  # whose close waits for the command
            )
            faulty.chmod(0o755)
            with Client(run, [str(faulty)]) as client:
                assert shows in (shown := client.ask(SALE).replace(" ", "")), shown
                client.end()
                started = starts.read_text().split()
                assert len(started) == 2 and all(map(has_ended, started)), started
    with Client(run, [str(folder / "missing")]) as client:
        assert (shown := client.ask(SALE)).startswith("fault: "), shown
        client.end()


def run_node(command, script):
    head = f"""
import {{ Receipts }} from "{SOURCES}/node/receipts.mjs";
import {{ closeSync, openSync, readFileSync }} from "node:fs";
const receipts = new Receipts({json.dumps(command)}, ...{json.dumps(OPTIONS)});
const pidOfCommand = () => Number(readFileSync(`/proc/self/task/${{process.pid}}/children`, "utf8"));
"""
    node = ["node", "--input-type=module", "-e", head + script]
    subprocess.run(node, check=True, timeout=SECONDS)


def test_node_at_once(command):
    """Records on their way when the command dies: each promise gets its own record's blocks."""
    script = f"""
const asked = [...Array(2000).keys()].map((i) =>
  receipts.render(i % 5 ? {{ amount: i }} : {json.dumps(UNKNOWN_LANGUAGE)}));
await asked[1];
process.kill(pidOfCommand(), "SIGKILL");
for (const [i, {{ value, reason }}] of (await Promise.allSettled(asked)).entries()) {{
  const shown = value ? value.cust_money : reason.message;
  if (!shown.includes(i % 5 ? ` $${{i}}.00` : "'tlh'")) throw new Error(`${{i}}: ${{shown}}`);
}}
receipts.close();
"""
    run_node(command, script)


def test_node_without_descriptors(command):
    """No command can be started, at first and after a death, and then one can again."""
    script = """
const taken = [];
const takeAll = () => { try { for (;;) taken.push(openSync("/dev/null")); } catch { return; } };
const mustFail = (asked) =>
  asked.then(() => { throw new Error("rendered"); }, ({ message }) => {
    if (!message.includes("cannot be started")) throw new Error(message); });
takeAll();
await mustFail(receipts.render({ amount: 1 }));
taken.splice(0).forEach((taken) => closeSync(taken));
await receipts.render({ amount: 2 });
const pid = pidOfCommand();
takeAll();
process.kill(pid, "SIGSTOP"); // before it answers
const asked = [3, 4].map((amount) => mustFail(receipts.render({ amount })));
process.kill(pid, "SIGKILL");
await Promise.all(asked);
taken.splice(0).forEach((taken) => closeSync(taken));
await receipts.render({ amount: 5 });
receipts.close();
"""
    limits = resource.getrlimit(resource.RLIMIT_NOFILE)
    resource.setrlimit(resource.RLIMIT_NOFILE, (256, limits[1]))
    try:
        run_node(command, script)
    finally:
        resource.setrlimit(resource.RLIMIT_NOFILE, limits)


def lines_of_code(client):
    """Those that are not blank, a comment, an import or nothing but closing brackets."""
    text = re.sub(r"^import \(.*?^\)", "", client.read_text(), flags=re.MULTILINE | re.DOTALL)
    left_out = re.compile(r"\s*(//.*|/\*\*.*|[]{})]*;?|(import|package|using)\b.*|<\?php)")
    return [line for line in text.splitlines() if not left_out.fullmatch(line)]


def measure(run, command, count):
    """Microseconds a record that is asked about after the one before it was answered: the median
    of twenty parts of the run."""
    record = json.loads((ROOT / "examples" / "records" / "chip-credit-sale.json").read_text())
    lines = (json.dumps(record).encode() + b"\n") * (count // 20)
    parts = []
    with Client(run, [command, *OPTIONS]) as client:
        for _ in range(21):  # the first to warm up
            feeding = threading.Thread(target=client.process.stdin.write, args=[lines])
            begin = time.perf_counter()
            feeding.start()
            answers = 0
            while answers < count // 20:
                answers += client.process.stdout.read1(1 << 16).count(b"\n")
            parts.append((time.perf_counter() - begin) / answers * 1e6)
            feeding.join()
    return statistics.median(parts[1:])


def test_document(command):
    shown = (ROOT / "docs" / "coprocess.md").read_text().split("```\n")[1].splitlines()
    options = shown[0].removeprefix("$ qelrcpt ").split()
    answers = iter(shown[1:])
    with Client([command], options) as client:
        for line in answers:
            client.send(line)
            assert client.answer() == (expected := next(answers)), expected


def main():
    if sys.argv[2] == "--document":
        test_document(sys.argv[1])
        return
    command, language, folder = sys.argv[1:4]
    client, build, run = LANGUAGES[language]
    sources = (SOURCES / client).parent
    if not shutil.which(build.split()[0]):
        print(f"{language} is not installed (scripts/setup --languages): not tried")
        sys.exit(77)
    folder = Path(folder).resolve() / language
    folder.mkdir(parents=True, exist_ok=True)
    places = {"folder": folder, "sources": sources}
    build, run = ([word.format(**places) for word in text.split()] for text in (build, run))
    subprocess.run(build, cwd=sources, check=True, stdout=subprocess.DEVNULL)

    if sys.argv[4:5] == ["--bench"]:
        print(f"{language}: {measure(run, command, int(sys.argv[5])):.0f} us")
        return
    assert len(lines_of_code(SOURCES / client)) <= LONGEST_CLIENT, "the client has grown"
    test_answers(run, command)
    test_deaths(run, folder)
    if language == "node":
        test_node_at_once(command)
        test_node_without_descriptors(command)


if __name__ == "__main__":
    main()
