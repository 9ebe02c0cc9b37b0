#!/usr/bin/env python3
"""Runs one transcript against the built zelno and compares its output exactly.

A transcript is a text file of directives, one a line (see README.md beside
this file). Input is fed to zelno's standard input in order, with pauses,
waits and signals between lines; standard output, standard error, the exit
status and named files are then compared with what the transcript expects.
"""

import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time

HERE = os.path.dirname(os.path.abspath(__file__))
TIMEOUT = 60.0
ESCAPES = {"t": "\t", "r": "\r", "\\": "\\"}


def unescape(text):
    return re.sub(r"\\(x[0-9a-fA-F]{2}|[tr\\])",
                  lambda m: chr(int(m[1][1:], 16)) if m[1][0] == "x" else ESCAPES[m[1]], text)


class Expectation:
    """Expected text: literal pieces, and regular expressions that each match
    whole lines."""

    def __init__(self):
        self.pieces = []  # (is_regex, text)

    def add(self, text, is_regex=False):
        self.pieces.append((is_regex, text))

    def literal(self):
        return "".join(text for _, text in self.pieces)

    def readable(self):
        return "".join("~" + t + "\n" if r else t for r, t in self.pieces)

    def matches(self, actual):
        pattern = "".join("(?:" + t + ")\n" if r else re.escape(t) for r, t in self.pieces)
        return re.fullmatch(pattern, actual, re.DOTALL) is not None


class Transcript:
    # Markers of the expected streams and of input: (target, line end, regex).
    MARKERS = {
        "<": ("stdin", "\n", False), "<|": ("stdin", "", False),
        ">": ("stdout", "\n", False), ">|": ("stdout", "", False), ">~": ("stdout", "", True),
        "!": ("stderr", "\n", False), "!|": ("stderr", "", False),
    }
    STEPS = ("sleep", "await", "signal")  # Paced between the input lines.
    SETUP = ("copy", "env", "unset")  # Done before zelno starts.

    def __init__(self, path, names):
        self.names = names
        self.args = []
        self.steps = []  # (verb, argument), with verb "write" for input
        self.expected = {"stdout": Expectation(), "stderr": Expectation()}
        self.setup = []  # (verb, argument)
        self.files = []  # (name, Expectation), or (name, None) for a file that must not exist
        self.cwd = "."
        self.program = None  # zelno's copy, relative to the work directory
        block = None  # the Expectation that "=" lines fill
        for number, line in enumerate(self.read_lines(path), 1):
            marker, _, rest = line.partition(" ")
            rest = self.expand(rest)
            if line == "" or line.startswith("#"):
                block = None if line == "" else block
            elif marker in ("=", "=~") and block is not None:
                block.add(rest if marker == "=~" else unescape(rest) + "\n", marker == "=~")
            elif marker in self.MARKERS:
                block = None
                target, ending, is_regex = self.MARKERS[marker]
                text = rest if is_regex else unescape(rest) + ending
                if target == "stdin":
                    self.steps.append(("write", text))
                else:
                    self.expected[target].add(text, is_regex)
            elif marker == "$":
                block = None
                self.args = rest.split()
            elif marker == "%":
                verb, _, argument = rest.partition(" ")
                block = self.directive(verb, argument, f"{path}:{number}")
            else:
                raise SyntaxError(f"{path}:{number}: can't read {line!r}")

    def directive(self, verb, argument, where):
        """Records one "%" directive; gives the Expectation of a file block."""
        if verb in self.STEPS:
            self.steps.append((verb, argument))
        elif verb in self.SETUP:
            self.setup.append((verb, argument))
        elif verb in ("file", "expect-file"):
            block = Expectation()
            (self.setup if verb == "file" else self.files).append((verb, (argument, block)))
            return block
        elif verb == "no-file":
            self.files.append(("no-file", (argument, None)))
        elif verb == "cd":
            self.cwd = argument
        elif verb == "program":
            self.program = argument
        else:
            raise SyntaxError(f"{where}: unknown directive % {verb}")
        return None

    def expand(self, text):
        for key, value in self.names.items():
            text = text.replace("@" + key + "@", value)
        return text

    def read_lines(self, path):
        """The file's lines, each `% include NAME` replaced by include/NAME.inc."""
        result = []
        for line in open(path, encoding="utf-8").read().removesuffix("\n").split("\n"):
            if line.startswith("% include "):
                result += self.read_lines(os.path.join(HERE, "include", line[10:].strip() + ".inc"))
            else:
                result.append(line)
        return result


def prepare(t, work):
    """Makes the work directory's files and zelno's environment."""
    env = dict(os.environ)
    for verb, argument in t.setup:
        if verb == "env":
            name, _, value = argument.partition("=")
            env[name] = value
        elif verb == "unset":
            env.pop(argument, None)
        else:
            if verb == "copy":
                source, _, target = argument.partition(" ")
                target = os.path.join(work, target or os.path.basename(source))
            else:
                target = os.path.join(work, argument[0])
            os.makedirs(os.path.dirname(target), exist_ok=True)
            if verb == "copy":
                shutil.copy(source, target)
            else:
                with open(target, "w", encoding="utf-8") as f:
                    f.write(argument[1].literal())
    zelno = os.environ["ZELNO"]
    if t.program:
        copy = os.path.join(work, t.program)
        os.makedirs(os.path.dirname(copy), exist_ok=True)
        zelno = shutil.copy(zelno, copy)
    return zelno, env


def converse(t, process):
    """Feeds the input steps; gives zelno's output and a failure, if any."""
    collected = {"stdout": b"", "stderr": b""}
    arrived = threading.Condition()

    def reader(stream, key):
        for chunk in iter(lambda: os.read(stream.fileno(), 65536), b""):
            with arrived:
                collected[key] += chunk
                arrived.notify_all()

    readers = [threading.Thread(target=reader, args=(getattr(process, key), key))
               for key in collected]
    for r in readers:
        r.start()
    deadline = time.monotonic() + TIMEOUT
    failure = None
    try:
        for verb, argument in t.steps:
            if verb == "write":
                process.stdin.write(argument.encode("latin-1"))
                process.stdin.flush()
            elif verb == "sleep":
                time.sleep(float(argument) / 1000.0)
            elif verb == "signal":
                process.send_signal(getattr(signal, "SIG" + argument))
            elif verb == "await":
                wanted = unescape(argument).encode("latin-1")
                with arrived:
                    if not arrived.wait_for(
                            lambda: wanted in collected["stdout"] + collected["stderr"],
                            deadline - time.monotonic()):
                        failure = f"timed out awaiting {argument!r}"
                        break
        process.stdin.close()
    except BrokenPipeError:
        pass
    try:
        process.wait(timeout=max(0.1, deadline - time.monotonic()))
    except subprocess.TimeoutExpired:
        process.kill()
        process.wait()
        failure = failure or f"zelno did not end within {TIMEOUT} s"
    for r in readers:
        r.join()
    return {key: value.decode("latin-1") for key, value in collected.items()}, failure


def run(transcript_path):
    work = tempfile.mkdtemp(prefix="zelno-e2e-")
    t = Transcript(transcript_path, {
        "SOURCE": os.environ["ZELNO_SOURCE_DIR"],
        "TESTLIBS": os.environ.get("ZELNO_TEST_LIBRARY_DIR", ""),
    })
    zelno, env = prepare(t, work)
    process = subprocess.Popen([zelno] + t.args, cwd=os.path.join(work, t.cwd), env=env,
                               stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                               stderr=subprocess.PIPE)
    output, failure = converse(t, process)
    problems = [failure] if failure else []
    if process.returncode != 0:
        problems.append(f"exit status {process.returncode}, expected 0")
    checks = [(name, expected, output[name]) for name, expected in t.expected.items()]
    for _, (name, expected) in t.files:
        path = os.path.join(work, name)
        if expected is None:
            if os.path.exists(path):
                problems.append(f"file {name} exists, expected none")
        elif not os.path.exists(path):
            problems.append(f"file {name} missing")
        else:
            checks.append((f"file {name}", expected, open(path, encoding="latin-1").read()))
    for name, expected, actual in checks:
        if not expected.matches(actual):
            problems.append(f"{name} differs\n--- expected\n{expected.readable()}\n"
                            f"--- actual\n{actual}\n---")
    if problems:
        print(f"{transcript_path}: FAILED (work directory kept: {work})")
        print("\n".join(problems))
        return 1
    shutil.rmtree(work, ignore_errors=True)
    return 0


if __name__ == "__main__":
    sys.exit(run(sys.argv[1]))
