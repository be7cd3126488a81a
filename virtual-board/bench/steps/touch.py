"""Touches through the kernel's input layer: tabs, the language's list, the touch test."""

from bench.program import TABS
from bench.report import wait_for

LANGUAGE = "bodyWidget QComboBox"
ENGLISH, CHINESE = 1, 0
RED = (255, 1, 4)


def english(bench):
    """Chooses English, which the steps take for granted, if it is not chosen."""
    program = bench.program
    # By its name: the tab does nothing when it is chosen and a page without a tab is on show.
    program.open_page("home")
    program.tap_tab_at(0)
    if program.text("menuTab") != "Home":
        program.choose(LANGUAGE, ENGLISH)
        program.wait_for_text("menuTab", "Home")


def languages(bench):
    program, report = bench.program, bench.report
    for item, home in ((CHINESE, "首页"), (ENGLISH, "Home")):
        program.tap_tab_at(0)
        program.choose(LANGUAGE, item)
        report.check("the menu begins with", program.wait_for_text("menuTab", home), home)


def tabs(bench):
    for name in TABS[1:] + TABS[:1]:
        bench.program.tap_tab(name)
        bench.report.check(f"tab {name}", bench.program.text("menuTab"), name)


def touch_test(bench):
    """Puts a finger on each of the 81 places. Each turns red while the finger is on it."""
    program, screen = bench.program, bench.screen
    program.open_tab("Basic")
    program.tap("btnTouchTest")
    wait_for(lambda: program.is_open("toolTouchTest"))
    places = program.list("toolTouchTest QPushButton")
    red = []
    for number, place in enumerate(places, start=1):
        # The middle of a place has its number.
        x, y = place.x + 8, place.y + place.height // 2
        screen.press(x, y)
        if wait_for(lambda x=x, y=y: screen.look().pixel(x, y) == RED, 5, 0.05):
            red.append(number)
        if number == 40:
            bench.picture("touch-test")
        if place.text != "Exit":
            screen.release()
        else:
            # Off the button, so that the release does not press it.
            screen.move(x, place.y - 8)
            screen.release()
    bench.report.check("places that turn red", len(red), 81)
    last = places[0]
    look = screen.look()
    bench.report.check("a place without a finger",
                       look.pixel(last.x + 8, last.y + last.height // 2) != RED, True)
    screen.tap(*places[40].centre())
    closed = wait_for(lambda: not program.is_open("toolTouchTest"))
    bench.report.check("Exit", "closed" if closed else "open", "closed")
