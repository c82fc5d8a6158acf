"""A host with an idle module, traced: the worker's passes as lists of system calls, each allocation
among them as a mark of its own."""

import os
import pathlib
import re
import subprocess
import sys
import tempfile

SECONDS = 6
STEADY_PASSES = 5  # The first ones load code and set the threads up.
MARK = 'write(-1, "allocation", 10'
SETTINGS = "drive_c/users/Public/Documents/Zembra/Settings/zembra.ini"


def trace(build, machine, simulator_options, options):
    """The traced text of each thread, call by call."""
    line = machine / "dosdevices/com3"
    line.parent.mkdir(parents=True)
    (machine / SETTINGS).parent.mkdir(parents=True)
    (machine / SETTINGS).write_text("[Ovisk]\nPort=3\nScaleFactor=100.0\n")
    simulator = subprocess.Popen(
        [build / "ovisk-sim", "--pty", line, "--position=1234567,-7654321,250000", "--quiet",
         *simulator_options], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, text=True)
    try:
        while not simulator.stdout.readline().startswith("ready"):
            if simulator.poll() is not None:
                sys.exit("no simulated controller")
        subprocess.run(["strace", "-f", "-qq", "-s", "64", *options, "-o", machine / "trace",
                        build / "idle-host", str(SECONDS)], check=True,
                       env={**os.environ, "ZB_MACHINE_ROOT": str(machine)})
    finally:
        simulator.kill()
        simulator.wait()
    threads = {}
    for text in (machine / "trace").read_text().splitlines():
        thread, call = text.split(None, 1)
        threads.setdefault(thread, []).append(call)
    return threads


def passes(build, simulator_options=("--baud", "0"), options=()):
    """The worker's passes, each from its wait for a command to the next one."""
    with tempfile.TemporaryDirectory() as folder:
        threads = trace(build, pathlib.Path(folder), simulator_options, options)
    worker = max(threads.values(), key=lambda calls: sum("@CPOSMR?" in call for call in calls))
    found = [[]]
    for call in worker:
        if not re.match(r"(\d+\.\d+ )?\w+\(", call):
            continue  # The end of a call that was told before, or a signal.
        if "futex(" in call and "FUTEX_WAIT" in call:
            found.append([])
        found[-1].append(call)
    return found[1 + STEADY_PASSES:-1]


def reloads(calls):
    """Whether the settings are read again at the end of the pass."""
    return any("zembra.ini" in call for call in calls)


def asks_status(calls):
    return any("@SSWC?" in call for call in calls)
