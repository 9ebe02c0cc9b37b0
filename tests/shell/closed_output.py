"""Output into a pipe whose reader has gone: zelno's writes fail, and it still
reads its input to the end and ends with status 0, in both modes."""
import os
import subprocess
import sys

read_end, write_end = os.pipe()
os.close(read_end)
statuses = [subprocess.run([sys.argv[1], *args], input=b"foo\nhelp\n", stdout=write_end,
                           stderr=write_end).returncode for args in ([], ["-x"])]
print("statuses:", statuses)
sys.exit(statuses != [0, 0])
