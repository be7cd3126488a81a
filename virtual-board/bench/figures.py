"""What the program costs on the board."""

import os
import re
import shutil
import time

from bench.machine import PLACE, SHARED
from bench.report import wait_for
from bench.steps.serial import COM3, busy, open_port
from bench.steps.service import INIT

# The program as the service runs it, but without the operator.
ENVIRONMENT = ("HOME=/root XDG_CACHE_HOME=/var/cache/mosktest XDG_RUNTIME_DIR=/run/mosktest "
               "QT_QPA_PLATFORM=linuxfb QT_QPA_FB_NO_LIBINPUT=1 QT_QPA_FB_DISABLE_INPUT=1 "
               "QT_QPA_GENERIC_PLUGINS=evdevtouch:/dev/input/touchscreen,first-frame")
STYLE = os.path.join(os.path.dirname(__file__), "..", "..", "resources", "qss", "style.qss")


def show(what, value):
    print(f"figure | {what} | {value}", flush=True)


def resident(bench, program):
    """The memory of a program in MB."""
    text = bench.console.text(f"grep VmRSS /proc/$(pidof {program})/status")
    return int(re.search(r"\d+", text)[0]) / 1024


def first_frame(bench, program, argument=""):
    """Starts a program three times. Returns the shortest time from exec to its first frame, in ms,
    and its memory then, in MB."""
    times = []
    for _ in range(3):
        begun, _processor, painted = map(float, bench.console.text(
            "rm -f /tmp/frame; cut -d ' ' -f 1 /proc/uptime; "
            f"({ENVIRONMENT} {program} {argument} </dev/null >/tmp/frame 2>/dev/null &); "
            "until [ -s /tmp/frame ]; do sleep 1; done; head -n 1 /tmp/frame", 120).split())
        times.append(painted - begun * 1000)
        memory = resident(bench, program)
        bench.console.run(f"killall -9 {program}")
    return min(times), memory


def starting(bench):
    bench.console.run(f"{INIT} stop")
    shutil.copy(STYLE, SHARED)
    for words in (("floor", "/media/bench/style.qss"), ("MoskTest",)):
        milliseconds, memory = first_frame(bench, *words)
        show(f"{words[0]}, exec to first frame", f"{milliseconds:.0f} ms")
        show(f"{words[0]}, resident", f"{memory:.1f} MB")
    bench.console.run(f"{INIT} start")
    bench.program.wait_until_up()


def opening(bench, page, times=5):
    """The processor time that opening a page takes, in ms."""
    before = bench.ticks()
    bench.console.run(f"for i in $(seq {times}); do operate page 0; operate page {page}; "
                      "operate idle; done")
    return (bench.ticks() - before) * 10 / times


def pages(bench):
    """Opens each page after it has been opened once. A request that opens none is subtracted."""
    empty = opening(bench, 0)
    names = bench.program.pages()
    for name in names:
        bench.program.open_page(name)
    times = {opening(bench, name) - empty: name for name in names}
    slowest = max(times)
    show("slowest page to open, processor time", f"{times[slowest]}, {slowest:.0f} ms")
    bench.program.open_page("home")


def load(bench):
    bench.program.tap_tab("Home")
    time.sleep(2)
    show("processor time, home page, idle", f"{busy(bench, 10) * 10:.1f} %")
    open_port(bench, COM3)
    lines = b"".join(b"line %05d of a full line at 115200 baud\r\n" % i for i in range(6000))
    port = bench.ports["ttyS3"]
    wait_for(lambda: bench.program.text("btnOpenCom") == "Close")
    before, begun = bench.ticks(), time.monotonic()
    port.send_at_line_rate(lines[:115200])
    used, seconds = bench.ticks() - before, time.monotonic() - begun
    show("processor time, serial page, full line", f"{used / seconds:.0f} %")
    bench.program.tap_tab("Home")


def all_figures(bench):
    with open("/proc/loadavg", encoding="ascii") as file:
        show("this machine's load", file.read().split()[0])
    with open(os.path.join(PLACE, "console.log"), encoding="utf-8", errors="replace") as file:
        show("boot until the program is started", re.findall(r"is up after ([\d.]+ s)",
                                                             file.read())[0])
    starting(bench)
    pages(bench)
    load(bench)
