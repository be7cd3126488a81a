"""The program on the board: what its page shows, through the operator, and taps on its widgets by
the finger on the touch screen.
"""

import re
import shlex

from bench.report import wait_for

WIDGET = re.compile(
    r'(\S+) "(.*?)" at (-?\d+),(-?\d+) (\d+)x(\d+)( hidden)?( disabled)? "(.*)"$')
# Windows of their own: the places of their widgets are counted from their corner.
WINDOWS = ("QMessageBox", "toolTouchTest", "QComboBoxPrivateContainer")
TABS = ("Home", "Basic", "Serial", "Wifi", "Voice", "CAN")


class Widget:
    def __init__(self, match, corner=(0, 0)):
        self.kind, self.name = match[1], match[2]
        self.x, self.y = int(match[3]) + corner[0], int(match[4]) + corner[1]
        self.width, self.height = int(match[5]), int(match[6])
        self.is_visible = not match[7]
        self.is_enabled = not match[8]
        self.text = match[9]

    def centre(self):
        return self.x + self.width // 2, self.y + self.height // 2


class Program:
    """Widgets are named as for the command "operate": see operate(1)."""

    def __init__(self, console, screen):
        self.console = console
        self.screen = screen

    def operate(self, *words, patience=90):
        """Runs the command "operate". RuntimeError says why it failed."""
        text, status = self.console.run("operate " + shlex.join(map(str, words)), patience)
        if status != 0:
            raise RuntimeError(text.strip())
        return text[:-1] if text.endswith("\n") else text

    def wait_until_up(self, seconds=60):
        return wait_for(lambda: self.console.run("operate wait")[1] == 0, seconds)

    def text(self, widget):
        return self.operate("text", widget)

    def status(self, widget):
        """The text of a field and its verdict, "ok" or "error", which colours it."""
        return f'{self.text(widget)}, {self.operate("property", widget, "status")}'

    def items(self, widget):
        return self.operate("items", widget).split("\n")

    def list(self, selector):
        """The widgets that match a selector."""
        window = selector.split()[0].split("[")[0]
        corner = (0, 0)
        if window in WINDOWS:
            corner = tuple(map(int, self.operate("property", window, "pos").split()))
        matches = map(WIDGET.match, self.operate("list", selector).split("\n"))
        return [Widget(match, corner) for match in matches if match]

    def widget(self, selector):
        """The widget that a selector names."""
        index = re.search(r"\[(\d+)\]$", selector)
        return self.list(selector)[int(index[1]) if index else 0]

    def is_open(self, selector):
        return any(widget.is_visible for widget in self.list_or_none(selector))

    def list_or_none(self, selector):
        try:
            return self.list(selector)
        except (RuntimeError, ValueError):
            return []

    def wait_for_text(self, widget, is_wanted, seconds=20):
        """Waits until a widget shows the text, or one that the call accepts. Returns the last."""
        accepts = is_wanted if callable(is_wanted) else lambda text: text == is_wanted
        last = [""]

        def look():
            last[0] = self.text(widget)
            return accepts(last[0])

        wait_for(look, seconds)
        return last[0]

    def tap(self, selector):
        self.screen.tap(*self.widget(selector).centre())
        self.operate("idle")

    def press(self, button, field, seconds=40):
        """Taps a button and returns what the field then shows, once it is no longer checking."""
        self.tap(button)
        return self.wait_for_text(field, lambda text: "Detecting" not in text, seconds)

    def open_tab(self, name):
        """Opens a page afresh by its tab: that of an open page does nothing."""
        if name != "Home":
            self.tap_tab("Home")
        self.tap_tab(name)

    def tap_tab(self, name):
        index = TABS.index(name)
        self.tap_tab_at(index)
        # Not by its text: the program may speak another language.
        wait_for(lambda: self.operate("property", "menuTab", "currentIndex") == str(index))

    def tap_tab_at(self, index):
        bar = self.widget("menuTab QTabBar")
        # Each tab has the width that the style sheet sets.
        self.screen.tap(bar.x + 100 * index + 50, bar.y + bar.height // 2)
        self.operate("idle")

    def pages(self):
        """The names of all pages."""
        return [line.split("\t")[1] for line in self.operate("pages").split("\n")]

    def open_page(self, name):
        """Opens a page afresh by its name, which some without a tab need."""
        self.operate("page", 0)
        self.operate("page", name)
        self.operate("idle")

    def choose(self, box, index):
        """Opens a list by its arrow and taps an item of it."""
        self.tap(box)
        count = len(self.items(box))
        items = self.widget("QComboBoxPrivateContainer QComboBoxListView")
        self.screen.tap(items.x + 40, items.y + items.height * (2 * index + 1) // (2 * count))
        self.operate("idle")

    def answer(self, button):
        """Taps a button of the open box, by its text."""
        for widget in self.list("QMessageBox QPushButton"):
            if widget.text == button:
                self.screen.tap(*widget.centre())
                self.operate("idle")
                return
        raise RuntimeError(f"the box has no button {button}")
