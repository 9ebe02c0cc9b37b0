#!/usr/bin/env python3
"""scripts/apt-deb-src: the deb-src entries it derives from apt source files.

    apt_deb_src_test.py SOURCE_DIR
"""

import os
import subprocess
import sys
import tempfile

script = os.path.join(sys.argv[1], "scripts", "apt-deb-src")

# (file name, its text, the entries expected for the suite "bookworm")
CASES = [
    ("options.list",
     "deb [arch=amd64 signed-by=/k.gpg] http://m.example/debian bookworm main contrib # note\n"
     "# deb http://m.example/debian bookworm main\n"
     "deb http://m.example/debian bookworm-updates main\n"
     "deb-src http://m.example/debian bookworm main\n"
     "  deb\thttp://n.example/debian   bookworm main\n",
     "deb-src [arch=amd64 signed-by=/k.gpg] http://m.example/debian bookworm main contrib\n"
     "deb-src http://n.example/debian bookworm main\n"),
    ("inline-key.sources",
     "# mirror\nTypes: deb\nURIs: http://m.example/debian\nSuites: bookworm bookworm-updates\n"
     "Components: main\nSigned-By:\n -----BEGIN PGP PUBLIC KEY BLOCK-----\n .\n KEY\n\n"
     "Types: deb\nURIs: http://m.example/security\nSuites: bookworm-security\nComponents: main\n",
     "Types: deb-src\nURIs: http://m.example/debian\nSuites: bookworm\nComponents: main\n"
     "Signed-By:\n -----BEGIN PGP PUBLIC KEY BLOCK-----\n .\n KEY\n"),
    ("skipped.sources",
     "Types: deb\nEnabled: no\nURIs: http://m.example/debian\nSuites: bookworm\nComponents: main\n\n"
     "Types: deb-src\nURIs: http://m.example/debian\nSuites: bookworm\nComponents: main\n\n"
     "Types: deb\nURIs: http://m.example/other\nSuites: nodistro\nComponents: main\n",
     ""),
]

failures = []
with tempfile.TemporaryDirectory() as scratch:
    for name, text, expected in CASES:
        path = os.path.join(scratch, name)
        with open(path, "w") as f:
            f.write(text)
        derived = subprocess.run([script, "bookworm", path], capture_output=True, text=True)
        if derived.returncode != 0 or derived.stdout != expected:
            failures.append(f"{name}: status {derived.returncode}\n{derived.stdout}{derived.stderr}"
                            f"--- expected\n{expected}")
for failure in failures:
    print(failure)
sys.exit(1 if failures else 0)
