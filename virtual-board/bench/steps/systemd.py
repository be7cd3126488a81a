"""The program's packages on a board with systemd and udev."""

from bench.report import wait_for
from bench.steps.service import shows_program
from bench.steps.storage import folders, mounted

PRODUCTION = "ToolProductionTest"


def state(bench, unit):
    return bench.console.text(f"systemctl is-active {unit}")


def judge_screen(bench, is_programs):
    """The screen is either the program's or getty's."""
    report = bench.report
    states = ("active", "inactive") if is_programs else ("inactive", "active")
    wait_for(lambda: state(bench, "mosktest") == states[0])
    report.check("service", state(bench, "mosktest"), states[0])
    wait_for(lambda: state(bench, "getty@tty1") == states[1])
    report.check("getty", state(bench, "getty@tty1"), states[1])
    wait_for(lambda: shows_program(bench) == is_programs, 60)
    report.check("the program is on the display", shows_program(bench), is_programs)


def judge_page(bench, what):
    report, program = bench.report, bench.program
    report.check(what, wait_for(lambda: program.is_open(PRODUCTION), 60), True)


def install_package(bench, name):
    """By dpkg, so that the package's scripts run. What it depends on is there, but dpkg has not
    installed it."""
    text, status = bench.console.run(f"dpkg -i --force-depends /media/bench/{name}_*.deb", 600)
    bench.report.judge(name, "installed" if status == 0 else text[-200:], "installed", status == 0)


def install(bench):
    """With a partitioned stick in the board, and without the package that PAGE= needs."""
    report = bench.report
    bench.machine.plug_stick("partitioned")
    wait_for(lambda: bench.console.run("test -b /dev/sda1")[1] == 0)
    install_package(bench, "mosktest")
    judge_screen(bench, True)
    report.check("the stick's partition is below /mnt", mounted(bench, "sda1", True), True)
    report.check("folders of sticks", folders(bench), "sda1")
    report.check("mounts that have failed",
                 bench.console.text("systemctl list-units --failed --no-legend 'mnt-*'"), "")
    report.check("the board has written to it", bench.machine.pull_stick("partitioned"), False)
    report.check("no folder after the pull", wait_for(lambda: not folders(bench)), True)
    bench.machine.plug_stick("stick")


def page(bench):
    report, console = bench.report, bench.console
    console.run("sed -i s/^PAGE=.*/PAGE=production/ /etc/default/mosktest")
    console.run("systemctl restart mosktest")
    command = "journalctl -b -u mosktest -o cat | grep ^PAGE= | tail -n 1"
    report.check("the journal says", wait_for(lambda: console.text(command), 60),
                 "PAGE=production in /etc/default/mosktest needs mosktest-operator, "
                 "which is not installed")
    install_package(bench, "mosktest-operator")
    console.run("systemctl restart mosktest")
    judge_page(bench, "the page of the settings")
    bench.picture("systemd")
    console.run("sed -i s/^PAGE=.*/PAGE=nonsense/ /etc/default/mosktest")
    console.run("systemctl restart mosktest")
    expected = "PAGE=nonsense in /etc/default/mosktest opens no page"
    report.check("the journal says", wait_for(lambda: console.text(command) == expected, 60) and
                 console.text(command), expected)
    console.run("sed -i s/^PAGE=.*/PAGE=production/ /etc/default/mosktest")
    console.run("systemctl restart mosktest")
    judge_page(bench, "the page again")


def touch(bench):
    """Through udev and libinput, for which nothing is set."""
    bench.program.tap_tab("Basic")
    bench.report.check("a tab is tapped", bench.program.is_open("BasicTester"), True)


def crash(bench):
    before = bench.program_id()
    bench.console.run(f"kill -SEGV {before}")
    again = wait_for(lambda: bench.program_id() not in ("", before) and bench.program_id(), 60)
    bench.report.check("started again", bool(again), True)
    judge_page(bench, "on its page")
    judge_screen(bench, True)


def stop(bench):
    bench.console.run("systemctl stop mosktest")
    judge_screen(bench, False)
    bench.picture("systemd-stopped")
    bench.console.run("systemctl start mosktest")
    judge_screen(bench, True)


def restart(bench):
    """Getty does not come between."""
    before = bench.program_id()
    bench.console.run("systemctl restart mosktest")
    judge_page(bench, "on its page")
    bench.report.check("another process", bench.program_id() != before, True)
    judge_screen(bench, True)


def remove(bench):
    """With a stick in the board."""
    report = bench.report
    report.check("the stick is below /mnt", mounted(bench, "sda", True), True)
    text, status = bench.console.run("dpkg -r mosktest-operator mosktest", 600)
    report.judge("removed", "yes" if status == 0 else text[-200:], "yes", status == 0)
    judge_screen(bench, False)
    report.check("the stick is unmounted", mounted(bench, "sda", False), False)
    report.check("folders of sticks", folders(bench), "")
    report.check("left of the rule, the unit and the scripts",
                 bench.console.text("ls -d /usr/lib/udev/rules.d/*mosk* "
                                    "/usr/lib/systemd/system/mosk* /usr/lib/mosktest 2>/dev/null"),
                 "")
