#!/usr/bin/python3
"""zelno against the PPK2 emulator: captures, faults, power, prodtest, refusals.

Usage: ppk2_session_test.py ZELNO EMULATOR DEMO_DIR. Each case starts an
emulator on a pseudo-terminal of its own, runs `zelno --script -` on piped
lines in a scratch folder, and compares what zelno printed exactly, its
figures with the emulator's own and the commands the emulator received.
The time limits only guard against a hang.
"""
import os
import pty
import re
import signal
import subprocess
import sys
import tempfile
import time

ZELNO, EMULATOR, DEMO = sys.argv[1], sys.argv[2], sys.argv[3]
HANG = 60.0
BOARD = open(os.path.join(DEMO, "board.dat")).read()
PROBE_BOARD = BOARD + "powered_by probe\ntrigger_input D3\n"


class Emulator:
    def __init__(self, folder, board, *options):
        self.folder = folder
        with open(os.path.join(folder, "emulated.dat"), "w") as f:
            f.write(board)
        self.process = subprocess.Popen(
            [EMULATOR, "--board", "emulated.dat", "--report", "report.txt",
             "--command-log", "commands.txt", *options],
            cwd=folder, stdout=subprocess.PIPE, text=True)
        self.port = self.process.stdout.readline().strip()
        assert self.port.startswith("/dev/"), self.port

    def stop(self):
        self.process.send_signal(signal.SIGTERM)
        self.process.wait(HANG)

    def commands(self):
        with open(os.path.join(self.folder, "commands.txt")) as f:
            return f.read().split("\n")[:-1]

    def report(self):
        with open(os.path.join(self.folder, "report.txt")) as f:
            return {k: float(v) for k, v in (line.split() for line in f)}


def zelno(folder, lines, interrupt_when=None, then=None):
    """Runs the lines; with `interrupt_when`, once it is true, calls `then`
    (by default sends zelno SIGINT)."""
    process = subprocess.Popen([ZELNO, "--script", "-"], cwd=folder, stdin=subprocess.PIPE,
                               stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
    if interrupt_when:
        process.stdin.write(lines)
        process.stdin.flush()
        deadline = time.monotonic() + HANG
        while not interrupt_when():
            assert time.monotonic() < deadline, "the capture never began"
            time.sleep(0.05)
        (then or (lambda: process.send_signal(signal.SIGINT)))()
        lines = ""
    out, err = process.communicate(lines, timeout=HANG)
    return process.returncode, out, err


def rows(folder, name):
    with open(os.path.join(folder, name)) as f:
        return [line.rstrip("\n").split(",") for line in f if line[0].isdigit()]


def connect(port, board="emulated.dat"):
    return f"connect --device ppk2:{port} --config {board} hosted\n"


SUMMARY = re.compile(r"wattscope: (\S+): (\d+) samples in \S+ s \((.*?)\), mean (\S+ \S+), "
                     r"peak (\S+ \S+), charge (\S+ \S+), energy (\S+ \S+), (\d+) dropped\n")
UNITS = {"A": 1, "mA": 1e-3, "uA": 1e-6, "nA": 1e-9, "C": 1, "mC": 1e-3, "uC": 1e-6,
         "J": 1, "mJ": 1e-3, "uJ": 1e-6}


def near(printed, exact, what):
    """A printed figure equals an exact one up to its last printed digit."""
    number, unit = printed.split()
    digits = len(number.split(".")[1]) if "." in number else 0
    allowed = (0.5 * 10 ** -digits + 1e-9) * UNITS[unit]
    assert abs(float(number) * UNITS[unit] - exact) <= allowed, f"{what}: {printed} vs {exact}"


def test_captures_agree_with_the_emulator(folder):
    """Every rate gives its rows, min and max below 100000, and the emulator's figures."""
    for rate in (100000, 1000, 3):
        emulator = Emulator(folder, BOARD, "--report-samples", "300000")
        code, out, err = zelno(folder, connect(emulator.port) +
                               f"wattscope -o f.csv -s {rate} -D 3000 ws\n")
        emulator.stop()
        assert (code, err) == (0, ""), (rate, code, err)
        assert out.startswith("Stopping wattscope after 3000ms\n"), out
        name, count, end, mean, peak, charge, energy, dropped = SUMMARY.fullmatch(
            out.split("\n", 1)[1]).groups()
        assert (name, int(count), end, int(dropped)) == ("f.csv", 3 * rate, "duration reached", 0)
        figures = emulator.report()
        assert figures["samples_decoded"] == 300000, figures
        near(mean, figures["mean_current_a"], f"mean at {rate}")
        near(peak, figures["peak_current_a"], f"peak at {rate}")
        near(charge, figures["charge_c"], f"charge at {rate}")
        near(energy, figures["energy_j"], f"energy at {rate}")
        table = rows(folder, "f.csv")
        assert len(table) == 3 * rate and table[-1][0] == str(3 * rate - 1)
        assert len(table[0]) == (7 if rate == 100000 else 9), table[0]
        # The file's own sums: a period's mean times its length.
        charge_in_file = sum(float(r[2]) for r in table) / rate
        allowed = 3 * 0.5e-9 + (1e-6 if rate == 3 else 0)  # Rounding; unequal periods at 3/s.
        assert abs(charge_in_file - figures["charge_c"]) <= allowed * 1.0001, (rate, charge_in_file)
        assert abs(float(table[-1][5]) - figures["energy_j"]) <= 1e-8 + 3.3 * allowed, (
            rate, table[-1][5], figures["energy_j"])


def test_lost_and_slipped_samples_are_counted_exactly(folder):
    """A jump of the counter and a short word: gaps in `sample`, and dropped counts them."""
    emulator = Emulator(folder, BOARD, "--lose", "37@500", "--slip", "1200")
    code, out, err = zelno(folder, connect(emulator.port) + "wattscope -o f.csv -s 100000 -D 2000 ws\n")
    emulator.stop()
    assert (code, err) == (0, ""), err
    figures = emulator.report()
    lost = int(figures["samples_lost"] + figures["words_slipped"])
    assert lost == 38, figures
    assert out.endswith(f", {lost} dropped\n"), out
    indices = [int(r[0]) for r in rows(folder, "f.csv")]
    assert len(indices) == 200000 - lost and indices[-1] == 199999
    assert sum(b - a - 1 for a, b in zip(indices, indices[1:])) == lost


def test_the_probe_powers_the_target_only_while_measuring(folder):
    """Source mode from a trigger to the duration, then to Ctrl+C: off at each end."""
    emulator = Emulator(folder, PROBE_BOARD, "--rise", "D3@300")
    csv = os.path.join(folder, "g.csv")
    code, out, err = zelno(
        folder, connect(emulator.port) + "wattscope -o t.csv -s 100 -D 1000 --trig ws\n"
        "wattscope -o g.csv -s 1000 ws\n",
        interrupt_when=lambda: os.path.exists(csv) and os.path.getsize(csv) > 2000)
    emulator.stop()
    assert (code, err) == (2, "wattscope: note: g.csv keeps the last 2000 s of samples (range lo); "
                           "--saveall keeps them all\n"), (code, err)
    assert re.fullmatch(r"Stopping wattscope after 1000ms\n"
                        r"wattscope: t.csv: 100 samples in 1.000 s \(duration reached\), .*\n"
                        r"wattscope: g.csv: \d+ samples in \S+ s \(stopped\), .*, 0 dropped\n",
                        out), out
    session = ["mode 2", "regulator 3300", "power 1", "start", "stop", "power 0"]
    assert emulator.commands() == ["stop", "metadata"] + session + ["stop", "metadata"] + session
    # The trigger: the first row holds the edge, when the target wakes.
    first = rows(folder, "t.csv")[0]
    assert float(first[8]) > 1e-3 > float(first[7]), first


def test_a_ppk2_unplugged_ends_the_capture_and_keeps_its_rows(folder):
    emulator = Emulator(folder, BOARD)
    csv = os.path.join(folder, "u.csv")
    code, out, err = zelno(folder, connect(emulator.port) + "wattscope -o u.csv -s 1000 ws\n",
                           interrupt_when=lambda: os.path.exists(csv) and os.path.getsize(csv) > 2000,
                           then=emulator.stop)
    assert (code, err) == (2, "wattscope: note: u.csv keeps the last 2000 s of samples (range lo); "
                           "--saveall keeps them all\nwattscope: the PPK2 stopped answering: "
                           f"the port '{emulator.port}' is gone\n"), (code, err)
    count = int(re.fullmatch(r"wattscope: u.csv: (\d+) samples in \S+ s \(probe error\), .*\n",
                             out).group(1))
    assert len(rows(folder, "u.csv")) == count > 0


def test_prodtest_measures_what_a_ppk2_can(folder):
    emulator = Emulator(folder, BOARD)
    with open(os.path.join(folder, "limits.txt"), "w") as f:
        f.write(open(os.path.join(DEMO, "limits.txt")).read())
    code, out, err = zelno(folder, connect(emulator.port) + "prodtest -i limits.txt\n")
    emulator.stop()
    assert (code, err) == (1, ""), (code, err)
    assert out == (
        f"prodtest: supply_voltage is not measured by the PPK2 at {emulator.port}: ERROR\n"
        "prodtest: mean_current 2.467 mA, expected 2.47 mA +/- 3%: PASS\n"
        "prodtest: no sample of sleep_current in the 2 s measured: ERROR\n"
        "prodtest: no sample of active_current in the 2 s measured: ERROR\n"
        "prodtest: peak_current 17.00 mA, expected 17.5 mA +/- 8%: PASS\n"
        "prodtest: mean_power 8.142 mW, expected 8.12 mW +/- 3%: PASS\n"
        "prodtest: cycle_energy 0.8142 mJ, expected 0.812 mJ +/- 3%: PASS\n"
        "prodtest: ERROR, 2 of 7 parameters without a sample, 1 not measured by the probe "
        "(report limits.junit.xml)\n"), out
    assert emulator.commands()[-3:] == ["power 1", "start", "stop"], emulator.commands()


# The demo board's cycle marked by its firmware: a mode (sleep, radio_rx),
# functions, no mark (0) and a code with no marker line (9), one step a mode.
MARKED_BOARD = BOARD + "".join(f"marker {code} {name}\n" for code, name in (
    (1, "sleep"), (2, "clock_init"), (3, "adc_read"), (4, "compress_frame"),
    (5, "radio_send"), (6, "radio_rx")))
SCHEDULE = "1:70000,2:3000,3:10000,0:2000,4:5000,5:6000,9:2000,6:2000"
NAMED = {1: "sleep", 2: "clock_init", 3: "adc_read", 4: "compress_frame", 5: "radio_send",
         6: "radio_rx", 0: "-", 9: "-"}


def by_name(figures):
    """The emulator's sums of each code, gathered by what the board names it."""
    sums = {}
    for code, name in NAMED.items():
        samples, amperes = sums.get(name, (0, 0.0))
        sums[name] = (samples + int(figures.get(f"code.{code}.samples", 0)),
                      amperes + figures.get(f"code.{code}.sum_a", 0.0))
    return sums


def test_marks_give_energy_by_function(folder):
    """Every device sample counts under its own code at any rate; a row names what held longest."""
    for rate in (100000, 3):
        emulator = Emulator(folder, MARKED_BOARD, "--logic", SCHEDULE, "--report-samples", "300000")
        code, out, err = zelno(folder, connect(emulator.port) +
                               f"wattscope -o m.csv -s {rate} -D 3000 ws+\n")
        emulator.stop()
        assert (code, err) == (0, ""), (rate, code, err)
        figures = emulator.report()
        sums = by_name(figures)
        volts = figures["voltage_v"]
        with open(os.path.join(folder, "m.csv.functions.csv")) as f:
            table = [line.rstrip("\n").split(",") for line in f][1:]
        assert {r[0] for r in table} == set(sums), table
        for name, samples, seconds, _, mean, charge, energy, _ in table:
            expected, amperes = sums[name]
            assert int(samples) == expected, (rate, name, samples, expected)
            assert abs(float(seconds) - expected * 1e-5) <= 0.5e-9, (rate, name, seconds)
            assert abs(float(mean) - amperes / expected) <= 0.5e-9 + 1e-12, (rate, name, mean)
            assert abs(float(charge) - amperes * 1e-5) <= 0.5e-9 + 1e-12, (rate, name, charge)
            assert abs(float(energy) - amperes * 1e-5 * volts) <= 0.5e-9 + 1e-12, (rate, name)
        top = re.search(r"; energy by function: (.*); table in m\.csv\.functions\.csv\n$", out)
        shown = [item.rsplit(" ", 2) for item in top.group(1).split(", ")]
        assert [n for n, _, _ in shown] == [r[0] for r in table if r[0] != "-"][:5], (out, table)
        for name, number, unit in shown:
            near(f"{number} {unit}", sums[name][1] * 1e-5 * volts, f"{name} at {rate}")
        written = rows(folder, "m.csv")
        assert {r[-2] for r in written} == {"-"}, written[0]
        names = [r[-1] for r in written]
        if rate == 100000:
            assert all(names.count(n) == sums[n][0] for n in sums), rate
        else:
            assert names == ["sleep"] * 9, names  # 70 % of every third of a second.


def test_prodtest_takes_sleep_and_active_from_marks(folder):
    emulator = Emulator(folder, MARKED_BOARD, "--logic", SCHEDULE, "--report-samples", "200000")
    with open(os.path.join(folder, "limits.txt"), "w") as f:
        f.write("measure 2 s\nsleep_current 17 2 uA\nactive_current 7.8 5% mA\n")
    code, out, err = zelno(folder, connect(emulator.port) + "prodtest -i limits.txt\n")
    emulator.stop()
    assert (code, err) == (0, ""), (code, out, err)
    sums = by_name(emulator.report())
    active = [sums[n] for n in ("clock_init", "adc_read", "compress_frame", "radio_send",
                                "radio_rx")]
    sleep = re.search(r"prodtest: sleep_current (\S+ \S+), expected 17 uA \+/- 2 uA: PASS\n", out)
    awake = re.search(r"prodtest: active_current (\S+ \S+), expected 7.8 mA \+/- 5%: PASS\n", out)
    assert sleep and awake, out
    near(sleep.group(1), sums["sleep"][1] / sums["sleep"][0], "sleep_current")
    near(awake.group(1), sum(a for _, a in active) / sum(n for n, _ in active), "active_current")


def test_refusals(folder):
    """A port in use, not a terminal, or silent (the options a PPK2 refuses: ppk2_device.t)."""
    emulator = Emulator(folder, BOARD)
    silent, silent_port = pty.openpty()  # A terminal nobody answers on.
    silent_path = os.ttyname(silent_port)
    code, out, err = zelno(
        folder, connect(emulator.port) +
        "wattscope -o a.csv -s 10 -D 500 ws ; wattscope -o b.csv -D 500 ws\n"
        "disconnect\n" + connect("/dev/null", "emulated.dat") +
        "wattscope -o c.csv -D 500 ws\ndisconnect\n" + connect(silent_path) +
        "wattscope -o c.csv -D 500 ws\n")
    emulator.stop()
    os.close(silent)
    os.close(silent_port)
    assert code == 3 and out.startswith("Stopping wattscope after 500ms\n"), (code, out)
    assert err == (
        f"wattscope: can't open the port '{emulator.port}': it is already in use\n"
        "wattscope: can't open the port '/dev/null': it is not a terminal device\n"
        f"wattscope: no PPK2 answers at '{silent_path}': no metadata from the device within "
        "1000 ms: not a PPK2, or not its data port\n"), err
    assert not os.path.exists(os.path.join(folder, "b.csv"))
    assert not os.path.exists(os.path.join(folder, "c.csv"))


def main():
    failed = 0
    for name, case in sorted(globals().items()):
        if name.startswith("test_"):
            with tempfile.TemporaryDirectory(prefix="ppk2-session-") as folder:
                try:
                    case(folder)
                    print(f"{name}: ok")
                except AssertionError as e:
                    failed += 1
                    print(f"{name}: FAILED {e}")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
