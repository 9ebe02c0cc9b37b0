"""Finding USB serial ports under umockdev: a testbed with fake PPK2s (USB
device, CDC-ACM interface, tty), and list_usb_serial run in it.

Usage: /usr/bin/python3 discovery_test.py LIST_USB_SERIAL
Exits 77 (skipped) when umockdev can't run here."""

import os
import select
import subprocess
import sys
import unittest

try:
    import gi

    gi.require_version("UMockdev", "1.0")
    from gi.repository import UMockdev
except (ImportError, ValueError) as error:
    print(f"skipped: umockdev's Python bindings are missing ({error})")
    sys.exit(77)

PROGRAM = sys.argv.pop(1) if len(sys.argv) > 1 else "list_usb_serial"
PRELOAD = "libumockdev-preload.so.0"


def add_ppk2(testbed, number, serial, interfaces=(0,), vid="1915", pid="c00a", udevd=True):
    """A USB device with a tty for each interface, its properties as udev
    sets them for CDC-ACM (none without udevd, as in containers, where only
    sysfs tells). Returns the ttys' device paths."""
    usb = testbed.add_device(
        "usb", f"1-{number}", None,
        ["idVendor", vid, "idProduct", pid, "serial", serial],
        ["DEVTYPE", "usb_device", "ID_VENDOR_ID", vid, "ID_MODEL_ID", pid])
    nodes = []
    for interface in interfaces:
        node = f"/dev/ttyACM{number * 2 + interface // 2}"
        usb_interface = testbed.add_device(
            "usb", f"1-{number}:1.{interface}", usb,
            ["bInterfaceNumber", f"{interface:02x}", "bInterfaceClass", "02"],
            ["DEVTYPE", "usb_interface"])
        # A node line with no contents makes umockdev back the tty with a
        # pseudo-terminal whose master get_dev_fd() gives.
        name = os.path.basename(node)
        described = (f"E: ID_VENDOR_ID={vid}\nE: ID_MODEL_ID={pid}\nE: ID_SERIAL_SHORT={serial}\n"
                     f"E: ID_USB_INTERFACE_NUM={interface:02x}\nE: ID_USB_DRIVER=cdc_acm\n")
        testbed.add_from_string(
            f"P: {usb_interface[len('/sys'):]}/{name}\nN: {name}\n"
            f"E: SUBSYSTEM=tty\nE: DEVNAME={node}\n" + (described if udevd else ""))
        nodes.append(node)
    return nodes


def run_in(testbed, *args):
    env = dict(os.environ, UMOCKDEV_DIR=testbed.get_root_dir())
    return subprocess.Popen([PROGRAM, *args], env=env, stdout=subprocess.PIPE,
                            stderr=subprocess.PIPE)


def listing(testbed, vid="1915", pid="c00a"):
    program = run_in(testbed, vid, pid)
    out, err = program.communicate(timeout=60)
    if program.returncode != 0:
        raise AssertionError(f"list_usb_serial failed: {err.decode()}")
    return out.decode().splitlines()


class Discovery(unittest.TestCase):
    def setUp(self):
        self.fresh_testbed()

    def fresh_testbed(self):
        # One at a time: a testbed that goes away takes the preload's
        # UMOCKDEV_DIR with it, even when another has set it since.
        self.testbed = None
        self.testbed = UMockdev.Testbed.new()

    def test_finds_what_matches_and_only_that(self):
        cases = [
            ("one", [("A1", (0,))], ["/dev/ttyACM2 A1 0"]),
            ("one, no udevd", [("A1", (0,), False)], ["/dev/ttyACM2 A1 0"]),
            ("two", [("B2", (0,)), ("A1", (0,))], ["/dev/ttyACM4 A1 0", "/dev/ttyACM2 B2 0"]),
            ("two interfaces", [("A1", (0, 2))], ["/dev/ttyACM2 A1 0", "/dev/ttyACM3 A1 2"]),
            ("two interfaces, no udevd", [("A1", (0, 2), False)],
             ["/dev/ttyACM2 A1 0", "/dev/ttyACM3 A1 2"]),
        ]
        for name, devices, expected in cases:
            with self.subTest(name):
                self.fresh_testbed()
                for number, device in enumerate(devices, start=1):
                    add_ppk2(self.testbed, number, *device[:2], udevd=device[2:] != (False,))
                self.assertEqual(listing(self.testbed), expected)

    def test_other_devices_are_left_out(self):
        add_ppk2(self.testbed, 1, "X9", pid="0001")
        add_ppk2(self.testbed, 2, "Y8", vid="1366", pid="1015")
        self.assertEqual(listing(self.testbed), [])
        self.assertEqual(listing(self.testbed, "1366", "1015"), ["/dev/ttyACM4 Y8 0"])

    def test_the_port_found_carries_bytes(self):
        node = add_ppk2(self.testbed, 1, "A1")[0]
        try:
            master = self.testbed.get_dev_fd(node)
        except Exception as error:  # Older umockdev emulates no tty.
            self.skipTest(f"umockdev gives no pseudo-terminal for a tty here: {error}")
        program = run_in(self.testbed, "--echo", node)
        try:
            self.assertEqual(program.stdout.readline(), b"open\n")
            os.write(master, b"\x00\x19\r\xff\n")
            reply = b""
            while not reply.endswith(b"\n"):
                ready, _, _ = select.select([master], [], [], 30)
                self.assertTrue(ready, f"no reply, only {reply!r}")
                reply += os.read(master, 64)
            self.assertEqual(reply, b"echo:\x00\x19\r\xff\n")
        finally:
            program.communicate(timeout=60)
        self.assertEqual(program.returncode, 0)


def under_preload():
    """The testbed works only in a process under umockdev's preload (which
    its children inherit): runs this script anew under it, once."""
    if PRELOAD in os.environ.get("LD_PRELOAD", ""):
        return
    probe = subprocess.run(["/bin/true"], env=dict(os.environ, LD_PRELOAD=PRELOAD),
                           stderr=subprocess.PIPE)
    if probe.returncode != 0 or probe.stderr:
        print(f"skipped: umockdev's preload library can't run here: {probe.stderr.decode()}")
        sys.exit(77)
    os.execve(sys.executable, [sys.executable, __file__, PROGRAM, *sys.argv[1:]],
              dict(os.environ, LD_PRELOAD=PRELOAD))


if __name__ == "__main__":
    under_preload()
    unittest.main()
