"""The reboot button really reboots; the language and the markers survive it."""

import os

from bench.machine import PLACE
from bench.report import wait_for
from bench.steps.touch import CHINESE, LANGUAGE


def starts():
    """How often the board has come up."""
    with open(os.path.join(PLACE, "console.log"), encoding="utf-8", errors="replace") as file:
        return file.read().count("virtual board is up")


def reboot(bench):
    program, report = bench.program, bench.report
    program.tap_tab("Home")
    for button, question in (("btnSwitchHMI", "Are you sure switch the HMI system?"),
                             ("btnTestEnd", "Confirm that the testing has been completed?")):
        program.tap(button)
        report.check(button, program.text("QMessageBox"), question)
        bench.picture(button)
        program.answer("OK")
    program.choose(LANGUAGE, CHINESE)
    report.check("language", program.wait_for_text("menuTab", "首页"), "首页")

    before = starts()
    bench.screen.tap(*program.widget("btnReboot").centre())
    # QEMU takes a minute or two to unpack the kernel over the one that has run.
    report.check("the board comes up again", wait_for(lambda: starts() > before, 600), True)
    report.check("the program too", bool(program.wait_until_up()), True)
    report.check("language", program.text("menuTab"), "首页")
    report.check("markers", bench.console.text("ls -1 /etc/sw2hmi /etc/qttestend"),
                 "/etc/qttestend\n/etc/sw2hmi")
    buttons = [button.name for button in program.list("bodyWidget QPushButton")
               if button.is_visible]
    report.check("buttons when the test is finished", buttons, ["btnReboot"])
    bench.picture("after-reboot")
    bench.console.run("rm -f /etc/sw2hmi /etc/qttestend")
