"""Finding USB serial ports in a umockdev testbed of fake PPK2s (USB device,
CDC-ACM interfaces, ttys backed by pseudo-terminals), with list_usb_serial,
and zelno's `--device ppk2` with the PPK2 emulator behind the fake tty.
Usage: /usr/bin/python3 discovery_test.py LIST_USB_SERIAL ZELNO EMULATOR BOARD;
77 is a skip."""

import os
import subprocess
import sys
import unittest

PRELOAD = "libumockdev-preload.so.0"
try:
    import gi

    gi.require_version("UMockdev", "1.0")
    from gi.repository import UMockdev
except (ImportError, ValueError) as error:
    print(f"skipped: umockdev's Python bindings are missing ({error})")
    sys.exit(77)
PROGRAM, ZELNO, EMULATOR, BOARD = sys.argv[1:5]
del sys.argv[1:5]


def add_ppk2(testbed, number, serial, interfaces=(0,), udevd=True, vid="1915", pid="c00a"):
    """Properties as udev sets them for CDC-ACM, or only sysfs's attributes
    where no udevd runs (containers). Returns the ttys' paths."""
    usb = testbed.add_device("usb", f"1-{number}", None,
                             ["idVendor", vid, "idProduct", pid, "serial", serial],
                             ["DEVTYPE", "usb_device"])
    nodes = []
    for interface in interfaces:
        node = f"/dev/ttyACM{number * 2 + interface // 2}"
        parent = testbed.add_device("usb", f"1-{number}:1.{interface}", usb,
                                    ["bInterfaceNumber", f"{interface:02x}"],
                                    ["DEVTYPE", "usb_interface"])
        udev = (f"E: ID_VENDOR_ID={vid}\nE: ID_MODEL_ID={pid}\nE: ID_SERIAL_SHORT={serial}\n"
                f"E: ID_USB_INTERFACE_NUM={interface:02x}\n")
        # A node with no contents is backed by a pty: get_dev_fd() is its master.
        testbed.add_from_string(f"P: {parent[4:]}/{node[5:]}\nN: {node[5:]}\n"
                                f"E: SUBSYSTEM=tty\nE: DEVNAME={node}\n" + (udev if udevd else ""))
        nodes.append(node)
    return nodes


class Discovery(unittest.TestCase):
    def new_testbed(self):
        # One at a time: a testbed that goes away unsets UMOCKDEV_DIR.
        self.testbed = None
        self.testbed = UMockdev.Testbed.new()

    def run_in_testbed(self, *args):
        return subprocess.Popen([PROGRAM, *args], stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                env=dict(os.environ, UMOCKDEV_DIR=self.testbed.get_root_dir()))

    def test_lists_the_matching_ports(self):
        ppk2 = ("1915", "c00a")
        # One PPK2, and its port carrying bytes, are zelno's case below.
        cases = [  # name, devices (serial, interfaces[, udevd]), IDs asked, expected
            ("two", [("B2", (0,)), ("A1", (0,))], ppk2, ["/dev/ttyACM4 A1 0", "/dev/ttyACM2 B2 0"]),
            ("two interfaces", [("A1", (0, 2))], ppk2, ["/dev/ttyACM2 A1 0", "/dev/ttyACM3 A1 2"]),
            ("two interfaces, no udevd", [("A1", (0, 2), False)], ppk2,
             ["/dev/ttyACM2 A1 0", "/dev/ttyACM3 A1 2"]),
            ("another kind", [("X9", (0,))], ("1915", "0001"), []),
        ]
        for name, devices, ids, expected in cases:
            with self.subTest(name):
                self.new_testbed()
                for number, device in enumerate(devices, start=1):
                    add_ppk2(self.testbed, number, *device)
                out, err = self.run_in_testbed(*ids).communicate(timeout=60)
                self.assertEqual((out.decode().splitlines(), err), (expected, b""))

    def test_zelno_finds_the_one_ppk2_attached(self):
        connect = f"connect --device ppk2 --config {BOARD} hosted\n"
        cases = [  # name, devices, expected output, expected errors
            ("none", [], "",
             "wattscope: no PPK2 found; attach one, or name its port with --device ppk2:PORT\n"),
            ("two", [("A1", (0,)), ("B2", (0,))], "",
             "wattscope: several PPK2s found (/dev/ttyACM2 of A1, /dev/ttyACM4 of B2); "
             "pick one with --device ppk2:PORT\n"),
            ("one", [("A1", (0,))], "Stopping wattscope after 500ms\n", ""),
        ]
        for name, devices, expected_out, expected_err in cases:
            with self.subTest(name):
                self.new_testbed()
                nodes = [add_ppk2(self.testbed, n, *d)[0] for n, d in enumerate(devices, start=1)]
                emulators = []
                if len(nodes) == 1:
                    master = self.testbed.get_dev_fd(nodes[0])
                    emulators.append(subprocess.Popen(
                        [EMULATOR, "--board", BOARD, "--fd", str(master)], pass_fds=[master],
                        stdout=subprocess.DEVNULL))
                zelno = subprocess.Popen(
                    [ZELNO, "--script", "-"], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                    stderr=subprocess.PIPE, text=True, cwd=os.path.dirname(BOARD),
                    env=dict(os.environ, UMOCKDEV_DIR=self.testbed.get_root_dir()))
                out, err = zelno.communicate(connect + "wattscope -o /dev/null -s 1000 -D 500 ws\n",
                                             timeout=60)
                for emulator in emulators:
                    emulator.terminate()
                    emulator.wait(timeout=60)
                self.assertEqual(err, expected_err)
                self.assertEqual(out.split("\n")[0] + "\n" if out else "", expected_out)
                if expected_out:
                    self.assertRegex(out, r"500 samples in .* 0 dropped\n$")


if __name__ == "__main__":
    # The testbed works only under umockdev's preload, which children inherit.
    if PRELOAD not in os.environ.get("LD_PRELOAD", ""):
        env = dict(os.environ, LD_PRELOAD=PRELOAD)
        check = subprocess.run(["/bin/true"], env=env, stderr=subprocess.PIPE)
        if check.returncode != 0 or check.stderr:
            print(f"skipped: umockdev's preload can't run here: {check.stderr.decode()}")
            sys.exit(77)
        os.execve(sys.executable,
                  [sys.executable, __file__, PROGRAM, ZELNO, EMULATOR, BOARD, *sys.argv[1:]], env)
    unittest.main()
