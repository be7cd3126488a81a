"""The service: stopped, started, and started again after a crash."""

from bench.report import wait_for

INIT = "/etc/init.d/mosktest"
HEADER_BLUE = (96, 168, 239)


def shows_program(bench):
    """Whether the header is on the display."""
    screen = bench.screen
    return screen.look().pixel(screen.width - 4, 4) == HEADER_BLUE


def restart(bench):
    bench.console.run(f"{INIT} restart")
    bench.program.wait_until_up()


def stop(bench):
    program, report = bench.program, bench.report
    program.open_tab("Serial")
    program.tap("btnOpenCom")
    bench.console.run(f"{INIT} stop")
    report.check("the log says", bench.wait_for_log("asked to stop"),
                 "MoskTest was asked to stop and ended with 0")
    report.check("running", bench.program_id(), "")
    report.check("the console is back on the display",
                 wait_for(lambda: not shows_program(bench)), True)
    report.check("readers of /dev/ttyS2",
                 bench.console.text("ls -l /proc/[0-9]*/fd 2>/dev/null | grep -c ttyS2"), "0")


def start(bench):
    report = bench.report
    bench.console.run(f"{INIT} start")
    report.check("up", bool(bench.program.wait_until_up()), True)
    report.check("on the display", wait_for(lambda: shows_program(bench)), True)
    report.check("status", bench.console.text(f"{INIT} status"), "MoskTest is running")


def page(bench):
    """PAGE= opens a page at each start, for people without a shell."""
    program, report = bench.program, bench.report
    bench.console.run("cp /etc/default/mosktest /tmp; echo PAGE=production >>/etc/default/mosktest")
    bench.console.run(f"{INIT} restart")
    report.check("on show", wait_for(lambda: program.is_open("ToolProductionTest"), 60), True)
    before = bench.program_id()
    bench.console.run(f"kill -SEGV {before}")
    wait_for(lambda: bench.program_id() not in ("", before), 30)
    report.check("on show after a crash",
                 wait_for(lambda: program.is_open("ToolProductionTest"), 60), True)
    bench.console.run("cp /tmp/mosktest /etc/default")
    restart(bench)


def crash(bench):
    report = bench.report
    before = bench.program_id()
    bench.console.run(f"kill -SEGV {before}")
    again = wait_for(lambda: bench.program_id() not in ("", before) and bench.program_id(), 30)
    report.check("started again", bool(again), True)
    report.check("the log says", bench.wait_for_log("starting it again"),
                 "MoskTest ended with 139; starting it again")
    report.check("up", bool(bench.program.wait_until_up()), True)
