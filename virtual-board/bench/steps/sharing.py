"""Long texts from the board: through the folder that both sides see, not the console."""

import os

from bench.machine import SHARED


def read_shared(bench, command):
    """What a command prints."""
    bench.console.run(f"{command} >/media/bench/text", 120)
    path = os.path.join(SHARED, "text")
    with open(path, encoding="utf-8") as file:
        return file.read()
