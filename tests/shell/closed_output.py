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


def run(args, stdin, work, close=(), file_limit=None, threads=None, signal_after=None):
    """Status, stdout and stderr of zelno in `work`; `signal_after` is the
    output awaited before a signal, and the signal, sent with input open."""
    def surroundings():
        # A signal ignored at start stays ignored (nohup), and the test may
        # run under nohup.
        for number in (signal.SIGHUP, signal.SIGTERM):
            signal.signal(number, signal.SIG_DFL)
        for descriptor in close:
            os.close(descriptor)
        if file_limit is not None:
            resource.setrlimit(resource.RLIMIT_FSIZE, (file_limit, file_limit))

    env = dict(os.environ)
    if threads is not None:
        env.update(LD_PRELOAD=library("thread_limit", "libthread_limit.so"),
                   ZELNO_THREADS_ALLOWED=str(threads),
                   # Preloaded ahead of the sanitizer, whose pthread_create it calls on.
                   ASAN_OPTIONS=env.get("ASAN_OPTIONS", "") + ":verify_asan_link_order=0")
    read_end, write_end = os.pipe()
    os.close(read_end)
    process = subprocess.Popen([*COMMAND, *args], cwd=work, env=env, preexec_fn=surroundings,
                               stdin=subprocess.PIPE, stderr=subprocess.PIPE,
                               stdout=subprocess.PIPE if close or signal_after else write_end)
    os.close(write_end)
    process.stdin.write(stdin.encode())
    process.stdin.flush()
    seen = b""
    if signal_after:
        while signal_after[0] not in seen:
            ready, _, _ = select.select([process.stdout], [], [], 60)
            chunk = os.read(process.stdout.fileno(), 4096) if ready else b""
            seen += chunk or b"(no more output)" + signal_after[0]
        process.send_signal(signal_after[1])
        try:
            process.wait(timeout=60)  # With input open: only the signal ends zelno.
        except subprocess.TimeoutExpired:
            pass
    try:
        out, errors = process.communicate(timeout=60)
    finally:
        process.kill()
    return process.returncode, (seen + (out or b"")).decode(), errors.decode()


def library(*path):
    return os.path.join(os.environ["ZELNO_TEST_LIBRARY_DIR"], *path)


def read(work, name):
    with open(os.path.join(work, name), encoding="latin-1") as f:
        return f.read()


def make_work(double):
    work = tempfile.mkdtemp(prefix="zelno-surroundings-")
    shutil.copy(os.path.join(HERE, "..", "..", "demo", "board.dat"), work)
    for kept in ("c.csv", "d.csv"):
        with open(os.path.join(work, kept), "w") as f:
            f.write("kept\n")
    if not WINDOWS:
        for fifo in ("f.dat", "f.tgcfg", "lc", "s.zelno"):
            os.mkfifo(os.path.join(work, fifo))
    if double:  # found before the simulator
        os.mkdir(os.path.join(work, "wattscope"))
        shutil.copy(library("usecase", "basic", "libwattscopestandalone.so"),
                    os.path.join(work, "wattscope", "libwattscopestandalone.so"))
    return work


SCRIPT = ["--script", "-"]
# (name, args, input, surroundings, status, stderr holds, check of work directory and stdout)
ROWS = [
    ("stdout to a pipe with no reader", [], "foo\nhelp\n", {}, 0, "", None),
    ("the same in option mode", ["-x"], "", {}, 0, "", None),
]
if not WINDOWS:
    ROWS += [
        # Without the null device in their place, the log and the capture took
        # descriptors 1 and 2, and zelno's output went into them.
        ("stdout and stderr closed", SCRIPT,
         CONNECT + "log --cmd lc.txt\nwattscope -o c.csv -s 1000 -D 300 ws\nhelp quit\n",
         {"close": (1, 2)}, 0, "",
         lambda w, _: read(w, "lc.txt") == "wattscope -o c.csv -s 1000 -D 300 ws\nhelp quit\n"
         and read(w, "c.csv").startswith("sample,") and "Stopping" not in read(w, "c.csv")),
        # SIGXFSZ ended zelno mid-row; now the capture fails, its file is cut
        # to whole rows and the script goes on.
        ("file size limit", SCRIPT,
         CONNECT + "wattscope -o a.csv -s 100000 --saveall ws\nlog --cmd after.txt\n",
         {"file_limit": 1000 * 1024}, 2, "wattscope: cannot write a.csv",
         lambda w, _: read(w, "a.csv").endswith("\n") and os.path.exists(os.path.join(w, "after.txt"))),
        # Opening a FIFO for reading or writing waited for the other end.
        ("FIFOs as configuration and log", SCRIPT,
         "connect --config f.dat hosted\nconnect --config f.tgcfg hosted\nlog --cmd lc\n",
         {}, 3, "Could not open file f.dat\nCould not open file f.tgcfg\n", None),
        ("a FIFO as script", ["--script", "s.zelno"], "", {}, 3,
         "zelno: cannot read script s.zelno: Not a regular file\n", None),
        # The Ctrl+C thread and two use cases get threads, the last two none:
        # they vanished without a word, their files emptied.
        ("no thread for a use case", SCRIPT,
         CONNECT + "; ".join(f"wattscope -o {name}.csv -s 1000 -D 300 --saveall ws" for name in "abcd")
         + "\n", {"threads": 3}, 2, "wattscope: could not start: no thread available\n" * 2,
         lambda w, _: read(w, "b.csv").startswith("sample,")
         and read(w, "c.csv") == read(w, "d.csv") == "kept\n"),
        # SIGTERM and SIGHUP stop the running use cases as Ctrl+C does and end
        # zelno after the line (2 in a script), or at once while it waits for
        # input; the help listing of the next line never comes.
        ("SIGTERM during a use case", SCRIPT, CONNECT + "wattscope -o wait_say.csv ws\nhelp\n",
         {"signal_after": (b"wattscope 1 running", signal.SIGTERM)}, 2, "",
         lambda w, out: "end=stopped" in read(w, "double_record.txt") and "List all" not in out),
        ("SIGHUP while a script waits for input", SCRIPT, "help quit\n",
         {"signal_after": (b"Exit the interactive tool", signal.SIGHUP)}, 2, "", None),
        ("SIGTERM at the prompt", [], "", {"signal_after": (b"zelno> ", signal.SIGTERM)}, 0, "",
         None),
    ]

failures = []
for name, args, stdin, surroundings, status, message, check in ROWS:
    work = make_work("signal_after" in surroundings)
    try:
        got_status, out, errors = run(args, stdin, work, **surroundings)
    except subprocess.TimeoutExpired:
        got_status, out, errors = "none within 60 s", "", ""
    if got_status != status or message not in errors or (check and not check(work, out)):
        failures.append(f"{name}: status {got_status}, stderr {errors!r} (kept {work})")
    else:
        shutil.rmtree(work)
print("\n".join(failures) or f"{len(ROWS)} rows passed")
sys.exit(1 if failures else 0)
