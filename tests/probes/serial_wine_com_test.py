"""The Windows serial port under Wine, through a COM port that Wine maps to
a pseudo-terminal ($WINEPREFIX/dosdevices/comN -> /dev/pts/M), which is how
an emulated instrument reaches the Windows build.

Usage: python3 serial_wine_com_test.py WINE... LIST_USB_SERIAL_EXE"""

import os
import select
import subprocess
import sys
import unittest

COMMAND = sys.argv[1:]
del sys.argv[1:]


class WineComPort(unittest.TestCase):
    def setUp(self):
        self.master, slave = os.openpty()
        path = os.ttyname(slave)
        os.close(slave)
        folder = os.path.join(os.environ.get("WINEPREFIX", os.path.expanduser("~/.wine")),
                              "dosdevices")
        # A number of this run's own, above the ports a machine has.
        self.number = 100 + os.getpid() % 800
        self.link = os.path.join(folder, f"com{self.number}")
        if os.path.lexists(self.link):
            os.unlink(self.link)
        os.symlink(path, self.link)

    def tearDown(self):
        os.unlink(self.link)
        if self.master is not None:
            os.close(self.master)

    def start(self, *args):
        program = subprocess.Popen(COMMAND + list(args), stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE)
        self.addCleanup(program.kill)
        return program

    def test_every_byte_both_ways_under_each_spelling(self):
        payload = bytes(b for b in range(256) if b != 0x0A) + b"\n"
        for name in (f"COM{self.number}", f"com{self.number}", f"\\\\.\\COM{self.number}"):
            with self.subTest(name):
                program = self.start("--echo", name)
                self.assertEqual(program.stdout.readline().rstrip(), b"open")
                os.write(self.master, payload)
                reply = b""
                while not reply.endswith(b"\n"):
                    ready, _, _ = select.select([self.master], [], [], 60)
                    self.assertTrue(ready, f"no reply, only {reply!r}")
                    reply += os.read(self.master, 4096)
                self.assertEqual(reply, b"echo:" + payload)
                self.assertEqual(program.wait(timeout=60), 0)

    def test_the_other_side_closing_is_a_failure(self):
        program = self.start("--echo", f"COM{self.number}")
        self.assertEqual(program.stdout.readline().rstrip(), b"open")
        os.close(self.master)
        self.master = None
        _, err = program.communicate(timeout=60)
        self.assertEqual(err.decode().rstrip(), f"the port 'COM{self.number}' is gone")

    def test_a_read_times_out_and_interrupt_wakes_one(self):
        out, err = self.start("--interrupt", f"COM{self.number}").communicate(timeout=60)
        self.assertEqual(out.decode().split(), ["timeout", "woke"], err)


if __name__ == "__main__":
    unittest.main()
