"""Ethernet with its cable pulled, and the 4G modem unplugged, while their page is open."""

from bench.report import wait_for
from bench.steps.service import restart

ETHERNET, MOBILE = "bodyWidget QLineEdit[4]", "bodyWidget QLineEdit[7]"


def type_into(bench, field, text):
    """Types a text in the place of what stands there, on the on-screen keyboard."""
    keyboard = bench.keyboard
    keyboard.open_for(field, starts_with_symbols=field == ETHERNET)
    keyboard.erase(len(bench.program.text(field)))
    keyboard.type(text)
    keyboard.hide()


def ethernet(bench):
    program, report = bench.program, bench.report
    for plugged, expected in ((True, "Normal!, ok"), (False, "Abnormal!, error"),
                              (True, "Normal!, ok")):
        bench.machine.set_cable(plugged)
        wait_for(lambda: bench.console.text("cat /sys/class/net/eth0/carrier") == str(int(plugged)))
        program.open_tab("Basic")
        program.tap("btnEmmcTest")
        report.check(f"cable {'plugged' if plugged else 'pulled'}", program.status(ETHERNET),
                     expected)
    type_into(bench, ETHERNET, "192.168.10.1")
    report.check("target typed", program.text(ETHERNET), "192.168.10.1")
    program.tap("btnEmmcTest")
    report.check("typed target answers", program.status(ETHERNET), "Normal!, ok")


def bring_up_modem(bench):
    """What a modem's own software does: it gives its network an address."""
    wait_for(lambda: bench.console.run("test -c /dev/ttyUSB1 && ip link set usb0 up")[1] == 0)
    bench.console.run("ip addr replace 192.168.30.2/24 dev usb0")


def modem(bench):
    program, report = bench.program, bench.report
    modem_port = bench.ports["ttyUSB1"]
    # The program sends the modem's command once in a run, and may have done so.
    restart(bench)
    modem_port.forget()
    program.open_tab("Basic")
    type_into(bench, MOBILE, "192.168.30.1")
    program.tap("btn4gTest")
    report.check("4G", program.status(MOBILE), "Normal!, ok")
    report.check("the modem gets the command once",
                 modem_port.heard.count(b"AT+QNETDEVCTL=3,1,1\r"), 1)
    bench.machine.pull_modem()
    wait_for(lambda: bench.console.run("test -e /sys/class/net/usb0")[1] != 0)
    type_into(bench, MOBILE, "192.168.30.1")
    program.tap("btn4gTest")
    report.check("modem pulled", program.status(MOBILE), "Abnormal!, error")
    bench.machine.plug_modem()
    bring_up_modem(bench)
    type_into(bench, MOBILE, "192.168.30.1")
    program.tap("btn4gTest")
    report.check("modem plugged again", program.status(MOBILE), "Normal!, ok")
    report.check("no plain file in the modem's place",
                 bench.console.text("ls -l /dev/ttyUSB1 | cut -c 1"), "c")
