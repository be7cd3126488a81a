#!/usr/bin/python3
"""The acceptance on the virtual board says no:

  bench.py PROJECT

"accept" walks a stand-in of the board: the console is a shell here, whose tools are scripts, and
QEMU agrees to everything. Of the steps only the tour is taken.
"""

import contextlib
import glob
import io
import json
import os
import re
import runpy
import shutil
import socket
import subprocess
import sys
import threading
import time
import types

sys.dont_write_bytecode = True
PLACE = "/tmp/out/board"
TOOLS = "/tmp/tools"
HERE = "/tmp/virtual-board"
PAGES = ("home", "basic", "camera")
TOUR = "mkdir -p $4 && cp /tmp/report.xml $4\necho '6 checks, 0 wrong'\n"
failures = 0
asked = []


def expect(name, shown, expected):
    global failures
    failures += shown != expected
    print(f"{name}: {'ok' if shown == expected else f'WRONG: {shown}, not {expected}'}", flush=True)


def put_tool(name, script):
    path = os.path.join(TOOLS, name)
    with open(path, "w", encoding="ascii") as file:
        file.write("#!/bin/sh\n" + script)
    os.chmod(path, 0o755)


def put_report(pages=PAGES, failed="0", errors="0"):
    cases = "".join(f'<testcase classname="{language}.{page}"/>'
                    for language in ("english", "chinese") for page in pages)
    with open("/tmp/report.xml", "w", encoding="ascii") as file:
        file.write(f'<testsuites><testsuite failures="{failed}" errors="{errors}">{cases}'
                   "</testsuite></testsuites>")


def listen(name):
    listener = socket.socket(socket.AF_UNIX)
    listener.bind(f"{PLACE}/{name}.socket")
    listener.listen(99)
    return listener


def agree(listener):
    """Answers as QEMU does: one at a time."""
    while True:
        lines = listener.accept()[0].makefile("rw", buffering=1)
        try:
            lines.write("{}\n")
            for line in lines:
                asked.append(json.loads(line))
                lines.write('{"return": {}}\n')
        except OSError:
            pass  # It did not wait for its turn.


def make_board():
    shutil.copytree(os.path.join(sys.argv[1], "virtual-board"), HERE)
    os.makedirs(PLACE + "/shared")
    os.makedirs(TOOLS)
    os.makedirs("/media")
    os.symlink(PLACE + "/shared", "/media/bench")
    put_tool("../virtual-board/start", "exit 0\n")
    put_tool("cat", "[ $1 = /sys/class/graphics/fb0/virtual_size ] || exec /usr/bin/cat $*\n"
                    "echo 1024,600\n")
    put_tool("operate", "case $1 in pages) printf '0\\t%s\\n' " + " ".join(PAGES) + " ;;\n"
             "list) echo 'QTabBar \"\" at 0,0 600x40 \"Home\"' ;; esac\n")
    for name, says in (("pidof", "self"), ("awk", "1000 1"), ("ls", "0"), ("grep", "")):
        put_tool(name, f"echo {says}\n" if says else "")
    put_tool("mosktest-tour", TOUR)
    put_report()
    with open(PLACE + "/stick.img", "w", encoding="ascii"):
        pass
    listeners = [listen(name) for name in ("ttyS0", "ttyS1", "ttyS2", "ttyS3", "ttyS5", "ttyUSB0",
                                           "ttyUSB1")]
    threading.Thread(target=agree, args=[listen("qmp")], daemon=True).start()
    console = subprocess.Popen(
        ["socat", f"UNIX-LISTEN:{PLACE}/console.socket,fork", "EXEC:sh,pty,stderr,setsid,ctty"],
        env={**os.environ, "PATH": TOOLS + ":" + os.environ["PATH"]})
    while not os.path.exists(PLACE + "/console.socket"):
        time.sleep(0.01)
    return listeners, console


def walk(name, expected, *arguments):
    """Expects the exit code, and that as many lines are WRONG as the sum says."""
    said = io.StringIO()
    sys.argv[1:] = arguments
    status = None
    with contextlib.redirect_stdout(said):
        try:
            runpy.run_path(HERE + "/accept", run_name="__main__")
        except SystemExit as end:
            status = end.code
    text = said.getvalue()
    print(text, end="")
    expect(name, status, expected)
    sums = sum(map(int, re.findall(r"^\d+ checks, (\d+) wrong, \d+ s$", text, re.M)))
    expect(f"{name}, the wrong ones are counted", text.count(" | WRONG\n"), sums)
    return text


def idle_steps():
    """Steps that are written, but that nobody takes."""
    with open(HERE + "/accept", encoding="utf-8") as file:
        accept = file.read()
    code = ""
    steps = []
    for path in glob.glob(HERE + "/bench/**/*.py", recursive=True):
        with open(path, encoding="utf-8") as file:
            text = file.read()
        code += text
        if "/steps/" in path:
            area = os.path.basename(path)[:-len(".py")]
            steps += [(area, name) for name in re.findall(r"^def (\w+)\(bench\)", text, re.M)]
    return [f"{area}.{name}" for area, name in steps if not re.search(
        rf"\b{area}\.{name}\b", accept) and not re.search(rf"(?<!def ){name}\(", code)]


def control(*arguments):
    """What "control" exits with and prints."""
    done = subprocess.run([HERE + "/control", *arguments], stdout=subprocess.PIPE,
                          stderr=subprocess.DEVNULL, check=False)
    return done.returncode, done.stdout


def look_at_control(machine_class):
    expect("a board that is up", control("up")[0], 0)
    machine = machine_class()
    expect("a board that is up, and operated by somebody else", control("up")[0], 0)
    asked.clear()
    expect("operated by somebody else", (control("quit")[0], asked), (1, []))
    machine.lines.close()
    expect("a command's output and status", control("shell", "echo said; (exit 3)"), (3, b"said\n"))
    expect("a command that is none", control("picnic")[0], 2)
    asked.clear()
    control("tap", "512", "300")
    events = [ask["arguments"]["events"] for ask in asked if ask["execute"] == "input-send-event"]
    axes = [{"type": "abs", "data": {"axis": axis, "value": value}}
            for axis, value in (("x", 16400), ("y", 16411))]
    button = [[{"type": "btn", "data": {"down": down, "button": "left"}}] for down in (True, False)]
    expect("a tap in the middle", events, [axes, *button])


def debugfs(image, request):
    return subprocess.run(["debugfs", "-R", request, f"{PLACE}/{image}"], stdout=subprocess.PIPE,
                          stderr=subprocess.DEVNULL, check=True).stdout.decode()


def look_at_media():
    os.remove(PLACE + "/stick.img")
    made = []
    for _ in range(2):
        expect("the media are made", subprocess.run([HERE + "/build-media"], check=False).returncode, 0)
        made.append([os.stat(f"{PLACE}/{name}.img").st_mtime_ns
                     for name in ("stick", "partitioned", "card")])
    expect("and once only", made[1], made[0])
    expect("the eMMC's size", os.stat(PLACE + "/emmc.img").st_size, 64 << 20)
    for image, sound in (("stick.img", "tone-440.wav"), ("card.img", "tone-880.wav"),
                         ("partitioned.img?offset=1048576", "tone-440.wav")):
        expect(f"{image} has a sound", sound in debugfs(image, "ls"), True)
        journal = "needs_recovery" in debugfs(image, "features")
        expect(f"{image} has what a computer has left", journal, image == "stick.img")
    with open(PLACE + "/partitioned.img", "rb") as file:
        sector = file.read(512)
    expect("a partition of Linux, which begins there",
           (sector[450], sector[454:458], sector[510:]), (0x83, b"\0\x08\0\0", b"\x55\xaa"))


def look_at_console(console_class):
    """A board's console forgets what comes before its shell: the first words are said again. It
    closes when QEMU ends."""
    listener = listen("console")
    heard = []

    def forget_once():
        peer = listener.accept()[0]
        heard.append(peer.recv(100))
        heard.append(peer.recv(100))
        peer.sendall(b"==shell\r\n")
        peer.recv(100)
        peer.sendall(b"==begin 1\r\nup\r\n==end 1 0\r\n")
        peer.recv(100)
        peer.close()

    threading.Thread(target=forget_once, daemon=True).start()
    console = console_class()
    expect("a console that forgets", console.run("uptime"), ("up\n", 0))
    expect("what it was asked", heard, [b"\x15echo '=='shell\n"] * 2)
    try:
        expect("a console that closes", console.run("uptime"), "no answer")
    except OSError as error:
        expect("a console that closes", str(error), "QEMU has ended")
    listener.close()


def look_at_mounts(console, storage):
    """A step sees what is mounted, whatever it hopes for."""
    mounted = storage.mounted
    storage.wait_for = lambda is_so: is_so()
    for count in "01":
        put_tool("grep", f"echo {count}\n")
        seen = [mounted(types.SimpleNamespace(console=console), "sda", hope) for hope in (True, False)]
        expect(f"{count} mounts", seen, [count == "1"] * 2)
    put_tool("grep", "")


def look_at_log():
    """The log that is sent has every marker that the program knows."""
    from bench.ports import flashing_log
    with open(sys.argv[1] + "/protocols/FlashingLogParser.cpp", encoding="utf-8") as file:
        markers = re.findall(r'^    \{"(.*?)", Rule::', file.read(), re.M)
    expect("markers that are never sent", (len(markers) > 0, [
        marker for marker in markers if marker not in flashing_log()]), (True, []))


def fail(_bench):
    raise ValueError("a step that fails")


def main():
    listeners, console = make_board()
    sys.path.insert(0, HERE)
    from bench.machine import Console, Machine
    from bench.report import Report
    from bench.steps import camera, can, production, storage, systemd, touch, wifi
    look_at_log()
    look_at_mounts(Console(), storage)
    look_at_control(Machine)
    for module in (camera, can, production, storage, systemd, touch, wifi):
        for name, value in vars(module).items():
            if getattr(value, "__module__", "") == module.__name__:
                setattr(module, name, lambda bench: None)

    expect("steps that nobody takes", idle_steps(), [])
    expect("a report without a check", Report().close(), False)
    sizes = re.findall(r"^The virtual board at (.*)", walk("a good board", 0, "tour"), re.M)
    expect("both sizes", sizes, ["1024x600", "800x480"])
    walk("a good board with systemd", 0, "--systemd")
    walk("a good soak", 0, "--soak", "0.01")
    put_tool("ls", "echo x >>/tmp/files; exec /usr/bin/cat /tmp/files\n")
    walk("a soak that loses descriptors", 1, "--soak", "0.01")
    put_tool("ls", "echo 0\n")
    put_tool("awk", "echo x >>/tmp/memory; echo $(wc -l </tmp/memory)000 1\n")
    walk("a soak that takes more and more memory", 1, "--soak", "0.01")
    put_tool("awk", "echo 1000 1\n")
    camera.first_opening = fail
    walk("a step that fails", 1, "--size", "800x480", "tour")
    walk("a step that fails with systemd", 1, "--systemd")
    camera.first_opening = lambda bench: None
    walk("no check", 1, "--size", "800x480", "camera")

    def take_tour(name, tour=TOUR, **report):
        put_tool("mosktest-tour", tour)
        put_report(**report)
        walk(name, 1, "--size", "800x480", "tour")

    take_tour("a tour that is not content", TOUR + "exit 1\n")
    take_tour("a tour without a report", "echo 'all is well'\n")
    take_tour("a tour with a wrong check in its report", failed="1")
    take_tour("a tour that came to no end", errors="1")
    take_tour("a tour that passes a page by", pages=PAGES[1:])
    put_report()
    put_tool("mosktest-tour", TOUR + "! mkdir /tmp/second 2>/dev/null\n")
    walk("a tour that is not content at the first size", 1, "tour")
    put_tool("cat", "exit 1\n")
    asked.clear()
    walk("a board without a display", "The virtual board does not answer: it has no display: ", "tour")
    expect("is ended", [ask["execute"] for ask in asked][-1], "quit")
    put_tool("../virtual-board/start", "exit 1\n")
    walk("a board that does not start", 1, "tour")
    look_at_media()
    os.remove(PLACE + "/qmp.socket")
    expect("a board that is gone", control("up")[0], 1)
    console.kill()
    os.remove(PLACE + "/console.socket")
    look_at_console(Console)
    for listener in listeners:
        listener.close()
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
