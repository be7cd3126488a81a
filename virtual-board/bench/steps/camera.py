"""The camera's picture on the display: vivid's colour bars."""

import time

from bench.report import wait_for
from bench.steps.touch import HOME_PAGE

CAMERA_PAGE = 10
BLACK = {(0, 0, 0)}


def colours(bench):
    """The colours in the middle of the viewfinder, roughly."""
    screen = bench.screen
    seen = screen.look().colours(screen.width // 4, screen.height // 3,
                                 screen.width // 2, screen.height // 4, 8)
    return {tuple(value // 64 for value in colour) for colour in seen}


def first_opening(bench):
    """Opens the camera for the first time. GStreamer then makes a list of its plug-ins, which takes
    longer on this board than the tour waits for a picture."""
    bench.program.open_page(CAMERA_PAGE)
    begun = time.monotonic()
    bench.program.tap("btnopen")
    shown = wait_for(lambda: len(colours(bench)) >= 6, 180)
    bench.report.judge("first opening", f"{time.monotonic() - begun:.0f} s", "a picture", shown)
    bench.program.open_page(HOME_PAGE)


def picture(bench):
    program, report = bench.program, bench.report
    program.open_page(CAMERA_PAGE)
    report.judge("cameras", program.items("bodyWidget QComboBox"), "one, vivid",
                 "vivid" in program.text("bodyWidget QComboBox"))
    report.check("closed", colours(bench), BLACK)
    for what in ("opened", "opened again"):
        program.tap("btnopen")
        wait_for(lambda: len(colours(bench)) >= 6, 40)
        seen = colours(bench)
        report.judge(what, f"{len(seen)} colours", "6 or more, as in colour bars", len(seen) >= 6)
    bench.picture("camera")
    program.tap("btnclose")
    wait_for(lambda: colours(bench) == BLACK)
    report.check("closed", colours(bench), BLACK)
    program.tap("btnopen")
    program.tap_tab("Basic")
    users = bench.console.text("ls -l /proc/$(pidof MoskTest)/fd | grep -c video0")
    report.check("descriptors of the camera after leaving", users, "0")
