"""The tour: a walk through all pages in both languages, which the program's package for operators
has. It runs on the board.
"""

import os
import re
import shutil
from xml.etree import ElementTree

from bench.machine import SHARED

DESCRIPTION = os.path.join(os.path.dirname(__file__), "..", "virtual.board")
PATIENCE = 1800


def take(bench):
    """Takes the tour at the display's size. Its report and pictures are in out/board/shared."""
    folder = f"tour-{bench.screen.width}x{bench.screen.height}"
    shutil.rmtree(os.path.join(SHARED, folder), ignore_errors=True)
    shutil.copy(DESCRIPTION, SHARED)
    # Somebody sends on the CAN bus.
    bench.console.run("cangen can1 -g 500 & echo $! >/tmp/cangen.pid")
    text, status = bench.console.run("mosktest-tour --board /media/bench/virtual.board "
                                     f"--report /media/bench/{folder}", PATIENCE)
    bench.console.run("kill $(cat /tmp/cangen.pid)")
    print(text, end="")
    found = re.findall(r"\d+ checks.*", text)
    bench.report.judge("tour", found[-1] if found else text[-200:], "0 wrong", status == 0)
    judge_report(bench, os.path.join(SHARED, folder, "report.xml"))


def judge_report(bench, path):
    """The tour's own verdict is not all: it may have ended early, or passed a page by."""
    suite = ElementTree.parse(path).getroot().find("testsuite")
    for what in ("failures", "errors"):
        bench.report.check(f"{what} in the tour's report", suite.get(what), "0")
    visited = {case.get("classname") for case in suite.iter("testcase")}
    pages = {f"{language}.{page}" for page in bench.program.pages()
             for language in ("english", "chinese")}
    bench.report.check("pages that the tour has passed by", sorted(pages - visited), [])
