#!/usr/bin/env python3
"""Builds the Debian package of a build tree, unpacks it, checks what it holds
and runs the README session from the unpacked files alone.

    package_test.py BUILD_DIR VERSION
"""

import gzip
import os
import re
import subprocess
import sys
import tempfile

import installed

build, version = sys.argv[1], sys.argv[2]
failures = []


def run(*command, **options):
    return subprocess.run(command, check=True, capture_output=True, text=True, **options).stdout


with tempfile.TemporaryDirectory() as scratch:
    run("cpack", "-G", "DEB", "--config", os.path.join(build, "CPackConfig.cmake"), "-B", scratch)
    debs = [name for name in os.listdir(scratch) if name.endswith(".deb")]
    if len(debs) != 1:
        sys.exit(f"expected one package, cpack made {debs}")
    deb = os.path.join(scratch, debs[0])
    root = os.path.join(scratch, "root")
    run("dpkg-deb", "-x", deb, root)

    fields = {field: run("dpkg-deb", "-f", deb, field).strip()
              for field in ("Version", "Depends", "Recommends")}
    if fields["Version"] != version:
        failures.append(f"package version {fields['Version']}, not {version}")
    if "libargtable2-0" not in fields["Depends"]:
        failures.append(f"no libargtable2-0 in Depends: {fields['Depends']}")
    if "gnuplot" not in fields["Recommends"]:
        failures.append(f"no gnuplot in Recommends: {fields['Recommends']}")

    # A warning fails too: each is cheap to fix or wants a decision.
    lint = subprocess.run(["lintian", "--fail-on", "error,warning", deb], capture_output=True, text=True)
    if lint.returncode != 0:
        failures.append("lintian:\n" + lint.stdout + lint.stderr)
    # Files alone: what dpkg -r removes is all the package leaves.
    control = run("dpkg-deb", "-I", deb)
    scripts = [name for name in ("preinst", "postinst", "prerm", "postrm") if f" {name} " in control]
    if scripts:
        failures.append(f"maintainer scripts: {scripts}")

    # Each library the package depends on has its licence named; a new
    # dependency must be added there.
    docs = os.path.join(root, "usr/share/doc/zelno")
    if os.path.isfile(os.path.join(docs, "copyright")):
        copyright_text = open(os.path.join(docs, "copyright"), encoding="utf-8").read()
        for dependency in re.findall(r"(?:^|, )([a-z0-9.+-]+)", fields["Depends"]):
            if not re.search(rf"\b{re.escape(dependency)}\b", copyright_text):
                failures.append(f"copyright names no licence for {dependency}")
    if os.path.isfile(os.path.join(docs, "changelog.gz")):
        newest = gzip.open(os.path.join(docs, "changelog.gz"), "rt", encoding="utf-8").readline()
        if not newest.startswith(f"zelno ({version}) "):
            failures.append(f"the changelog's newest entry is not {version}: {newest}")
    failures += installed.broken_links(docs)

    # The PPK2's rule: udev orders rule files by name, and the uaccess tag
    # counts only when set before 71-seat and 73-seat-late act on it; one
    # line must both tag the port and keep ModemManager off.
    rules = os.path.join(root, "usr/lib/udev/rules.d")
    names = os.listdir(rules) if os.path.isdir(rules) else []
    if not names:
        failures.append("no udev rule in usr/lib/udev/rules.d")
    for name in names:
        if not name.endswith(".rules") or name >= "71-seat.rules":
            failures.append(f"udev rule {name} does not run before 71-seat.rules")
        lines = open(os.path.join(rules, name), encoding="utf-8").read().splitlines()
        if not any(all(part in line for part in (
                'SUBSYSTEM=="tty"', 'ATTRS{idVendor}=="1915"', 'ATTRS{idProduct}=="c00a"',
                'TAG+="uaccess"', 'ENV{ID_MM_DEVICE_IGNORE}="1"')) for line in lines):
            failures.append(f"udev rule {name}: no line gives the PPK2's tty the uaccess tag and ModemManager's ignore")

    zelno = os.path.join(root, "usr/bin/zelno")
    if run(zelno, "-v") != f"zelno {version}\n":
        failures.append(f"zelno -v says {run(zelno, '-v')!r}")

    environment = dict(os.environ, ZELNO=zelno, ZELNO_BUILD_DIR=build,
                       ZELNO_SOURCE_DIR=os.path.join(root, "usr/share/zelno"))
    failures += installed.check(
        root, ("usr/bin/zelno", "usr/bin/zelno-plot", "usr/lib/zelno/libwattscopestandalone.so",
               "usr/lib/zelno/libtgcfgsetup.so", "usr/share/man/man1/zelno.1.gz",
               "usr/share/man/man1/zelno-plot.1.gz", "usr/share/doc/zelno/guide.md",
               "usr/share/doc/zelno/copyright", "usr/share/doc/zelno/changelog.gz",
               "usr/share/zelno/demo/board.dat",
               "usr/share/zelno/demo/limits.txt"), environment)

installed.finish(failures)
