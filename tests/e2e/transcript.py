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


def unescape(text):
    out = []
    i = 0
    while i < len(text):
        c = text[i]
        if c == "\\" and i + 1 < len(text):
            n = text[i + 1]
            if n == "t":
                out.append("\t"); i += 2; continue
            if n == "r":
                out.append("\r"); i += 2; continue
            if n == "\\":
                out.append("\\"); i += 2; continue
            if n == "x" and i + 3 < len(text) + 1:
                out.append(chr(int(text[i + 2:i + 4], 16))); i += 4; continue
        out.append(c)
        i += 1
    return "".join(out)


class Expectation:
    """The expected text of one stream: literal pieces and regex lines."""

    def __init__(self):
        self.pieces = []  # (kind, text): kind is "text" or "regex"

    def add_text(self, text):
        self.pieces.append(("text", text))

    def add_regex(self, pattern):
        self.pieces.append(("regex", pattern))

    def pattern(self):
        parts = []
        for kind, text in self.pieces:
            parts.append(re.escape(text) if kind == "text" else "(?:" + text + ")\n")
        return "".join(parts)

    def readable(self):
        return "".join(t if k == "text" else "~" + t + "\n" for k, t in self.pieces)

    def matches(self, actual):
        return re.fullmatch(self.pattern(), actual, re.DOTALL) is not None


class Transcript:
    def __init__(self, path, env):
        self.path = path
        self.env = env
        self.args = []
        self.steps = []  # input actions, in order
        self.stdout = Expectation()
        self.stderr = Expectation()
        self.files = []  # (name, Expectation)
        self.setup = []  # (action, *args) run before zelno starts
        self.status = 0
        self.timeout = 60.0
        self.cwd = "."
        self.program = None  # zelno to run, relative to the work directory

    def expand(self, text):
        for key, value in self.env.items():
            text = text.replace("@" + key + "@", value)
        return text

    def read_lines(self, path):
        """The file's lines, with each `% include NAME` replaced by the lines
        of include/NAME.inc beside this script."""
        lines = open(path, encoding="utf-8").read().split("\n")
        if lines and lines[-1] == "":
            lines.pop()
        result = []
        for line in lines:
            if line.startswith("% include "):
                name = line[len("% include "):].strip()
                here = os.path.dirname(os.path.abspath(__file__))
                result.extend(self.read_lines(os.path.join(here, "include", name + ".inc")))
            else:
                result.append(line)
        return result

    def parse(self):
        lines = self.read_lines(self.path)
        current_file = None
        for number, line in enumerate(lines, 1):
            if line.startswith("#") or line == "":
                current_file = None if line == "" else current_file
                continue
            marker, _, rest = line.partition(" ")
            if marker == "=":
                if current_file is None:
                    raise SyntaxError(f"{self.path}:{number}: '=' line outside a file block")
                current_file[1].add_text(unescape(self.expand(rest)) + "\n")
                continue
            if marker == "=~":
                current_file[1].add_regex(self.expand(rest))
                continue
            current_file = None
            if marker == "$":
                self.args = [self.expand(a) for a in rest.split()] if rest else []
            elif marker == "<":
                self.steps.append(("write", unescape(self.expand(rest)) + "\n"))
            elif marker == "<|":
                self.steps.append(("write", unescape(self.expand(rest))))
            elif marker == ">":
                self.stdout.add_text(unescape(self.expand(rest)) + "\n")
            elif marker == ">|":
                self.stdout.add_text(unescape(self.expand(rest)))
            elif marker == ">~":
                self.stdout.add_regex(self.expand(rest))
            elif marker == "!":
                self.stderr.add_text(unescape(self.expand(rest)) + "\n")
            elif marker == "!|":
                self.stderr.add_text(unescape(self.expand(rest)))
            elif marker == "!~":
                self.stderr.add_regex(self.expand(rest))
            elif marker == "%":
                words = rest.split(" ", 1)
                verb = words[0]
                arg = self.expand(words[1]) if len(words) > 1 else ""
                if verb in ("sleep", "signal", "await", "close"):
                    self.steps.append((verb, arg))
                elif verb == "file":
                    current_file = (arg, Expectation())
                    self.setup.append(("file", current_file))
                elif verb == "expect-file":
                    current_file = (arg, Expectation())
                    self.files.append(current_file)
                elif verb == "no-file":
                    self.files.append((arg, None))
                elif verb in ("env", "copy", "mkdir", "unset"):
                    self.setup.append((verb, arg))
                elif verb == "cd":
                    self.cwd = arg
                elif verb == "program":
                    self.program = arg
                elif verb == "status":
                    self.status = int(arg)
                elif verb == "timeout":
                    self.timeout = float(arg)
                else:
                    raise SyntaxError(f"{self.path}:{number}: unknown directive % {verb}")
            else:
                raise SyntaxError(f"{self.path}:{number}: unknown marker {marker!r}")


def run(transcript_path):
    work = tempfile.mkdtemp(prefix="zelno-e2e-")
    env_names = {
        "WORK": work,
        "BUILD": os.environ["ZELNO_BUILD_DIR"],
        "SOURCE": os.environ["ZELNO_SOURCE_DIR"],
        "TESTLIBS": os.environ.get("ZELNO_TEST_LIBRARY_DIR", ""),
    }
    t = Transcript(transcript_path, env_names)
    t.parse()
    process_env = dict(os.environ)
    for action, arg in t.setup:
        if action == "env":
            name, _, value = arg.partition("=")
            process_env[name] = value
        elif action == "unset":
            process_env.pop(arg, None)
        elif action == "mkdir":
            os.makedirs(os.path.join(work, arg), exist_ok=True)
        elif action == "copy":
            source, _, target = arg.partition(" ")
            if not os.path.isabs(source):
                source = os.path.join(env_names["SOURCE"], "tests", "data", source)
            target = os.path.join(work, target or os.path.basename(source))
            os.makedirs(os.path.dirname(target), exist_ok=True)
            shutil.copy(source, target)
        elif action == "file":
            name, content = arg
            target = os.path.join(work, name)
            os.makedirs(os.path.dirname(target), exist_ok=True)
            with open(target, "w", encoding="utf-8") as f:
                f.write("".join(text for _, text in content.pieces))

    zelno = os.environ["ZELNO"]
    if t.program:
        zelno = os.path.join(work, t.program)
        if not os.path.exists(zelno):
            os.makedirs(os.path.dirname(zelno), exist_ok=True)
            shutil.copy(os.environ["ZELNO"], zelno)
    process = subprocess.Popen([zelno] + t.args, cwd=os.path.join(work, t.cwd),
                               stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                               stderr=subprocess.PIPE, env=process_env)
    collected = {"out": b"", "err": b""}
    lock = threading.Condition()

    def reader(stream, key):
        while True:
            chunk = os.read(stream.fileno(), 65536)
            if not chunk:
                break
            with lock:
                collected[key] += chunk
                lock.notify_all()

    readers = [threading.Thread(target=reader, args=(process.stdout, "out")),
               threading.Thread(target=reader, args=(process.stderr, "err"))]
    for r in readers:
        r.start()
    deadline = time.monotonic() + t.timeout
    failure = None
    try:
        for verb, arg in t.steps:
            if verb == "write":
                process.stdin.write(arg.encode("latin-1"))
                process.stdin.flush()
            elif verb == "sleep":
                time.sleep(float(arg) / 1000.0)
            elif verb == "signal":
                process.send_signal(getattr(signal, "SIG" + arg))
            elif verb == "close":
                process.stdin.close()
            elif verb == "await":
                wanted = unescape(arg).encode("latin-1")
                with lock:
                    while wanted not in collected["out"] + collected["err"]:
                        left = deadline - time.monotonic()
                        if left <= 0:
                            failure = f"timed out awaiting {arg!r}"
                            break
                        lock.wait(left)
                if failure:
                    break
        if not process.stdin.closed:
            process.stdin.close()
    except BrokenPipeError:
        pass
    try:
        status = process.wait(timeout=max(0.1, deadline - time.monotonic()))
    except subprocess.TimeoutExpired:
        process.kill()
        status = process.wait()
        failure = failure or f"zelno did not end within {t.timeout} s"
    for r in readers:
        r.join()

    out = collected["out"].decode("latin-1")
    err = collected["err"].decode("latin-1")
    problems = []
    if failure:
        problems.append(failure)
    if status != t.status:
        problems.append(f"exit status {status}, expected {t.status}")
    for name, stream, actual in (("stdout", t.stdout, out), ("stderr", t.stderr, err)):
        if not stream.matches(actual):
            problems.append(f"{name} differs\n--- expected\n{stream.readable()}\n--- actual\n{actual}\n---")
    for name, expected in t.files:
        path = os.path.join(work, name)
        if expected is None:
            if os.path.exists(path):
                problems.append(f"file {name} exists, expected none")
            continue
        if not os.path.exists(path):
            problems.append(f"file {name} missing")
            continue
        actual = open(path, encoding="latin-1").read()
        if not expected.matches(actual):
            problems.append(f"file {name} differs\n--- expected\n{expected.readable()}\n--- actual\n{actual}\n---")
    if problems:
        print(f"{transcript_path}: FAILED (work directory kept: {work})")
        for p in problems:
            print(p)
        return 1
    shutil.rmtree(work, ignore_errors=True)
    return 0


if __name__ == "__main__":
    sys.exit(run(sys.argv[1]))
