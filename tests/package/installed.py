"""What both package tests ask of an installed zelno: the files it must hold,
and the README session of the demo transcripts run from them alone (its
@SOURCE@ stands for the folder that holds the installed demo/)."""

import os
import re
import subprocess
import sys

HERE = os.path.dirname(os.path.abspath(__file__))


def check(root, paths, environment):
    """Failures: each of `paths` (relative to `root`) missing, and the session's."""
    failures = [f"missing {path}" for path in paths if not os.path.isfile(os.path.join(root, path))]
    session = subprocess.run(
        [sys.executable, os.path.join(HERE, "..", "e2e", "transcript.py"),
         os.path.join(HERE, "..", "e2e", "demo", "readme_session.t")],
        env=environment, capture_output=True, text=True)
    if session.returncode != 0:
        failures.append(f"README session from {root}:\n" + session.stdout + session.stderr)
    return failures


def anchor(heading):
    """The fragment a Markdown renderer gives a heading."""
    return re.sub(r"[^\w\- ]", "", heading.strip().lower()).replace(" ", "-")


def broken_links(folder):
    """Relative links of the Markdown files in `folder` that lead outside it,
    to no file, or to no heading of the file."""
    broken = []
    names = [name for name in os.listdir(folder) if name.endswith(".md")]
    for name in names:
        text = open(os.path.join(folder, name), encoding="utf-8").read()
        for target in re.findall(r"\]\(([^)\s]+)\)", text):
            if re.match(r"[a-z]+:", target):
                continue
            path, _, fragment = target.partition("#")
            linked = os.path.normpath(os.path.join(folder, path or name))
            inside = os.path.commonpath([linked, os.path.normpath(folder)]) == os.path.normpath(folder)
            if not inside or not os.path.isfile(linked):
                broken.append(f"{name}: {target}: no such file in the folder")
            elif fragment and linked.endswith(".md"):
                headings = re.findall(r"^#+ (.*)$", open(linked, encoding="utf-8").read(), re.M)
                if fragment not in map(anchor, headings):
                    broken.append(f"{name}: {target}: no such heading")
    return broken


def finish(failures):
    for failure in failures:
        print(failure)
    sys.exit(1 if failures else 0)
