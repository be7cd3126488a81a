"""The CAN page on a bus of 500 kbit/s, with candump and cansend at its other end."""

import time

from bench.report import wait_for

VIEW = "bodyWidget QTextEdit"
DUMP = "/tmp/candump"


def open_bus(bench):
    bench.program.open_tab("CAN")
    bench.program.tap("btnOpenCom")


def both_ways(bench):
    program, report, console = bench.program, bench.report, bench.console
    rate = console.text("ip -details link show can0 | grep -o 'bitrate [0-9]*'")
    report.check("bit rate", rate, "bitrate 500000")
    open_bus(bench)
    report.check("open", program.text("btnOpenCom"), "Close")
    console.run(f"candump -L can1 >{DUMP} & echo $! >{DUMP}.pid")
    program.tap("btnSendCom")
    frame = wait_for(lambda: console.text(f"cut -d ' ' -f 3 {DUMP}"))
    report.check("candump shows", frame, "00000001#1122334455667788")
    console.run("cansend can1 123#112233; cansend can1 00000001#0102030405060708")
    shown = program.wait_for_text(VIEW, lambda text: text.count("id:") == 2)
    report.check("frames by cansend", shown, "id:291,len:3,data:1122330000000000"
                 "id:1,len:8,data:0102030405060708")
    console.run(f"kill $(cat {DUMP}.pid)")


def steady(bench):
    """Fifty frames a second for five seconds: none is lost, and the view keeps as many."""
    program, report = bench.program, bench.report
    open_bus(bench)
    bench.console.run("cangen can1 -g 20 -I 123 -L 8 -D i -n 250", 120)
    shown = program.wait_for_text(VIEW, lambda text: text.count("id:") >= 250)
    numbers = [text[-16:] for text in shown.split("id:")[1:]]
    report.check("frames shown", len(numbers), 250)
    report.check("in order", all(int(text[:2], 16) == i % 256 for i, text in enumerate(numbers)),
                 True)


def burst(bench):
    """Ten thousand frames at once. The page takes a hundred a second; the kernel drops what its
    queue cannot hold. Afterwards the page works as before."""
    program, report = bench.program, bench.report
    open_bus(bench)
    sent = "cat /sys/class/net/can1/statistics/tx_packets"
    before = int(bench.console.text(sent))
    bench.console.run("cangen can1 -g 0 -p 100 -I 123 -L 8 -D 1122334455667788 -n 10000", 300)
    report.check("frames sent", int(bench.console.text(sent)) - before, 10000)
    queued = program.wait_for_text(VIEW, settled(), 60)
    report.judge("frames shown", queued.count("id:291"), "some hundreds",
                 queued.count("id:291") > 100)
    bench.console.run("cansend can1 321#AA")
    shown = program.wait_for_text(VIEW, lambda text: "id:801" in text)
    report.judge("a frame after the burst", shown[-36:], "id:801", "id:801,len:1" in shown)


def settled():
    """Accepts a text that has not changed for two seconds."""
    last = {"text": None, "since": 0}

    def accepts(text):
        if text != last["text"]:
            last.update(text=text, since=time.monotonic())
        return time.monotonic() - last["since"] > 2
    return accepts


def bus_down(bench):
    program, report = bench.program, bench.report
    open_bus(bench)
    bench.console.run("ip link set can0 down")
    program.tap("btnSendCom")
    time.sleep(1)
    bench.console.run("ip link set can0 up; cansend can1 321#BB")
    shown = program.wait_for_text(VIEW, lambda text: "id:801" in text)
    report.check("a frame when the bus is up again", shown, "id:801,len:1,data:bb00000000000000")
