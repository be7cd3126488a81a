"""All of the bench in one place, for the steps of the walk."""

import os
import re

from bench.keyboard import Keyboard
from bench.machine import PLACE, Console, Machine
from bench.ports import Port, line_echo, modem_answer
from bench.program import Program
from bench.report import Report, wait_for
from bench.screen import Screen


class Bench:
    def __init__(self):
        self.machine = Machine()
        try:
            self.connect()
        except Exception:
            self.machine.ask("quit")
            raise

    def connect(self):
        self.console = Console()
        self.screen = Screen(self.machine, self.console)
        self.program = Program(self.console, self.screen)
        self.keyboard = Keyboard(self.program)
        self.report = Report()
        self.ports = {
            "ttyS0": Port("ttyS0", lambda data: data),
            "ttyS1": Port("ttyS1", line_echo()),
            "ttyS2": Port("ttyS2"),
            "ttyS3": Port("ttyS3"),
            "ttyS5": Port("ttyS5"),
            "ttyUSB0": Port("ttyUSB0"),
            "ttyUSB1": Port("ttyUSB1", modem_answer),
        }

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.machine.ask("quit")

    def picture(self, name):
        """Saves the display in out/board."""
        size = f"{self.screen.width}x{self.screen.height}"
        self.machine.screenshot(os.path.join(PLACE, f"{name}-{size}.png"))

    def prepare(self):
        """Plugs in what the walk expects, and waits for the program."""
        self.machine.plug_stick("stick")
        self.program.wait_until_up()

    def program_id(self):
        """The process number of the program; empty while it does not run."""
        return self.console.text("pidof MoskTest")

    def ticks(self):
        """The processor time that the program has taken, in hundredths of a second."""
        return int(self.console.text("awk '{print $14+$15}' /proc/$(pidof MoskTest)/stat"))

    def wait_for_log(self, text, seconds=20):
        """Waits until the board's log has a line with the text. Returns it, or an empty text."""
        command = f"grep -F {text!r} /var/log/messages | tail -n 1"
        line = wait_for(lambda: self.console.text(command), seconds)
        return re.sub(r"^.*? mosktest: ", "", line)
