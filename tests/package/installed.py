"""What both package tests ask of an installed zelno: the files it must hold,
and the README session run from them alone."""

import os
import subprocess
import sys

HERE = os.path.dirname(os.path.abspath(__file__))


def check(root, paths, environment):
    """Failures: each of `paths` (relative to `root`) missing, and the session's."""
    failures = [f"missing {path}" for path in paths if not os.path.isfile(os.path.join(root, path))]
    session = subprocess.run(
        [sys.executable, os.path.join(HERE, "..", "e2e", "transcript.py"),
         os.path.join(HERE, "readme_session.t")],
        env=environment, capture_output=True, text=True)
    if session.returncode != 0:
        failures.append(f"README session from {root}:\n" + session.stdout + session.stderr)
    return failures


def finish(failures):
    for failure in failures:
        print(failure)
    sys.exit(1 if failures else 0)
