"""How often the program wakes up while nothing happens."""

import json
import os
import pathlib
import signal
import subprocess
import tempfile
import time
import urllib.request

from processes import endTree, processTree, profileEnvironment

SETTLING = 20.0  # seconds until the loading has calmed down
WINDOW = 60.0  # seconds that are watched: two pings of the service, three looks whether the stream is silent
PATIENCE = 60.0


def eventually(holds, otherwise):
    end = time.monotonic() + PATIENCE
    while not holds():
        if time.monotonic() > end:
            raise RuntimeError(f"{otherwise} within {PATIENCE:.0f} s")
        time.sleep(0.2)


class SignedInProgram:
    """The program, with its user signed in on the demonstration service and the event stream open."""

    def __init__(self, build):
        self.build = build
        self.strangers = {one.pid for one in processTree(os.getpid(), set())}

    def __enter__(self):
        self.folder = tempfile.TemporaryDirectory(prefix="ondrel-bench-", ignore_cleanup_errors=True)
        profile = pathlib.Path(self.folder.name)
        self.service = subprocess.Popen(
            [self.build / "bin/ondrel-demo-service", "--until-eof", "--site-file", profile / "site.json"],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.control = json.loads(self.service.stdout.readline())["control"]
        self.strangers.add(self.service.pid)
        with (profile / "log").open("w") as log:
            environment = profileEnvironment(profile) | {"ONDREL_SITE": str(profile / "site.json")}
            self.program = subprocess.Popen([self.build / "bin/ondrel"], env=environment, stdin=subprocess.DEVNULL,
                                            stdout=log, stderr=log)
        try:
            self.signIn()
            eventually(self.isListening, "nobody listens to the event stream")
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        endTree(self.program, self.strangers)
        self.service.stdin.close()
        self.service.wait(PATIENCE)
        self.folder.cleanup()

    def signIn(self):
        # There is no window manager that would give the window the keyboard.
        focus = ["xdotool", "search", "--onlyvisible", "--name", "^Sign in", "windowfocus"]
        eventually(lambda: subprocess.run(focus, capture_output=True).returncode == 0, "no sign-in page is shown")
        subprocess.run(["xdotool", "sleep", "1", "key", "Tab", "Return"], check=True)

    def isListening(self):
        with urllib.request.urlopen(self.control + "control/stream") as answer:
            return json.load(answer)["listeners"] == 1

    def pages(self):
        """The processes of the pages."""
        return [one.pid for one in processTree(self.program.pid, self.strangers) if one.name == "WebKitWebProces"]

    def wakeUps(self):
        """How often the main thread has waited so far."""
        pid = self.program.pid
        for line in pathlib.Path(f"/proc/{pid}/task/{pid}/status").read_text().splitlines():
            if line.startswith("voluntary_ctxt_switches:"):
                return int(line.split()[1])
        raise RuntimeError("the kernel counts no context switches")

    def wakeUpsPerSecond(self):
        before, begin = self.wakeUps(), time.monotonic()
        time.sleep(WINDOW)
        return (self.wakeUps() - before) / (time.monotonic() - begin)


def idleWakeUps(build):
    """Of the main thread, each second: with the pages running, and while they stand still."""
    with SignedInProgram(build) as program:
        time.sleep(SETTLING)
        withPages = program.wakeUpsPerSecond()
        # What pages do by themselves reaches the program too: the demonstration's asks for its token each
        # second. What is left without them is its own.
        pages = program.pages()
        if not pages:
            raise RuntimeError("the pages of the idle program were not found")
        for pid in pages:
            os.kill(pid, signal.SIGSTOP)
        time.sleep(2)
        own = program.wakeUpsPerSecond()
        if not program.isListening():
            raise RuntimeError("the idle program has lost its event stream")
        return withPages, own
