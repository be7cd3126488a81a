"""Typing on the program's on-screen keyboard, by touch."""

import time

from bench.report import wait_for

# The centres of the keys of Qt's English keyboard on a panel of 1024x320: the row's keys, the
# first key's place, the distance to the next one, the row's height.
LETTERS = (("qwertyuiop", 88, 84.75, 40), ("asdfghjkl", 118, 84.25, 110),
           ("zxcvbnm,.", 170, 82.5, 181))
SYMBOLS = (("1234567890", 88, 84.75, 40), ("@#%&*-+()", 118, 84.25, 110),
           ("!\"<>':;/?", 170, 82.5, 181))
SHIFT, TURN, BACKSPACE, HIDE = (87, 181), (110, 251), (935, 40), (917, 251)


class Keyboard:
    def __init__(self, program):
        self.program = program
        self.panel = None
        self.shows_symbols = False

    def is_open(self):
        return self.program.is_open("keyboardPanel")

    def open_for(self, field, starts_with_symbols=False):
        """Taps a field and waits for the keys."""
        self.program.tap(field)
        wait_for(self.is_open, 30)
        self.panel = self.program.widget("keyboardPanel")
        self.shows_symbols = starts_with_symbols

    def hide(self):
        if self.is_open():
            self.hit(HIDE)
            wait_for(lambda: not self.is_open(), 10)

    def hit(self, key):
        panel = self.panel
        self.program.screen.tap(panel.x + int(key[0] * panel.width / 1024),
                                panel.y + int(key[1] * panel.height / 320))
        time.sleep(0.15)

    def erase(self, count):
        for _ in range(count):
            self.hit(BACKSPACE)

    def type(self, text):
        for letter in text:
            place = self.find(letter.lower(), LETTERS)
            is_symbol = place is None
            if is_symbol:
                place = self.find(letter, SYMBOLS)
            if place is None:
                raise ValueError(f"no key {letter}")
            if is_symbol != self.shows_symbols:
                self.hit(TURN)
                self.shows_symbols = is_symbol
            if letter.isupper():
                self.hit(SHIFT)
            self.hit(place)

    @staticmethod
    def find(letter, rows):
        for keys, first, distance, height in rows:
            if letter in keys:
                return first + distance * keys.index(letter), height
        return None
