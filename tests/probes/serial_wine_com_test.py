"""The Windows serial port and discovery under Wine; the port through a COM
port that Wine maps to a pseudo-terminal ($WINEPREFIX/dosdevices/comN ->
/dev/pts/M), as an emulated instrument reaches the Windows build.
Usage: python3 serial_wine_com_test.py WINE... LIST_USB_SERIAL_EXE"""

import os
import select
import subprocess
import sys
import unittest

COMMAND = sys.argv[1:]
del sys.argv[1:]


def run(*args):
    done = subprocess.run(COMMAND + list(args), capture_output=True, timeout=60)
    return done.stdout.decode().split(), done.stderr.decode().rstrip()


class WineComPort(unittest.TestCase):
    def setUp(self):
        self.master, slave = os.openpty()
        path = os.ttyname(slave)
        os.close(slave)
        self.number = 100 + os.getpid() % 800  # This run's own, above a machine's.
        prefix = os.environ.get("WINEPREFIX", os.path.expanduser("~/.wine"))
        self.link = os.path.join(prefix, "dosdevices", f"com{self.number}")
        if os.path.lexists(self.link):
            os.unlink(self.link)
        os.symlink(path, self.link)
        self.addCleanup(os.unlink, self.link)
        self.addCleanup(lambda: self.master is None or os.close(self.master))

    def echo(self, name):
        program = subprocess.Popen(COMMAND + ["--echo", name], stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE)
        self.addCleanup(program.kill)
        self.assertEqual(program.stdout.readline().rstrip(), b"open")
        return program

    def test_every_byte_both_ways_under_each_spelling(self):
        payload = bytes(b for b in range(256) if b != 0x0A) + b"\n"
        for name in (f"COM{self.number}", f"com{self.number}", f"\\\\.\\COM{self.number}"):
            with self.subTest(name):
                program = self.echo(name)
                os.write(self.master, payload)
                reply = b""
                while not reply.endswith(b"\n") and select.select([self.master], [], [], 60)[0]:
                    reply += os.read(self.master, 4096)
                self.assertEqual(reply, b"echo:" + payload)
                self.assertEqual(program.wait(timeout=60), 0)

    def test_the_other_side_closing_is_a_failure(self):
        program = self.echo(f"COM{self.number}")
        os.close(self.master)
        self.master = None
        _, err = program.communicate(timeout=60)
        self.assertEqual(err.decode().rstrip(), f"the port 'COM{self.number}' is gone")

    def test_a_read_times_out_and_interrupt_wakes_one(self):
        self.assertEqual(run("--wake", f"COM{self.number}"), (["timeout", "woke"], ""))

    def test_a_missing_port_and_no_ppk2(self):
        for name in ("COM99", "\\\\.\\COM99"):
            self.assertEqual(run("--echo", name),
                             ([], f"can't open the port '{name}': there is no such port"))
        self.assertEqual(run("1915", "c00a"), ([], ""))


if __name__ == "__main__":
    unittest.main()
