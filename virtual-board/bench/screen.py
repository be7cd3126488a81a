"""The board's display and its touch screen: a finger, and a look at the pixels."""

import os
import time

from bench.machine import PLACE


class Picture:
    """The pixels of the display at one moment."""

    def __init__(self, data):
        """Reads the PPM format: "P6", width, height, largest value, then three bytes a pixel."""
        _, width, height, _, self.pixels = data.split(maxsplit=4)[:5]
        self.width, self.height = int(width), int(height)
        self.pixels = data[len(data) - self.width * self.height * 3:]

    def pixel(self, x, y):
        """Red, green and blue at a place."""
        begin = (y * self.width + x) * 3
        return tuple(self.pixels[begin:begin + 3])

    def colours(self, left, top, width, height, step=4):
        """The colours in a part of the display, and how often each was met."""
        met = {}
        for y in range(top, top + height, step):
            for x in range(left, left + width, step):
                colour = self.pixel(x, y)
                met[colour] = met.get(colour, 0) + 1
        return met


class Screen:
    """The display, and a finger on it. The kernel sees its touches as those of a touch screen."""

    def __init__(self, machine, console):
        self.machine = machine
        size = console.text("cat /sys/class/graphics/fb0/virtual_size")
        if "," not in size:
            raise OSError(f"it has no display: {size}")
        self.width, self.height = map(int, size.split(","))

    def look(self):
        path = os.path.join(PLACE, "screen.ppm")
        self.machine.ask("screendump", filename=path)
        with open(path, "rb") as file:
            return Picture(file.read())

    def move(self, x, y):
        axes = (("x", x, self.width), ("y", y, self.height))
        self.machine.ask("input-send-event", events=[
            {"type": "abs", "data": {"axis": axis, "value": int((at + 0.5) * 32768 / size)}}
            for axis, at, size in axes])

    def press(self, x, y):
        self.move(x, y)
        self.button(True)

    def release(self):
        self.button(False)

    def button(self, down):
        self.machine.ask("input-send-event", events=[
            {"type": "btn", "data": {"down": down, "button": "left"}}])

    def tap(self, x, y):
        self.press(x, y)
        time.sleep(0.1)
        self.release()
