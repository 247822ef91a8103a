"""The processes of a program that is measured."""

import ctypes
import os
import pathlib
import signal
import subprocess
import time

TICK = os.sysconf("SC_CLK_TCK")


def profileEnvironment(profile):
    """Makes the folders of a new profile and gives the environment that points to them."""
    environment = dict(os.environ)
    for kind in ("config", "data", "cache", "state"):
        (profile / kind).mkdir(mode=0o700)
        environment[f"XDG_{kind.upper()}_HOME"] = str(profile / kind)
    return environment


def adoptOrphans():
    """Orphans of the programs come to us, to be counted and ended."""
    PR_SET_CHILD_SUBREAPER = 36
    if ctypes.CDLL(None, use_errno=True).prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0) != 0:
        raise OSError(ctypes.get_errno(), "prctl")


class Process:
    """What /proc tells about one process at one moment."""

    def __init__(self, pid):
        self.pid = pid
        start, _, rest = pathlib.Path(f"/proc/{pid}/stat").read_text().rpartition(")")
        self.name = start.partition("(")[2]  # its first 15 bytes
        fields = rest.split()
        self.state, self.parent = fields[0], int(fields[1])
        # Its own time and that of its children that have ended, in user and system mode.
        self.seconds = sum(map(int, fields[11:15])) / TICK

    def proportionalMemory(self):
        """In KiB. None when the process has just gone."""
        try:
            for line in pathlib.Path(f"/proc/{self.pid}/smaps_rollup").read_text().splitlines():
                if line.startswith("Pss:"):
                    return int(line.split()[1])
        except (FileNotFoundError, ProcessLookupError):
            pass
        return None


def processTree(root, strangers):
    """The process, its descendants, and orphans of them, which come to us: all but `strangers`."""
    processes = {}
    for entry in os.listdir("/proc"):
        if entry.isdigit():
            try:
                processes[int(entry)] = Process(int(entry))
            except (FileNotFoundError, ProcessLookupError):
                pass
    tree, added = {}, {pid for pid, one in processes.items() if pid == root or one.parent == os.getpid()} - strangers
    while added:
        tree.update((pid, processes[pid]) for pid in added)
        added = {pid for pid, one in processes.items() if one.parent in tree} - tree.keys()
    return [one for one in tree.values() if one.state != "Z" or one.pid == root]


def othersWithEngine():
    for entry in os.listdir("/proc"):
        try:
            if entry.isdigit() and pathlib.Path(f"/proc/{entry}/comm").read_text().startswith("WebKit"):
                return True
        except (FileNotFoundError, ProcessLookupError):
            pass
    return False


def endTree(program, strangers):
    """Asks the program to end, then makes all of it end."""
    program.terminate()
    try:
        program.wait(3)
    except subprocess.TimeoutExpired:
        pass
    while True:
        remaining = [one for one in processTree(program.pid, strangers) if one.state != "Z"]
        if not remaining:
            break
        for one in remaining:
            try:
                os.kill(one.pid, signal.SIGKILL)
            except ProcessLookupError:
                pass
        time.sleep(0.05)
    program.wait()
    # Orphans that have come to us.
    try:
        while os.waitpid(-1, os.WNOHANG)[0]:
            pass
    except ChildProcessError:
        pass
