"""A soak: a walk again and again. What the program holds must not grow."""

import time

from bench.report import wait_for


def held(bench):
    """What the program holds on its home page: memory in kB, descriptors, threads, zombies."""
    bench.program.tap_tab_at(0)
    bench.program.operate("idle")
    text = bench.console.text(
        "p=/proc/$(pidof MoskTest); awk '/VmRSS|Threads/ {print $2}' $p/status; "
        "ls $p/fd | wc -l; grep -l '^State:.Z' /proc/[0-9]*/status 2>/dev/null | wc -l")
    memory, threads, descriptors, zombies = map(int, text.split())
    return {"kB": memory, "descriptors": descriptors, "threads": threads, "zombies": zombies}


def soak(bench, minutes, walk):
    """Walks for that time, and once before it: what is loaded late stays loaded."""
    report = bench.report
    walk()
    identity, before = bench.program_id(), held(bench)
    end = time.monotonic() + minutes * 60
    while time.monotonic() < end:
        walk()
        print(f"soak | {before} | {held(bench)}", flush=True)
    report.area = "soak"
    # A thread that Qt keeps for the next task goes after half a minute.
    wait_for(lambda: held(bench)["threads"] <= before["threads"], 60, 5)
    after = held(bench)
    report.check("the program that was started", bench.program_id(), identity)
    report.judge("memory", f"{before['kB']} to {after['kB']} kB", "within 5 %",
                 after["kB"] < before["kB"] * 1.05)
    for what in ("descriptors", "threads", "zombies"):
        report.check(what, after[what], before[what])
