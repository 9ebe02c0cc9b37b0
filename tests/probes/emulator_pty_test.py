#!/usr/bin/python3
"""ppk2-emulator end to end on its pseudo-terminal, as a host sees it.

Usage: emulator_pty_test.py EMULATOR BOARD. Counts and counters only: the
time limits below guard against a hang, never measure speed.
"""
import os
import select
import signal
import subprocess
import sys
import tempfile
import termios
import tty

EMULATOR, BOARD = sys.argv[1], sys.argv[2]
HANG = 60.0  # Seconds; only a broken emulator gets near it.
LOST = 100


def read_until(fd, done, data=b""):
    while not done(data):
        ready, _, _ = select.select([fd], [], [], HANG)
        assert ready, f"no data after {len(data)} bytes"
        data += os.read(fd, 65536)
    return data


def words(data):
    assert len(data) % 4 == 0, "stream out of frame"
    return [int.from_bytes(data[k:k + 4], "little") for k in range(0, len(data), 4)]


def counter_jumps(ws):
    """(index, jump) wherever the counter doesn't follow on."""
    counters = [(w >> 18) & 63 for w in ws]
    return [(k, (counters[k] - counters[k - 1]) % 64)
            for k in range(1, len(counters)) if (counters[k] - counters[k - 1]) % 64 != 1]


def stream(fd, count):
    """Starts the stream, takes `count` words, stops it and returns every word
    sent before the metadata that follows the stop."""
    os.write(fd, b"\x06")
    data = read_until(fd, lambda d: len(d) >= 4 * count)
    os.write(fd, b"\x07\x19")
    data = read_until(fd, lambda d: d.endswith(b"END\n"), data)
    head, _, metadata = data.partition(b"Calibrated: ")
    assert metadata.startswith(b"1\n"), metadata[:40]
    # Nothing after the stop's answer: the stream has ended.
    assert not select.select([fd], [], [], 0.3)[0], "stream goes on after stop"
    return words(head)


def report(path):
    with open(path) as f:
        return dict(line.split() for line in f)


def main():
    with tempfile.TemporaryDirectory() as tmp:
        link, log, rep = (os.path.join(tmp, n) for n in ("ppk2", "commands", "report"))
        emulator = subprocess.Popen(
            [EMULATOR, "--board", BOARD, "--link", link, "--command-log", log,
             "--report", rep, "--lose", f"{LOST}@100"],
            stdout=subprocess.PIPE, text=True)
        try:
            path = emulator.stdout.readline().strip()
            assert os.path.realpath(link) == path, (link, path)
            fd = os.open(link, os.O_RDWR | os.O_NOCTTY)
            tty.setraw(fd)
            termios.tcflush(fd, termios.TCIOFLUSH)

            # Commands split anywhere: mode, then the regulator in two pieces.
            os.write(fd, b"\x11\x02\x0d\x0c")
            os.write(fd, b"\xe4\x0c\x01\x99\x19")
            metadata = read_until(fd, lambda d: d.endswith(b"END\n")).decode()
            fields = dict(line.split(": ") for line in metadata.splitlines()[:-1])
            for key in ["Calibrated", "VDD", "HW", "mode", "IA"] + [
                    f"{k}{r}" for k in ("R", "GS", "GI", "O", "S", "I", "UG") for r in range(5)]:
                assert key in fields, key
            assert fields["VDD"] == "3300" and fields["mode"] == "2", fields

            # The fault fires at 100 ms: the counter jumps exactly once, by the loss.
            first = stream(fd, 30000)
            assert counter_jumps(first) == [(10000, (LOST + 1) % 64)], counter_jumps(first)[:5]
            assert report(rep)["words_sent"] == str(len(first))
            assert report(rep)["samples_lost"] == str(LOST)

            # Faults fire once: the next stream's counter follows on throughout.
            second = stream(fd, 20000)
            assert counter_jumps(second) == [], counter_jumps(second)[:5]
            assert (second[0] >> 18) & 63 == 0
            os.write(fd, b"\x0c\x00")
            os.close(fd)
        finally:
            emulator.send_signal(signal.SIGTERM)
            assert emulator.wait(timeout=HANG) == 0
        assert not os.path.lexists(link), "link left behind"
        with open(log) as f:
            assert f.read().splitlines() == [
                "mode 2", "regulator 3300", "power 1", "unknown 0x99", "metadata",
                "start", "stop", "metadata", "start", "stop", "metadata", "power 0"]
        assert report(rep)["streams"] == "2"


main()
print("ok")
