# zelno in hostile surroundings: each row must end with its status, whole
# files and no hang. Into a pipe whose reader is gone, zelno's writes fail; it
# reads on, ends with 0.
import os
import resource
import select
import shutil
import signal
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
COMMAND = sys.argv[1:]
# Wine neither passes a closed descriptor or a size limit on as such, nor
# opens a host FIFO without waiting: the other rows are POSIX only.
WINDOWS = COMMAND[-1].endswith(".exe")
CONNECT = "connect --config board.dat hosted\n"


def run(args, stdin, work, close=(), file_limit=None, threads=None):
    def surroundings():
        for descriptor in close:
            os.close(descriptor)
        if file_limit is not None:
            resource.setrlimit(resource.RLIMIT_FSIZE, (file_limit, file_limit))

    env = dict(os.environ)
    if threads is not None:
        env["LD_PRELOAD"] = os.path.join(os.environ["ZELNO_TEST_LIBRARY_DIR"], "thread_limit",
                                         "libthread_limit.so")
        env["ZELNO_THREADS_ALLOWED"] = str(threads)
        # Preloaded ahead of the sanitizer, whose pthread_create it calls on.
        env["ASAN_OPTIONS"] = env.get("ASAN_OPTIONS", "") + ":verify_asan_link_order=0"
    read_end, write_end = os.pipe()
    os.close(read_end)
    process = subprocess.run([*COMMAND, *args], input=stdin.encode(), cwd=work, timeout=60,
                             stdout=write_end if close == () else subprocess.PIPE,
                             stderr=subprocess.PIPE, preexec_fn=surroundings, env=env)
    os.close(write_end)
    return process.returncode, process.stderr.decode()


def read(work, name):
    with open(os.path.join(work, name), encoding="latin-1") as f:
        return f.read()


# (name, args, input, surroundings, status, stderr holds, check of the work directory)
ROWS = [
    ("stdout to a pipe with no reader", [], "foo\nhelp\n", {}, 0, "", None),
    ("the same in option mode", ["-x"], "", {}, 0, "", None),
]
if not WINDOWS:
    ROWS += [
        # Without the null device in their place, the log and the capture took
        # descriptors 1 and 2, and zelno's output went into them.
        ("stdout and stderr closed", ["--script", "-"],
         CONNECT + "log --cmd lc.txt\nwattscope -o c.csv -D 300 ws\nhelp quit\n",
         {"close": (1, 2)}, 0, "",
         lambda w: read(w, "lc.txt") == "wattscope -o c.csv -D 300 ws\nhelp quit\n"
         and read(w, "c.csv").startswith("sample,") and "Stopping" not in read(w, "c.csv")),
        # SIGXFSZ ended zelno mid-row; now the capture fails, its file is cut
        # to whole rows and the script goes on.
        ("file size limit", ["--script", "-"],
         CONNECT + "wattscope -o f.csv -s 100000 --saveall ws\nlog --cmd after.txt\nhelp\n",
         {"file_limit": 1000 * 1024}, 2, "wattscope: cannot write f.csv",
         lambda w: read(w, "f.csv").endswith("\n") and os.path.exists(os.path.join(w, "after.txt"))),
        # Opening a FIFO for reading or writing waited for the other end.
        ("FIFOs as configuration and log", ["--script", "-"],
         "connect --config f.dat hosted\nconnect --config f.tgcfg hosted\nlog --cmd lc\nhelp\n",
         {}, 3, "Could not open file f.dat\nCould not open file f.tgcfg\n", None),
        ("a FIFO as script", ["--script", "s.zelno"], "", {}, 3,
         "zelno: cannot read script s.zelno: Not a regular file\n", None),
        # The Ctrl+C thread and two use cases get threads, the last two none:
        # they vanished without a word, their files emptied.
        ("no thread for a use case", ["--script", "-"],
         CONNECT + "; ".join(f"wattscope -o {name}.csv -D 300 --saveall ws" for name in "abcd")
         + "\nhelp quit\n", {"threads": 3}, 2,
         "wattscope: could not start: no thread available\n" * 2,
         lambda w: read(w, "a.csv").startswith("sample,") and read(w, "b.csv").startswith("sample,")
         and read(w, "c.csv") == read(w, "d.csv") == "kept\n"),
    ]

# SIGTERM and SIGHUP stop the running use cases as Ctrl+C does and end zelno
# after the line (2 in script mode), or at once while it waits for input.
# (name, args, input, output awaited before the signal, signal, status)
SIGNAL_ROWS = [] if WINDOWS else [
    ("SIGTERM during a capture", ["--script", "-"], CONNECT + "wattscope -o wait_say.csv ws\nhelp\n",
     b"wattscope 1 running", signal.SIGTERM, 2),
    ("SIGHUP while a script waits for input", ["--script", "-"], "help quit\n",
     b"Exit the interactive tool", signal.SIGHUP, 2),
    ("SIGTERM at the prompt", [], "", b"zelno> ", signal.SIGTERM, 0),
]


def run_signalled(args, stdin, work, awaited, signal_number):
    process = subprocess.Popen([*COMMAND, *args], cwd=work, stdin=subprocess.PIPE,
                               stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
    process.stdin.write(stdin.encode())
    process.stdin.flush()
    seen = b""
    while awaited not in seen:
        ready, _, _ = select.select([process.stdout], [], [], 60)
        chunk = os.read(process.stdout.fileno(), 4096) if ready else b""
        if not chunk:
            process.kill()
            break
        seen += chunk
    process.send_signal(signal_number)
    try:
        return process.wait(timeout=60), seen + process.stdout.read()  # stdin stays open
    finally:
        process.stdin.close()


failures = []
for name, args, stdin, awaited, signal_number, status in SIGNAL_ROWS:
    work = tempfile.mkdtemp(prefix="zelno-surroundings-")
    shutil.copy(os.path.join(HERE, "..", "..", "demo", "board.dat"), work)
    os.mkdir(os.path.join(work, "wattscope"))
    shutil.copy(os.path.join(os.environ["ZELNO_TEST_LIBRARY_DIR"], "usecase", "basic",
                             "libwattscopestandalone.so"), os.path.join(work, "wattscope"))
    got_status, output = run_signalled(args, stdin, work, awaited, signal_number)
    # The line ran to its end, and no later one: the listing of help is missing.
    record = read(work, "double_record.txt") if os.path.exists(
        os.path.join(work, "double_record.txt")) else "end=stopped"
    if got_status != status or b"List all supported" in output.split(awaited)[-1] or "end=stopped" not in record:
        failures.append(f"{name}: status {got_status}, output {output!r} (kept {work})")
    else:
        shutil.rmtree(work)
for name, args, stdin, surroundings, status, message, check in ROWS:
    work = tempfile.mkdtemp(prefix="zelno-surroundings-")
    shutil.copy(os.path.join(HERE, "..", "..", "demo", "board.dat"), work)
    for kept in ("c.csv", "d.csv"):
        with open(os.path.join(work, kept), "w") as f:
            f.write("kept\n")
    for fifo in ("f.dat", "f.tgcfg", "lc", "s.zelno"):
        if not WINDOWS:
            os.mkfifo(os.path.join(work, fifo))
    try:
        got_status, errors = run(args, stdin, work, **surroundings)
        if got_status != status or message not in errors or (check and not check(work)):
            failures.append(f"{name}: status {got_status}, stderr {errors!r} (kept {work})")
            continue
    except subprocess.TimeoutExpired:
        failures.append(f"{name}: no end within 60 s (kept {work})")
        continue
    shutil.rmtree(work)
print("\n".join(failures) or f"{len(ROWS) + len(SIGNAL_ROWS)} rows passed")
sys.exit(1 if failures else 0)
