#!/usr/bin/env python3
"""Installs a Windows build into a temporary folder, checks what it holds and
runs the README session from the installed files alone, under Wine.

    windows_folder_test.py BUILD_DIR OBJDUMP
"""

import os
import re
import subprocess
import sys
import tempfile

import installed

build, objdump = sys.argv[1:3]
failures = []


def c_runtimes(path):
    """The C runtime DLLs that a program or DLL imports."""
    dump = subprocess.run([objdump, "-p", path], capture_output=True,
                          text=True, check=True).stdout
    return sorted(name.lower() for name in re.findall(r"DLL Name: (\S+)", dump)
                  if re.match(r"(msvcr|ucrtbase|api-ms-win-crt)", name, re.IGNORECASE))


with tempfile.TemporaryDirectory() as folder:
    subprocess.run(["cmake", "--install", build, "--prefix", folder], check=True,
                   capture_output=True)
    # Nothing of the build tree on the way: zelno.exe must find every DLL in
    # its own folder, and the MinGW runtime is linked into each of them.
    environment = dict(os.environ, ZELNO=os.path.join(folder, "bin", "zelno.exe"),
                       ZELNO_BUILD_DIR=build, ZELNO_SOURCE_DIR=folder)
    for name in ("WINEPATH", "ZELNO_TEST_LIBRARY_DIR", "ZELNO_ARGTABLE2_DLL"):
        environment.pop(name, None)
    failures += installed.check(
        folder, ("bin/zelno.exe", "bin/argtable2.dll", "bin/wattscopestandalone.dll",
                 "bin/tgcfgsetup.dll", "demo/board.dat", "demo/limits.txt", "doc/guide.md",
                 "doc/copyright", "LICENSE"),
        environment)
    failures += installed.broken_links(os.path.join(folder, "doc"))
    # Stripped: the build tree's binaries are four fifths debug sections.
    bin_folder = os.path.join(folder, "bin")
    for name in sorted(os.listdir(bin_folder)):
        sections = subprocess.run([objdump, "-h", os.path.join(bin_folder, name)],
                                  check=True, capture_output=True, text=True).stdout
        if ".debug_" in sections:
            failures.append(f"bin/{name} is not stripped")
    # zelno.exe hands argtable2 its stderr, a FILE* of its own C runtime.
    binaries = [os.path.join(folder, "bin", name) for name in ("zelno.exe", "argtable2.dll")]
    if all(os.path.isfile(path) for path in binaries):
        runtimes = [c_runtimes(path) for path in binaries]
        if not runtimes[0] or runtimes[0] != runtimes[1]:
            failures.append(f"zelno.exe and argtable2.dll import C runtimes {runtimes}")

installed.finish(failures)
