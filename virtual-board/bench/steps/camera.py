"""The camera's picture on the display: vivid's colour bars."""

import time

from bench.report import wait_for

BLACK = {(0, 0, 0)}


def colours(bench):
    """The colours in the middle of the viewfinder, roughly."""
    screen = bench.screen
    seen = screen.look().colours(screen.width // 4, screen.height // 3,
                                 screen.width // 2, screen.height // 4, 8)
    return {tuple(value // 64 for value in colour) for colour in seen}


def plugin_list(bench):
    """The checksum of GStreamer's list of its plug-ins; empty while there is none."""
    return bench.console.text("md5sum /var/cache/mosktest/gstreamer-1.0/registry.*.bin 2>/dev/null")


def first_opening(bench):
    """Opens the camera for the first time. GStreamer's list of its plug-ins, which takes long on
    this board, has been made by the service."""
    listed = wait_for(lambda: plugin_list(bench), 180)
    bench.report.check("GStreamer has a list", bool(listed), True)
    bench.program.open_page("camera")
    begun = time.monotonic()
    bench.program.tap("btnopen")
    shown = wait_for(lambda: len(colours(bench)) >= 6, 180)
    bench.report.judge("first opening", f"{time.monotonic() - begun:.0f} s", "a picture", shown)
    bench.report.check("by the same list", plugin_list(bench) == listed, True)
    bench.program.open_page("home")


def picture(bench):
    program, report = bench.program, bench.report
    program.open_page("camera")
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
