"""A stick and a card, pulled and plugged while their page is open."""

from bench.report import wait_for


def mounted(bench, device, wanted):
    """Waits for a mount below /mnt to be there or not. Returns whether it is."""
    def is_so():
        text = bench.console.text(f"grep -c ' /mnt/{device} ' /proc/mounts")
        return (text == "1") == wanted
    return wanted if wait_for(is_so) else not wanted


def count(bench, what, button, row, number):
    shown = bench.program.press(button, f"bodyWidget QLineEdit[{row}]")
    bench.report.check(f"{number} {what}", shown,
                       f"Detected that there is(are) {number} {what} inserted!")


def stick(bench):
    machine, report = bench.machine, bench.report
    bench.program.open_tab("Basic")
    for number, change in ((0, machine.pull_stick), (1, machine.plug_stick)):
        written = change("stick")
        report.check("the board has written to the stick", bool(written), False)
        report.check("the stick is below /mnt", mounted(bench, "sda", number == 1), number == 1)
        count(bench, "USB flash drive", "btnUsbTest", 0, number)


def folders(bench):
    return bench.console.text("ls /mnt | grep sd")


def partitioned_stick(bench):
    """A disk with partitions is not mounted itself, and nothing stays of it."""
    report = bench.report
    bench.machine.pull_stick("stick")
    wait_for(lambda: not folders(bench))
    bench.machine.plug_stick("partitioned")
    report.check("its partition is below /mnt", mounted(bench, "sda1", True), True)
    report.check("folders", folders(bench), "sda1")
    report.check("the board has written to it", bench.machine.pull_stick("partitioned"), False)
    report.check("no folder after the pull", wait_for(lambda: not folders(bench)), True)
    bench.machine.plug_stick("stick")
    report.check("the stick is back", mounted(bench, "sda", True), True)


def card(bench):
    machine, report = bench.machine, bench.report
    bench.program.open_tab("Basic")
    count(bench, "SD card", "btnSdCardTest", 1, 1)
    for number, change in ((0, machine.pull_card), (1, machine.plug_card)):
        change()
        report.check("the card is below /mnt", mounted(bench, "mmcblk1", number == 1), number == 1)
        count(bench, "SD card", "btnSdCardTest", 1, number)
