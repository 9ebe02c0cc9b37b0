#!/usr/bin/env python3
"""Installs a Windows build into a temporary folder, checks what it holds and
runs the README session from the installed files alone, under Wine.

    windows_folder_test.py BUILD_DIR
"""

import os
import subprocess
import sys
import tempfile

import installed

build = sys.argv[1]
failures = []

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
    binaries = os.path.join(folder, "bin")
    for name in sorted(os.listdir(binaries)):
        sections = subprocess.run(["x86_64-w64-mingw32-objdump", "-h", os.path.join(binaries, name)],
                                  check=True, capture_output=True, text=True).stdout
        if ".debug_" in sections:
            failures.append(f"bin/{name} is not stripped")

installed.finish(failures)
