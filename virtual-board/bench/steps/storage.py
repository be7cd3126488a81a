"""A stick and a card, pulled and plugged while their page is open."""

from bench.report import wait_for


def count(what, number):
    kind = {"USB": "USB flash drive", "SD": "SD card"}[what]
    return f"Detected that there is(are) {number} {kind} inserted!"


def settle(bench, devices, expected):
    """Waits until the kernel has as many devices."""
    wait_for(lambda: bench.console.text(f"ls {devices} 2>/dev/null | wc -l") == expected)


def mounted(bench, device, wanted):
    """Waits for a mount below /mnt to be there or not. Returns whether it is."""
    def is_so():
        text = bench.console.text(f"grep -c ' /mnt/{device} ' /proc/mounts")
        return (text == "1") == wanted
    return wanted if wait_for(is_so) else not wanted


def stick(bench):
    program, report = bench.program, bench.report
    field = "bodyWidget QLineEdit[0]"
    program.open_tab("Basic")
    for plugged in (False, True):
        if plugged:
            bench.machine.plug_stick("stick")
        else:
            bench.machine.pull_stick("stick")
        report.check("the stick is below /mnt", mounted(bench, "sda", plugged), plugged)
        shown = program.press("btnUsbTest", field)
        report.check(f"stick {'plugged' if plugged else 'pulled'}", shown,
                     count("USB", int(plugged)))


def card(bench):
    program, report = bench.program, bench.report
    field = "bodyWidget QLineEdit[1]"
    program.open_tab("Basic")
    report.check("card in its slot", program.press("btnSdCardTest", field), count("SD", 1))
    bench.machine.pull_card()
    report.check("the card is below /mnt", mounted(bench, "mmcblk1", False), False)
    report.check("card pulled", program.press("btnSdCardTest", field), count("SD", 0))
    bench.machine.plug_card()
    report.check("the card is below /mnt", mounted(bench, "mmcblk1", True), True)
    report.check("card plugged", program.press("btnSdCardTest", field), count("SD", 1))
