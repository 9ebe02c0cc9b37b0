#!/usr/bin/env python3
"""Builds the Debian package of a build tree, unpacks it, checks what it holds
and runs the README session from the unpacked files alone.

    package_test.py BUILD_DIR VERSION
"""

import os
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

    zelno = os.path.join(root, "usr/bin/zelno")
    if run(zelno, "-v") != f"zelno {version}\n":
        failures.append(f"zelno -v says {run(zelno, '-v')!r}")

    environment = dict(os.environ, ZELNO=zelno, ZELNO_BUILD_DIR=build,
                       ZELNO_SOURCE_DIR=os.path.join(root, "usr/share/zelno"))
    failures += installed.check(
        root, ("usr/bin/zelno", "usr/bin/zelno-plot", "usr/lib/zelno/libwattscopestandalone.so",
               "usr/lib/zelno/libtgcfgsetup.so", "usr/share/man/man1/zelno.1.gz",
               "usr/share/doc/zelno/guide.md", "usr/share/zelno/demo/board.dat",
               "usr/share/zelno/demo/limits.txt"), environment)

installed.finish(failures)
