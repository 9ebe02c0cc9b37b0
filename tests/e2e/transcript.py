#!/usr/bin/env python3
"""Runs one transcript (see README.md beside this file) against the built zelno."""

import os
import re
import select
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time

HERE = os.path.dirname(os.path.abspath(__file__))
TIMEOUT = 60.0
# A Windows zelno runs under Wine, whose loader reads PATH, with `;` between
# entries and `\` in paths.
WINDOWS = os.environ.get("ZELNO", "").endswith(".exe")


def library(argument):
    """`base` or `base,version` as the platform names the library's file."""
    base, _, version = argument.partition(",")
    return base + ".dll" if WINDOWS else "lib" + base + ".so" + ("." + version if version else "")


FUNCTIONS = {"LIB": library,
             "PATH": lambda text: text.replace("/", "\\") if WINDOWS else text,
             "SEARCH": lambda text: text.replace("/", "\\").replace(":", ";") if WINDOWS else text}


def unescape(text):
    return re.sub(r"\\(x[0-9a-fA-F]{2}|[tr\\])", lambda m: chr(int(m[1][1:], 16)) if m[1][0] == "x"
                  else {"t": "\t", "r": "\r", "\\": "\\"}[m[1]], text)


class Expected:
    """Literal text and regular expressions that each match whole lines."""

    def __init__(self):
        self.pattern, self.readable = "", ""

    def add(self, text, is_regex):
        self.pattern += "(?:" + text + ")\n" if is_regex else re.escape(text)
        self.readable += "~" + text + "\n" if is_regex else text

    def matches(self, actual):
        return re.fullmatch(self.pattern, actual, re.DOTALL) is not None


# Line markers: what the text is for, its line end, whether it is a regex.
MARKERS = {"<": ("stdin", "\n", False), "<|": ("stdin", "", False),
           ">": ("stdout", "\n", False), ">|": ("stdout", "", False), ">~": ("stdout", "", True),
           "!": ("stderr", "\n", False), "!|": ("stderr", "", False),
           "=": ("block", "\n", False), "=~": ("block", "", True)}
STEPS = ("sleep", "await", "signal")  # `%` directives paced between the input lines
SETUP = ("file", "copy", "env", "unset")  # `%` directives done before zelno starts
FILES = ("expect-file", "no-file")  # `%` directives checked after zelno ends


class Transcript:
    def __init__(self, path, names):
        self.names = names
        self.args, self.steps, self.setup, self.files = [], [], [], []
        self.expected = {"stdout": Expected(), "stderr": Expected()}
        self.cwd, self.program, self.status = ".", None, "0"
        block = None  # the Expected of the file that "=" lines fill
        for number, line in enumerate(self.read_lines(path), 1):
            marker, _, raw = line.partition(" ")
            rest = self.expand(raw)
            verb, _, argument = rest.partition(" ")
            if line == "" or line.startswith("#"):
                block = block if line else None
            elif marker in MARKERS and (block is not None or MARKERS[marker][0] != "block"):
                target, ending, is_regex = MARKERS[marker]
                text = raw if is_regex else self.expand(unescape(raw)) + ending
                if target == "stdin":
                    self.steps.append(("write", text))
                else:
                    (block if target == "block" else self.expected[target]).add(text, is_regex)
                block = block if target == "block" else None
            elif marker == "$":
                self.args, block = rest.split(), None
            elif marker == "%" and verb in STEPS + SETUP + FILES + ("cd", "program", "status"):
                block = Expected() if verb in ("file", "expect-file") else None
                if verb in STEPS:
                    self.steps.append((verb, argument))
                elif verb in SETUP:
                    self.setup.append((verb, (argument, block) if block else argument))
                elif verb in FILES:
                    self.files.append((argument, block))
                else:
                    setattr(self, "cwd" if verb == "cd" else verb, argument)  # cd, program, status
            else:
                raise SyntaxError(f"{path}:{number}: can't read {line!r}")

    def expand(self, text):
        """Placeholders replaced, innermost first; unknown ones stay."""
        while (expanded := re.sub(r"@(\w+)(?:\(([^()@]*)\))?@", self.substitute, text)) != text:
            text = expanded
        return text

    def substitute(self, m):
        if m[2] is None:
            return self.names.get(m[1], m[0])
        return FUNCTIONS[m[1]](m[2]) if m[1] in FUNCTIONS else m[0]

    def read_lines(self, path):
        """The file's lines, each `% include NAME` replaced by include/NAME.inc."""
        result = []
        for line in open(path, encoding="utf-8").read().removesuffix("\n").split("\n"):
            if line.startswith("% include "):
                result += self.read_lines(os.path.join(HERE, "include", line[10:].strip() + ".inc"))
            else:
                result.append(line)
        return result


def place(work, name):
    """The path of `name` in the work directory, whose folders are made."""
    path = os.path.join(work, name)
    os.makedirs(os.path.dirname(path), exist_ok=True)
    return path


def prepare(t, work):
    """Makes the work directory's files; gives the zelno to run and its environment."""
    env = dict(os.environ, WINEDEBUG="-all")
    for verb, argument in t.setup:
        if verb in ("env", "unset"):
            name, _, value = argument.partition("=")
            name = "WINEPATH" if WINDOWS and name == "PATH" else name  # Wine puts it before its own
            if verb == "env":
                env[name] = value
            else:
                env.pop(name, None)
        elif verb == "copy":
            source, _, target = argument.partition(" ")
            shutil.copy(source, place(work, target or os.path.basename(source)))
        else:
            with open(place(work, argument[0]), "w", encoding="utf-8") as f:
                f.write(argument[1].readable)
    zelno = os.environ["ZELNO"]
    program = t.program and shutil.copy(zelno, place(work, t.program + os.path.splitext(zelno)[1]))
    argtable = program and os.path.join(os.path.dirname(program), library("argtable2"))
    if WINDOWS and program and not os.path.exists(argtable):  # a system library on Linux
        shutil.copy(os.environ["ZELNO_ARGTABLE2_DLL"], argtable)
    return program or zelno, env


def converse(t, process):
    """Feeds the input steps; gives zelno's output and a failure, if any."""
    output = {"stdout": b"", "stderr": b""}
    arrived = threading.Condition()

    def read(key):
        # Until zelno has ended and the pipe is drained, not until the pipe's
        # end: a process that Wine starts may hold the pipe open.
        stream = getattr(process, key).fileno()
        while True:
            ended = process.poll() is not None
            if select.select([stream], [], [], 0 if ended else 0.1)[0]:
                chunk = os.read(stream, 65536)
                if not chunk:
                    return
                with arrived:
                    output[key] += chunk
                    arrived.notify_all()
            elif ended:
                return

    readers = [threading.Thread(target=read, args=(key,)) for key in output]
    for r in readers:
        r.start()
    deadline, failure = time.monotonic() + TIMEOUT, None
    try:
        for verb, argument in t.steps:
            if verb == "write":
                process.stdin.write(argument.encode("latin-1"))
                process.stdin.flush()
            elif verb == "sleep":
                time.sleep(float(argument) / 1000.0)
            elif verb == "signal":
                process.send_signal(getattr(signal, "SIG" + argument))
            else:
                wanted = unescape(argument).encode("latin-1")
                with arrived:
                    if not arrived.wait_for(lambda: wanted in output["stdout"] + output["stderr"],
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
    return {key: value.decode("latin-1") for key, value in output.items()}, failure


def run(path):
    work = tempfile.mkdtemp(prefix="zelno-e2e-")
    t = Transcript(path, {"SOURCE": os.environ["ZELNO_SOURCE_DIR"],
                          "TESTLIBS": os.environ.get("ZELNO_TEST_LIBRARY_DIR", ""),
                          "SEARCHVAR": "PATH" if WINDOWS else "LD_LIBRARY_PATH"})
    zelno, env = prepare(t, work)
    process = subprocess.Popen(["wine"] * WINDOWS + [zelno] + t.args,
                               cwd=os.path.join(work, t.cwd), env=env, stdin=subprocess.PIPE,
                               stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    output, failure = converse(t, process)
    problems = [failure] if failure else []
    status = process.returncode & 0xFF if WINDOWS else process.returncode  # Wine gives the low byte
    if status != int(t.status):
        problems.append(f"exit status {status}, expected {t.status}")
    checks = [(name, expected, output[name]) for name, expected in t.expected.items()]
    for name, expected in t.files:
        exists = os.path.exists(os.path.join(work, name))
        if exists != (expected is not None):
            problems.append(f"file {name} " + ("exists, expected none" if exists else "missing"))
        elif exists:
            checks.append((f"file {name}", expected,
                           open(os.path.join(work, name), encoding="latin-1").read()))
    problems += [f"{name} differs\n--- expected\n{expected.readable}\n--- actual\n{actual}\n---"
                 for name, expected, actual in checks if not expected.matches(actual)]
    if problems:
        print(f"{path}: FAILED (work directory kept: {work})\n" + "\n".join(problems))
        return 1
    shutil.rmtree(work, ignore_errors=True)
    return 0


if __name__ == "__main__":
    sys.exit(run(sys.argv[1]))
