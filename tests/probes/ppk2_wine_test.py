"""zelno.exe measuring through a PPK2 under Wine: the emulator (the Linux
build's) on a pseudo-terminal that Wine maps to a COM port
($WINEPREFIX/dosdevices/comN -> /dev/pts/M).
Usage: python3 ppk2_wine_test.py WINE... ZELNO_EXE EMULATOR BOARD; 77 is a skip."""

import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile

*WINE, ZELNO, EMULATOR, BOARD = sys.argv[1:]
if not os.access(EMULATOR, os.X_OK):
    print(f"skipped: no ppk2-emulator at {EMULATOR}; build the default preset first")
    sys.exit(77)

with tempfile.TemporaryDirectory(prefix="ppk2-wine-") as folder:
    shutil.copy(BOARD, os.path.join(folder, "board.dat"))
    emulator = subprocess.Popen([EMULATOR, "--board", "board.dat", "--command-log", "commands.txt"],
                                cwd=folder, stdout=subprocess.PIPE, text=True)
    number = 100 + os.getpid() % 800  # This run's own, above a machine's.
    link = os.path.join(os.environ.get("WINEPREFIX", os.path.expanduser("~/.wine")),
                        "dosdevices", f"com{number}")
    if os.path.lexists(link):
        os.unlink(link)
    os.symlink(emulator.stdout.readline().strip(), link)
    try:
        done = subprocess.run(
            WINE + [ZELNO, "--script", "-"], cwd=folder, capture_output=True, text=True,
            timeout=120, env=dict(os.environ, WINEDEBUG="-all"),
            input=f"connect --device ppk2:COM{number} --config board.dat hosted\n"
                  "wattscope -o f.csv -s 1000 -D 1000 ws\n"
                  "wattscope -o g.csv -D 1000 ws\n"
                  "disconnect\nconnect --device ppk2:COM99 --config board.dat hosted\n"
                  "wattscope -o g.csv -D 1000 ws\n")
    finally:
        os.unlink(link)
        emulator.send_signal(signal.SIGTERM)
        emulator.wait(60)
    failures = []
    if not re.fullmatch(r"Stopping wattscope after 1000ms\r?\n"
                        r"wattscope: f.csv: 1000 samples in 1.000 s \(duration reached\), "
                        r"mean \S+ mA, peak 17.00 mA, .*, 0 dropped\r?\n"
                        r"Stopping wattscope after 1000ms\r?\n"
                        r"wattscope: g.csv: 2000 samples .*, 0 dropped\r?\n", done.stdout):
        failures.append(f"output: {done.stdout!r}")
    if done.stderr.replace("\r", "") != "wattscope: can't open the port 'COM99': there is no such port\n":
        failures.append(f"errors: {done.stderr!r}")
    with open(os.path.join(folder, "commands.txt")) as f:
        commands = f.read().split()
    if commands != ["stop", "metadata", "mode", "1", "power", "1", "start", "stop"] * 2:
        failures.append(f"commands: {commands}")
    print("\n".join(failures) or "zelno.exe measured through the COM port")
    sys.exit(1 if failures else 0)
