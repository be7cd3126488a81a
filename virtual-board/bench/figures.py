"""What the program costs on the board."""

import os
import re
import time

from bench.machine import PLACE
from bench.report import wait_for
from bench.steps.serial import COM3, busy, open_port
from bench.steps.service import INIT

PAGES = {1: "home", 2: "basic", 3: "serial", 4: "database", 5: "production", 6: "Wi-Fi",
         7: "voice", 8: "CAN", 9: "remote access", 10: "camera"}
# The program as the service runs it, but without the operator.
ENVIRONMENT = ("HOME=/root XDG_CACHE_HOME=/var/cache/mosktest XDG_RUNTIME_DIR=/run/mosktest "
               "QT_QPA_PLATFORM=linuxfb QT_QPA_FB_NO_LIBINPUT=1 QT_QPA_FB_DISABLE_INPUT=1 "
               "QT_QPA_GENERIC_PLUGINS=evdevtouch:/dev/input/touchscreen")


def show(what, value):
    print(f"figure | {what} | {value}", flush=True)


def resident(bench, program):
    """The memory of a program in MB."""
    text = bench.console.text(f"grep VmRSS /proc/$(pidof {program})/status")
    return int(re.search(r"\d+", text)[0]) / 1024


def first_frame(bench, program):
    """Starts a program three times. Returns the shortest time until it has painted, in ms, and
    its memory then, in MB."""
    times = []
    for _ in range(3):
        text = bench.console.text(f"{ENVIRONMENT} first-frame {bench.screen.width // 2} "
                                  f"{bench.screen.height - 20} {program} 2>/dev/null </dev/null",
                                  120)
        times.append(int(text))
        time.sleep(1)
        memory = resident(bench, program)
        bench.console.run(f"killall -9 {program}")
    return min(times), memory


def starting(bench):
    bench.console.run(f"{INIT} stop")
    for program in ("empty-window", "MoskTest"):
        milliseconds, memory = first_frame(bench, program)
        show(f"{program}, exec to first frame", f"{milliseconds} ms")
        show(f"{program}, resident", f"{memory:.1f} MB")
    bench.console.run(f"{INIT} start")
    bench.program.wait_until_up()


def opening(bench, number, times=5):
    """The processor time that opening a page takes, in ms."""
    before = bench.ticks()
    bench.console.run(f"for i in $(seq {times}); do operate page 0; operate page {number}; "
                      "operate idle; done")
    return (bench.ticks() - before) * 10 / times


def pages(bench):
    """Opens each page after it has been opened once. A request that opens none is subtracted."""
    empty = opening(bench, 0)
    for number in PAGES:
        bench.program.open_page(number)
    times = {opening(bench, number) - empty: name for number, name in PAGES.items()}
    slowest = max(times)
    show("slowest page to open, processor time", f"{times[slowest]}, {slowest:.0f} ms")
    bench.program.open_page(1)


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
