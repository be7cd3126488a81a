"""The companion controller: the exact bytes that it gets, and the system's clock."""

from bench.report import wait_for


def hear(bench, count):
    """The bytes that the controller has got, in hexadecimal."""
    port = bench.ports["ttyS5"]
    wait_for(lambda: len(port.heard) >= count, 10)
    text = port.heard.hex(" ").upper()
    port.forget()
    return text


def buzzer(bench):
    program, report = bench.program, bench.report
    field = "bodyWidget QLineEdit[2]"
    program.open_tab("Basic")
    bench.ports["ttyS5"].forget()
    for shown, message in (("BEEP on!", "5A A5 03 03 FF 05"), ("BEEP Off!", "5A A5 03 03 00 06")):
        program.tap("btnBeepTest")
        report.check(f"shown: {shown}", program.status(field), f"{shown}, ok")
        report.check("the controller gets", hear(bench, 6), message)


def clock(bench):
    """Sets the time on the page, and the board's own again."""
    program, report = bench.program, bench.report
    program.open_tab("Basic")
    before = bench.console.text("date +%s")
    bench.ports["ttyS5"].forget()
    program.tap("btnwRTCTest")
    report.check("the controller gets", hear(bench, 11), "5A A5 08 02 16 00 01 00 00 00 21")
    report.check("the clock is at", bench.console.text("date '+%F %H'"), "2022-01-01 00")
    program.tap("btnrRTCTest")
    shown = program.text("bodyWidget QLineEdit[5]")
    report.judge("get time", shown.strip(), "2022-01-01 00:0x:xx",
                 shown.startswith("2022-01-01 00:0"))
    bench.console.run(f"date -s @{before}")
