# Into a pipe whose reader is gone, zelno's writes fail; it reads on, ends with 0.
import os
import subprocess
import sys

read_end, write_end = os.pipe()
os.close(read_end)
statuses = [subprocess.run([*sys.argv[1:], *args], input=b"foo\nhelp\n", stdout=write_end,
                           stderr=write_end).returncode for args in ([], ["-x"])]
print("statuses:", statuses)
sys.exit(statuses != [0, 0])
