"""A soak: checks in random order for a time. What the program holds must not grow."""

import random
import time

from bench.report import wait_for
from bench.steps.serial import COM3, open_port

PAGES = range(1, 11)


def burst_of_lines(bench):
    open_port(bench, COM3)
    bench.ports["ttyS3"].send(b"a line to show\r\n" * 200)
    bench.program.operate("idle")


def can_frames(bench):
    bench.program.open_tab("CAN")
    bench.program.tap("btnOpenCom")
    bench.console.run("cangen can1 -g 20 -n 100")


def storage(bench):
    bench.program.open_tab("Basic")
    bench.program.tap("btnUsbTest")
    bench.program.tap("btnSdCardTest")
    bench.program.tap("btnBeepTest")


def ping(bench):
    bench.program.open_tab("Basic")
    bench.program.tap("btnEmmcTest")


def wifi(bench):
    bench.program.open_tab("Wifi")
    bench.program.tap("btnScan")
    bench.program.tap("btnRef")


def sounds(bench):
    bench.program.open_tab("Voice")
    bench.program.tap("bodyWidget QPushButton[0]")


def camera(bench):
    bench.program.open_page(10)
    bench.program.tap("btnopen")
    time.sleep(2)
    bench.program.tap("btnclose")


def database(bench):
    bench.program.open_page(4)
    bench.program.tap("bodyWidget QPushButton[0]")


def production(bench):
    bench.program.open_page(5)
    bench.ports["ttyS2"].send(b"chatter of a loader\r\n" * 200)
    bench.program.tap("btnDetail")
    bench.program.tap("btnReset")


def keyboard(bench):
    bench.program.open_tab("Wifi")
    bench.keyboard.open_for("bodyWidget QLineEdit[1]")
    bench.keyboard.type("abc")
    bench.keyboard.hide()


def language(bench):
    for item in (0, 1):
        bench.program.tap_tab_at(0)
        bench.program.choose("bodyWidget QComboBox", item)


def stick(bench):
    bench.program.open_tab("Basic")
    bench.machine.pull_stick("stick")
    bench.machine.plug_stick("stick")


ACTIONS = (burst_of_lines, can_frames, storage, ping, wifi, sounds, camera, database, production,
           keyboard, language, stick)


def held(bench):
    """What the program holds on its home page: memory in kB, descriptors, threads, zombies."""
    bench.program.tap_tab_at(0)
    bench.program.operate("idle")
    text = bench.console.text(
        "p=/proc/$(pidof MoskTest); awk '/VmRSS|Threads/ {print $2}' $p/status; "
        "ls $p/fd | wc -l; grep -l '^State:.Z' /proc/[0-9]*/status 2>/dev/null | wc -l")
    memory, threads, descriptors, zombies = map(int, text.split())
    return {"kB": memory, "descriptors": descriptors, "threads": threads, "zombies": zombies}


def soak(bench, minutes, seed):
    report = bench.report
    chance = random.Random(seed)
    print(f"soak of {minutes} minutes, seed {seed}", flush=True)
    # Everything once: what is loaded late stays loaded.
    for action in ACTIONS:
        action(bench)
    identity = bench.program_id()
    before = held(bench)
    print(f"soak | {before}", flush=True)
    end = time.monotonic() + minutes * 60
    done, shown = 0, time.monotonic()
    while time.monotonic() < end:
        action = chance.choice(ACTIONS)
        try:
            action(bench)
        except (RuntimeError, OSError, IndexError) as error:
            report.judge(action.__name__, error, "no failure", False)
        done += 1
        if time.monotonic() - shown > 60:
            shown = time.monotonic()
            print(f"soak | {done} actions | {held(bench)}", flush=True)
    # A thread that Qt keeps for the next task goes after half a minute.
    wait_for(lambda: held(bench)["threads"] <= before["threads"], 60, 5)
    after = held(bench)
    print(f"soak | {done} actions | {after}", flush=True)
    report.check("the program that was started", bench.program_id(), identity)
    report.judge("memory", f"{before['kB']} to {after['kB']} kB", "within 5 %",
                 after["kB"] < before["kB"] * 1.05)
    for what in ("descriptors", "threads", "zombies"):
        report.check(what, after[what], before[what])
