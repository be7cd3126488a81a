"""The serial page: bytes both ways, a full line, and an adapter that is pulled while it is open."""

import time

from bench.report import wait_for

VIEW = "bodyWidget QTextEdit"
COM3, COM9 = 3, 9


def open_port(bench, index):
    program = bench.program
    program.open_tab("Serial")
    program.choose("bodyWidget QComboBox", index)
    program.tap("btnOpenCom")
    return program.text("btnOpenCom")


def both_ways(bench):
    program, report = bench.program, bench.report
    port = bench.ports["ttyS3"]
    report.check("open", open_port(bench, COM3), "Close")
    port.forget()
    program.tap("btnSendCom")
    wait_for(lambda: port.heard.endswith(b"\n"))
    report.check("the other end gets", port.heard, b"Hello MOSK!\n")
    port.send("中文 reply\r\n".encode())
    shown = program.wait_for_text(VIEW, lambda text: "reply" in text)
    report.check("the view shows", shown, "中文 reply\n")
    settings = bench.console.text("stty -F /dev/ttyS3 -a")
    report.judge("line", settings.split(";")[0], "speed 115200 baud",
                 "115200" in settings and "cs8" in settings and "-parenb" in settings)
    bench.picture("serial")


def full_line(bench):
    """Two thousand numbered lines, as quickly as the port carries them."""
    program, report = bench.program, bench.report
    open_port(bench, COM3)
    lines = [f"line {number:05} of a full line at 115200 baud" for number in range(2000)]
    bench.ports["ttyS3"].send_at_line_rate(("\r\n".join(lines) + "\r\n").encode())
    time.sleep(1)
    shown = program.wait_for_text(VIEW, lambda text: lines[-1] in text, 60)
    kept = [line.strip("\r") for line in shown.split("\n") if line.strip("\r")]
    report.check("lines shown", len(kept), len(lines))
    report.check("all as sent", kept == lines, True)


def adapter_pulled(bench):
    """/dev/ttyS9 is a name for the modem's first port, which can be pulled."""
    program, report = bench.program, bench.report
    bench.console.run("ln -sf ttyUSB0 /dev/ttyS9")
    report.check("open", open_port(bench, COM9), "Close")
    bench.ports["ttyUSB0"].send(b"before\n")
    shown = program.wait_for_text(VIEW, lambda text: "before" in text)
    report.check("the view shows", shown, "before\n")
    bench.machine.pull_modem()
    report.check("the log says", bench.wait_for_log("Lost device"),
                 "Lost device:/dev/ttyS9, hung up")
    used = busy(bench, 2)
    report.judge("processor time in 2 s", f"{used:.2f} s", "below 0.2 s", used < 0.2)
    program.tap("btnSendCom")
    program.tap("btnOpenCom")
    report.check("closed", program.text("btnOpenCom"), "Open")
    bench.machine.plug_modem()
    wait_for(lambda: bench.console.run("test -c /dev/ttyUSB0")[1] == 0)
    program.tap("btnOpenCom")
    report.check("open again", program.text("btnOpenCom"), "Close")
    bench.ports["ttyUSB0"].send(b"after\n")
    shown = program.wait_for_text(VIEW, lambda text: "after" in text)
    report.check("the view shows", shown, "before\nafter\n")


def busy(bench, seconds):
    """The processor time that the program takes in that time, in seconds."""
    before = bench.ticks()
    time.sleep(seconds)
    return (bench.ticks() - before) / 100
