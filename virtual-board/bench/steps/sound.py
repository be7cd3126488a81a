"""A tone from the stick, as the sound card plays it."""

import os
import struct
import time

from bench.machine import PLACE
from bench.report import wait_for
from bench.steps.service import INIT, restart
from bench.steps.storage import mounted

FILES = "bodyWidget QComboBox"
SOUND = os.path.join(PLACE, "sound.wav")
HEADER, RATE = 44, 44100


def samples(begin):
    """What has been played since then, of the left channel."""
    with open(SOUND, "rb") as file:
        file.seek(begin)
        data = file.read()
    count = len(data) // 4
    return struct.unpack(f"<{2 * count}h", data[:4 * count])[::2]


def pitch(played):
    """The frequency in Hz of what is not silent, and its duration in seconds. Gaps, which a busy
    machine leaves, do not count as a lower frequency."""
    loud = [i for i, value in enumerate(played) if abs(value) > 500]
    if not loud:
        return 0, 0.0
    tone = played[loud[0]:loud[-1]]
    rises = [i for i, (a, b) in enumerate(zip(tone, tone[1:])) if a < 0 <= b]
    periods = sorted(b - a for a, b in zip(rises, rises[1:]))
    return round(RATE / periods[len(periods) // 2]), len(tone) / RATE


def is_playing(bench):
    return bench.console.run("killall -0 tinyplay")[1] == 0


def tone(bench):
    program, report = bench.program, bench.report
    # The program plays once in a run, and may have done so.
    restart(bench)
    mounted(bench, "sda", True)
    program.open_tab("Voice")
    program.tap("bodyWidget QPushButton[0]")
    found = [item for item in program.items(FILES) if item]
    report.check("sounds", sorted(found), ["/mnt/mmcblk1/tone-880.wav", "/mnt/sda/tone-440.wav"])
    program.choose(FILES, program.items(FILES).index("/mnt/sda/tone-440.wav"))
    begin = max(HEADER, os.path.getsize(SOUND) if os.path.exists(SOUND) else HEADER)
    program.tap("btnPlay")
    report.check("playing", wait_for(lambda: is_playing(bench)), True)
    wait_for(lambda: not is_playing(bench), 60)
    time.sleep(1)
    hertz, seconds = pitch(samples(begin))
    report.judge("tone", f"{hertz} Hz", "440 Hz", abs(hertz - 440) <= 4)
    report.judge("its length", f"{seconds:.1f} s", "3 s", 2 < seconds < 4)


def play_something(bench):
    program = bench.program
    restart(bench)
    program.open_tab("Voice")
    program.tap("bodyWidget QPushButton[0]")
    program.tap("btnPlay")
    bench.report.check("playing", wait_for(lambda: is_playing(bench)), True)


def page_left(bench):
    play_something(bench)
    bench.program.tap_tab("Home")
    bench.report.check("playing when the page is left", is_playing(bench), False)


def program_stopped(bench):
    play_something(bench)
    bench.console.run(f"{INIT} stop")
    bench.report.check("playing when the service is stopped", is_playing(bench), False)
    restart(bench)
