"""How fast the local server answers the programs of this machine, and what the window has to bear meanwhile."""

import json
import os
import pathlib
import socket
import subprocess
import tempfile
import time

from processes import endTree, processTree, profileEnvironment

SETTLING = 4.0  # seconds until the loading has calmed down
LENGTH = 10  # seconds of asking


def freePort():
    with socket.socket() as one:
        one.bind(("127.0.0.1", 0))
        return one.getsockname()[1]


def underLoad(build, page, fillProfile, longestTurn):
    """For 1 and for 16 clients at a time: what bench/local-server has measured, and the longest turn ("stall") of the
    main loop of the program, which shows a page in a window. `page` is the server of that page."""
    with tempfile.TemporaryDirectory(prefix="ondrel-bench-", ignore_cleanup_errors=True) as folder:
        profile = pathlib.Path(folder)
        environment = profileEnvironment(profile) | fillProfile(profile)
        port = freePort()
        configuration = profile / "config/ondrel"
        configuration.mkdir(mode=0o700)
        (configuration / "defaults.json").write_text(json.dumps({"_mcpServerEnabled": True, "_mcpServerPort": port}))
        turns = profile / "turns"
        # The home holds the assistant's file, which the program writes.
        environment.update(HOME=str(profile), LD_PRELOAD=str(build / "lib/libloop-probe.so"),
                           ONDREL_LOOP_PROBE=str(turns))
        strangers = {one.pid for one in processTree(os.getpid(), set())}
        with (profile / "log").open("w") as log:
            program = subprocess.Popen([build / "bin/ondrel"], env=environment, stdin=subprocess.DEVNULL, stdout=log,
                                       stderr=log)
        try:
            page.waitForLoad()
            time.sleep(SETTLING)
            figures = {}
            for clients in (1, 16):
                begin = time.monotonic()
                output = subprocess.run([build / "bench/local-server", str(port), str(clients), str(LENGTH)],
                                        stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, check=True, text=True,
                                        timeout=LENGTH + 60)
                figures[clients] = json.loads(output.stdout) | {"stall": longestTurn(turns, begin)}
            return figures
        finally:
            endTree(program, strangers)
