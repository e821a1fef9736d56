#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
#
# run.py [--all] [--proofs] [ID...]: how many seeded bugs do sweeps and random walks find? Builds policymap-lab of
# the last commit without a bug (the control) and with each, in build/seeded, and runs the checks of
# checks.txt with both; writes build/seeded/results.txt (bug, check, what minimise came to, end of the
# output). An ID may be the beginning of one.
#
# With --proofs, how many bugs that change what packets get are found by proofs: those of packet_bugs.py by
# the checks of proofs.txt.
#
# A check has found a bug if its exit status is not 0 while that of the control is 0, if it crashes, or
# if it takes more than 120 s of a core. With --all, all checks run, otherwise none after one that has found it.
import sys
sys.dont_write_bytecode = True
import os, re, shlex, shutil, signal, subprocess, sys, tempfile, time

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, HERE)
PROOFS = "--proofs" in sys.argv
if PROOFS:
    from packet_bugs import MUTANTS
else:
    from seeded_bugs import MUTANTS

MAIN = os.path.dirname(os.path.dirname(HERE))
WORK = MAIN + "/build/seeded"
TREE = WORK + "/tree"
BUILD = TREE + "/build/mut"
LAB = BUILD + "/bin/policymap-lab"
RESULTS = WORK + "/results.txt"
SECONDS_OF_CORE = 120  # a loaded machine must not look like a bug
TIMEOUT = 900
ENV = dict(os.environ)


def sh(*words, **more):
    return subprocess.run(["nice", "-n", "15", *words], env=ENV, text=True, errors="replace", **more)


def reset():
    sh("git", "-C", TREE, "checkout", "-q", "--force", ".", check=True)


def clone():
    """The tree of the last commit; the build directory of an earlier run is kept."""
    if os.path.isdir(TREE + "/.git"):
        sh("git", "-C", TREE, "fetch", "-q", MAIN, "HEAD", check=True)
        sh("git", "-C", TREE, "reset", "-q", "--hard", "FETCH_HEAD", check=True)
    else:
        shutil.rmtree(TREE, ignore_errors=True)
        sh("git", "clone", "-q", MAIN, TREE, check=True)


def configure():
    sh("cmake", "-S", TREE, "-B", BUILD, "-G", "Ninja", "--no-warn-unused-cli",
       "-DCMAKE_BUILD_TYPE=None", "-DCMAKE_CXX_FLAGS=-O1 -w", "-DCMAKE_CXX_COMPILER=g++",
       "-DPOLICYMAPTEST_BUILD_TESTS=OFF",
       "-DPOLICYMAPTEST_BUILD_BENCH=OFF", "-DPOLICYMAPTEST_WERROR=OFF",
       "-DPOLICYMAPTEST_BUILD_PYTHON=OFF", "-DCMAKE_DISABLE_FIND_PACKAGE_Qt6=ON", check=True, stdout=subprocess.DEVNULL)


def build():
    """An empty text, or the last lines of the build that failed."""
    r = sh("ninja", "-C", BUILD, "-j2", "policymap-lab", stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    return "" if r.returncode == 0 else r.stdout[-2000:]


def checks():
    lines = [line.strip() for line in open(HERE + ("/proofs.txt" if PROOFS else "/checks.txt"))]
    return [line for line in lines if line and not line.startswith("#")]


def check(command):
    """Status (None: timeout) and output. Ends the whole group of the command on a timeout."""
    # A mutant may write or allocate without end: files of at most 64 MiB, memory of at most 8 GB.
    script = f"ulimit -t {SECONDS_OF_CORE} -f 65536 -v 8000000; " + command.replace("{lab}", shlex.quote(LAB)).replace(
        "{sweep}", shlex.quote(HERE + "/sweep.sh") + " " + shlex.quote(LAB))
    with tempfile.TemporaryFile() as file:
        process = subprocess.Popen(["nice", "-n", "15", "bash", "-c", script], cwd=MAIN, env=ENV,
                                   start_new_session=True, stdin=subprocess.DEVNULL, stdout=file,
                                   stderr=subprocess.STDOUT)
        try:
            status = process.wait(timeout=TIMEOUT)
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            process.wait()
            return None, f"more than {TIMEOUT} s"
        file.seek(0)
        return status, file.read(100000).decode(errors="replace")


def crashed(status):
    return status is None or status < 0 or status >= 128


def steady(output):
    """The output without what differs from run to run."""
    return re.sub(r"[0-9.]+ (s|ms|cases per second)\b", "", output).replace(LAB, "")


def note(id, found_by, text):
    minimised = re.findall(r"minimised in .*", text)
    line = "\t".join([id, found_by, minimised[-1] if minimised else "", " ".join(text.split())[-400:]])
    print(line, flush=True)
    with open(RESULTS, "a") as results:
        results.write(line + "\n")


def main():
    os.makedirs(WORK, exist_ok=True)
    words = [a for a in sys.argv[1:] if not a.startswith("--")]
    chosen = [m for m in MUTANTS if not words or any(m["id"].startswith(w) for w in words)]
    clone()
    configure()
    if "--configure-only" in sys.argv:
        return 0
    commands = checks()

    failed = build()
    if failed:
        print(failed)
        return 1
    control = []
    for number, command in enumerate(commands, 1):
        start = time.monotonic()
        status, output = check(command)
        same = None
        if status != 0 and not crashed(status) and steady(check(command)[1]) == steady(output):
            same = steady(output)
        control.append((status, same))
        note("CONTROL", f"{number}: status {status}, {time.monotonic() - start:.1f} s", output)
        if crashed(status):
            print(f"check {number} is of no use: the control crashes or takes too long: {command}")
            return 1

    for mutant in chosen:
        path = os.path.join(TREE, mutant["file"])
        text = open(path).read()
        if text.count(mutant["old"]) != 1:
            note(mutant["id"], "NOT APPLIED", f"the text occurs {text.count(mutant['old'])} times")
            continue
        try:
            with open(path, "w") as file:
                file.write(text.replace(mutant["old"], mutant["new"]))
            failed = build()
            if failed:
                note(mutant["id"], "NOT BUILT", failed)
                continue
            found = False
            for number, command in enumerate(commands, 1):
                status, output = check(command)
                usual, same = control[number - 1]
                if crashed(status) or status > usual or (same is not None and steady(output) != same):
                    found = True
                    note(mutant["id"], f"{number} (status {status})", output)
                    if "--all" not in sys.argv:
                        break
            if not found:
                note(mutant["id"], "MISSED", mutant["note"])
        finally:
            reset()
    return 0


if __name__ == "__main__":
    sys.exit(main())
