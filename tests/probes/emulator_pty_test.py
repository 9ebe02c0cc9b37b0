#!/usr/bin/python3
"""ppk2-emulator's --link, which zelno's end-to-end test does not use: the
link names the terminal the emulator serves, and goes when it stops.

Usage: emulator_pty_test.py EMULATOR BOARD. The time limit guards against a
hang only.
"""
import os
import select
import signal
import subprocess
import sys
import tempfile
import tty

EMULATOR, BOARD = sys.argv[1], sys.argv[2]
HANG = 60.0

with tempfile.TemporaryDirectory() as tmp:
    link = os.path.join(tmp, "ppk2")
    emulator = subprocess.Popen([EMULATOR, "--board", BOARD, "--link", link],
                                stdout=subprocess.PIPE, text=True)
    try:
        path = emulator.stdout.readline().strip()
        assert os.path.realpath(link) == path, (link, path)
        fd = os.open(link, os.O_RDWR | os.O_NOCTTY)
        tty.setraw(fd)
        os.write(fd, b"\x19")
        reply = b""
        while not reply.endswith(b"END\n"):
            assert select.select([fd], [], [], HANG)[0], reply
            reply += os.read(fd, 4096)
        assert reply.startswith(b"Calibrated: 1\n"), reply[:40]
        os.close(fd)
    finally:
        emulator.send_signal(signal.SIGTERM)
        assert emulator.wait(timeout=HANG) == 0
    assert not os.path.lexists(link), "link left behind"
print("ok")
