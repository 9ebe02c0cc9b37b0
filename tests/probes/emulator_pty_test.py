#!/usr/bin/python3
"""ppk2-emulator's --link, which zelno's end-to-end test does not use: the
link names the terminal the emulator serves, and an emulator that stops
removes it only while it is still its own.

Usage: emulator_pty_test.py EMULATOR BOARD. The time limit guards against a
hang only.
"""
import os
import signal
import subprocess
import sys
import tempfile

EMULATOR, BOARD = sys.argv[1], sys.argv[2]
HANG = 60.0


def start(link):
    emulator = subprocess.Popen([EMULATOR, "--board", BOARD, "--link", link],
                                stdout=subprocess.PIPE, text=True)
    path = emulator.stdout.readline().strip()
    assert os.path.realpath(link) == path, (link, path)
    return emulator, path


def stop(emulator):
    emulator.send_signal(signal.SIGTERM)
    assert emulator.wait(timeout=HANG) == 0


with tempfile.TemporaryDirectory() as tmp:
    link = os.path.join(tmp, "ppk2")
    first, _ = start(link)
    second, path = start(link)  # Takes the name over.
    stop(first)
    assert os.path.realpath(link) == path, "the first emulator removed the second's link"
    stop(second)
    assert not os.path.lexists(link), "link left behind"
print("ok")
