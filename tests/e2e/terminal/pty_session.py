#!/usr/bin/env python3
"""pty_session.py CASE: types keys to zelno at a pseudo-terminal, waits for
what it shows (never for a fixed time) and checks the bytes on the screen."""
import fcntl, os, re, select, shutil, struct, subprocess, sys, tempfile, termios, time

ZELNO = os.environ["ZELNO"]
DEMO = os.path.join(os.environ["ZELNO_SOURCE_DIR"], "demo")
UP, CTRL_C, CTRL_D, CTRL_U, TAB = "\x1b[A", "\x03", "\x04", "\x15", "\t"
HELP_QUIT = "Exit the interactive tool"


class Session:
    """One zelno whose standard input (and output, unless piped) is a pty."""

    def __init__(self, work, piped_output=False, **env_changes):
        self.master, slave = os.openpty()
        fcntl.ioctl(slave, termios.TIOCSWINSZ, struct.pack("HHHH", 24, 100, 0, 0))
        env = dict(os.environ, XDG_STATE_HOME=os.path.join(work, "state"))
        env.update(env_changes)
        env = {name: value for name, value in env.items() if value is not None}
        self.process = subprocess.Popen(
            [ZELNO], cwd=work, env=env, stdin=slave, stderr=slave,
            stdout=subprocess.PIPE if piped_output else slave, start_new_session=True,
            preexec_fn=lambda: fcntl.ioctl(0, termios.TIOCSCTTY, 0))
        os.close(slave)
        self.screen = ""
        self.seen = 0  # Where the next expect starts looking.

    def type(self, keys):
        os.write(self.master, keys.encode())

    def expect(self, pattern, timeout=20):
        """Waits until the screen after the last match matches; gives the match."""
        deadline = time.monotonic() + timeout
        while not (found := re.compile(pattern).search(self.screen, self.seen)):
            if time.monotonic() > deadline or not self._read(deadline):
                sys.exit(f"no {pattern!r} in {self.screen[self.seen:]!r}")
        self.seen = found.end()
        return found

    def prompt(self):
        """Waits for a prompt, then for libedit to take the terminal (after it)."""
        # libedit may put the cursor back behind the prompt it redrew (after ^U).
        self.expect(r"zelno> (?:\r\x1b\[8G)?$")
        deadline = time.monotonic() + 20
        while termios.tcgetattr(self.master)[3] & termios.ICANON:
            check(time.monotonic() < deadline, "terminal never left canonical mode")
            time.sleep(0.01)

    def _read(self, deadline):
        if not select.select([self.master], [], [], max(0, deadline - time.monotonic()))[0]:
            return False
        try:
            self.screen += os.read(self.master, 4096).decode(errors="replace")
        except OSError:  # The pty's other end is closed.
            return False
        return True

    def end(self):
        self.prompt()
        self.type(CTRL_D)
        status = self.process.wait(timeout=20)
        check(status == 0, f"exit status {status}")


def check(condition, what):
    if not condition:
        sys.exit(f"failed: {what}")


def quit_help(work, keys="help quit\r", **env_changes):
    """A session that shows quit's help with `keys`, then ends."""
    zelno = Session(work, **env_changes)
    zelno.prompt()
    zelno.type(keys)
    zelno.expect(HELP_QUIT)
    zelno.end()
    return zelno


def history(work):
    os.mkdir(os.path.join(work, "state"))
    for keys in ["help quit\r", UP + "\r"]:  # The second run finds the first's line.
        quit_help(work, keys)
    # Two sessions side by side: each adds its own line, neither loses the other's.
    first, second = Session(work), Session(work)
    for zelno, command in [(first, "log"), (second, "connect"), (first, "help")]:
        zelno.prompt()
        zelno.type(f"help {command}\r")
        zelno.expect("Enable logging|Connect to|List all supported")
    first.end()
    second.end()
    with open(os.path.join(work, "state", "zelno", "history")) as file:
        lines = file.read().splitlines()
    check(lines == ["help quit", "help log", "help connect", "help help"], f"history {lines}")
    # No home: no history and no folders made for it. A FIFO: no wait for it.
    for env, told in [(dict(XDG_STATE_HOME=None, HOME=os.path.join(work, "gone", "home")), ""),
                      (dict(XDG_STATE_HOME=os.path.join(work, "fifo")), "not a regular file")]:
        if told:
            os.makedirs(os.path.join(work, "fifo", "zelno"))
            os.mkfifo(os.path.join(work, "fifo", "zelno", "history"))
        zelno = quit_help(work, **env)
        check(told in zelno.screen and not os.path.exists(os.path.join(work, "gone")), env)


def completion(work):
    """Completion; what isn't ASCII is typed into the line as it is, and
    Ctrl+D ends on a new line."""
    open(os.path.join(work, "board_file.dat"), "w").close()
    open(os.path.join(work, "my board.dat"), "w").close()
    zelno = Session(work, LC_ALL=None, LANG=None, LC_CTYPE="C.UTF-8")
    zelno.prompt()
    zelno.type("hel" + TAB + "qu" + TAB + "\r")
    zelno.expect(HELP_QUIT)
    # libedit draws only what a completion adds.
    for typed, shown in [("connect --config boa", "rd_file.dat "),
                         ("wattscope -o a.csv --sav", "eall "),
                         ("log --cmd my", '"my board.dat" '), ("", "connect  disconnect")]:
        zelno.type(typed + TAB)
        zelno.expect(re.escape(shown))
        zelno.type(CTRL_U)
    # Ctrl+C at the prompt clears the line, silently.
    zelno.type("help" + CTRL_C + "\r" + "help quit\r")
    zelno.expect(HELP_QUIT)
    check("List all supported" not in zelno.screen and "^C" not in zelno.screen, "line cleared")
    zelno.prompt()
    zelno.type("log --cmd mess_über.txt\r")
    zelno.prompt()
    zelno.type(CTRL_D)
    check(zelno.process.wait(timeout=20) == 0, "exit status")
    zelno.seen -= len("zelno> ")
    zelno.expect(r"zelno> (\^D)?\r?\n$")
    check(os.path.exists(os.path.join(work, "mess_über.txt")), f"file in {os.listdir(work)}")


def rows(screen):
    """The rows a terminal keeps of these bytes: returns, erasures and column moves applied."""
    kept = []
    for line in screen.split("\n"):
        row, column = [], 0
        for part in re.finditer(r"\x1b\[(\d*)([A-Za-z])|([^\x1b])", line):
            char, code = part.group(3), part.group(2)
            if char == "\r":
                column = 0
            elif char is not None and char >= " ":
                row += [" "] * (column + 1 - len(row))
                row[column] = char
                column += 1
            elif code in ("J", "K"):
                del row[column:]
            elif code == "G":
                column = int(part.group(1) or 1) - 1
        kept.append("".join(row).rstrip())
    return kept


def status_line(work):
    for name in ["board.dat", "limits.txt"]:
        shutil.copy(os.path.join(DEMO, name), work)
    zelno = Session(work)
    zelno.type("connect --config board.dat hosted\r")
    # The prodtest prints its results while the capture's line is up; nothing
    # typed meanwhile may land on it. A prodtest has no limit to show.
    zelno.type("prodtest -i limits.txt ; wattscope -o a.csv -D 3000 ws\r")
    zelno.expect(r"\x1b\[Jprodtest \d+\.\d s: [\d,]+ samples  \|  wattscope \d+\.\d s / 3 s: "
                 r"[\d,]+ samples, mean [\d.]+ [mun]?A, [\d.]+ [mun]?J\r")
    check("(input waits" not in zelno.screen, "no note before a key is typed")
    zelno.type("help quit\r")
    zelno.expect(r"wattscope \d+\.\d s / 3 s[^\r]* \(input waits until the use cases end\)\r")
    zelno.expect(r"\r\x1b\[J[^\x1b]*" + HELP_QUIT)
    # A terminal that narrows gets lines that fit it from the next update on.
    zelno.type("wattscope -o b.csv ws\r")
    zelno.expect(r"wattscope \d+\.\d s[:\r]")
    fcntl.ioctl(zelno.master, termios.TIOCSWINSZ, struct.pack("HHHH", 24, 20, 0, 0))
    zelno.expect(r"\x1b\[Jwattscope [^\r\x1b]{1,9}\r")
    narrow = zelno.expect(r"\x1b\[J(wattscope [^\r]*)\r")
    check(len(narrow.group(1)) <= 19, f"fits 20 columns: {narrow.group(1)!r}")
    # Ctrl+C while a use case runs is a signal that stops it.
    zelno.type(CTRL_C)
    zelno.expect(r"b\.csv: .*stopped")
    zelno.end()
    check("prodtest: PASS, 7 of 7" in zelno.screen, "prodtest ran")
    left = [row for row in rows(zelno.screen) if re.search(r"(wattscope|prodtest) \d+\.\d s|\d s / \d+ s|input waits", row)]
    check(not left, f"status lines left on the screen: {left}")


def piped_output(work):
    shutil.copy(os.path.join(DEMO, "board.dat"), work)
    zelno = Session(work, piped_output=True)
    zelno.type("connect --config board.dat hosted\r" "wattscope -o a.csv -D 600 ws\r" "quit\r")
    output = zelno.process.stdout.read().decode()
    check(zelno.process.wait(timeout=20) == 0, "exit status")
    check("zelno> " in output and "\x1b" not in output and " s / " not in output, "plain")


if __name__ == "__main__":
    with tempfile.TemporaryDirectory() as work:
        globals()[sys.argv[1]](work)
