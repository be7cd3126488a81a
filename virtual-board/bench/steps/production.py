"""The log of a board that is being flashed, as quickly as a line carries it, twice."""

from bench.ports import flashing_log
from bench.steps.sharing import read_shared

OPENED = "******** Open COM succeed! [/dev/ttyS2]"
RESULTS = [OPENED] + ["******** " + text for text in (
    "Start erasing flash!", "Erasing flash succeed!", "Burn Rootfs succeed!",
    "Burn Uboot succeed!", "Burn succeed!", "Network OK!", "EMMC OK!", "DDR anomaly!",
    "Shutdown!")]
SUMMARY = "bodyWidget QTextEdit"


def log(bench):
    program = bench.program
    program.open_page("production")
    program.wait_for_text(SUMMARY, lambda text: "Open COM" in text)
    burn(bench, "first board")
    program.tap("btnReset")
    shown = program.wait_for_text(SUMMARY, OPENED + "\n")
    bench.report.check("Reset", shown, OPENED + "\n")
    burn(bench, "second board")


def burn(bench, board):
    program, report = bench.program, bench.report
    sent = flashing_log()
    program.tap("btnSummary")
    bench.ports["ttyS2"].send_at_line_rate(sent.encode())
    expected = "\n".join(RESULTS) + "\n"
    shown = program.wait_for_text(SUMMARY, expected, 60)
    report.check(f"{board}, summary", shown, expected)
    bench.picture("production")
    program.tap("btnDetail")
    shown = read_shared(bench, "operate text 'bodyWidget QTextEdit'")
    lines = [line.strip("\r") for line in shown.split("\n") if line.strip("\r")]
    results = [line for line in lines if line.startswith("********")]
    rest = [line for line in lines if not line.startswith("********")]
    report.check(f"{board}, results in the detail", results, RESULTS)
    report.check(f"{board}, lines of the log in the detail", len(rest), len(sent.split("\r\n")) - 1)
    report.check(f"{board}, all as sent", rest == sent.split("\r\n")[:-1], True)
