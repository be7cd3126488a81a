"""The machine that QEMU simulates: its control connection, its console, and what plugs into it."""

import filecmp
import json
import os
import re
import shutil
import socket
import time

PLACE = os.path.realpath(os.path.join(os.path.dirname(__file__), "..", "..", "out", "board"))
# The board sees this folder as /media/bench.
SHARED = os.path.join(PLACE, "shared")


def image_of(name):
    return os.path.join(PLACE, name + ".img")


def connect(name):
    """Connects to a socket by a relative path: an absolute path could be too long."""
    here = os.getcwd()
    os.chdir(PLACE)
    try:
        peer = socket.socket(socket.AF_UNIX)
        peer.connect(name + ".socket")
        return peer
    finally:
        os.chdir(here)


class Machine:
    """QEMU's control connection, which speaks its machine protocol (QMP)."""

    def __init__(self):
        self.gone = set()
        peer = connect("qmp")
        self.lines = peer.makefile("rw")
        # QEMU greets one at a time.
        peer.settimeout(5)
        try:
            self.lines.readline()
        except socket.timeout:
            raise OSError("somebody else operates it") from None
        peer.settimeout(None)
        self.ask("qmp_capabilities")

    def ask(self, command, /, **arguments):
        """Sends a command and returns its answer. RuntimeError says why it is refused."""
        self.lines.write(json.dumps({"execute": command, "arguments": arguments}) + "\n")
        self.lines.flush()
        while True:
            answer = self.read()
            if "error" in answer:
                raise RuntimeError(answer["error"]["desc"])
            if "return" in answer:
                return answer["return"]

    def read(self):
        """Reads an answer or an event. QEMU tells by an event that a pulled device has gone."""
        line = self.lines.readline()
        if not line:
            raise OSError("QEMU has ended")
        message = json.loads(line)
        if message.get("event") == "DEVICE_DELETED":
            self.gone.add(message["data"].get("device"))
        return message

    def unplug(self, device):
        """Pulls a device out, and returns when it has gone."""
        self.gone.discard(device)
        self.ask("device_del", id=device)
        while device not in self.gone:
            self.read()

    def screenshot(self, path):
        """Saves the display as a PNG file."""
        self.ask("screendump", filename=os.path.abspath(path), format="png")

    def plug_stick(self, name):
        """Plugs in a USB stick with a copy of the image out/board/NAME.img."""
        shutil.copyfile(image_of(name), image_of(name + "-plugged"))
        image = {"driver": "file", "filename": image_of(name + "-plugged")}
        self.ask("blockdev-add", **{"node-name": name, "driver": "raw", "file": image})
        self.ask("device_add", driver="usb-storage", bus="usb.0", drive=name, id=name)

    def pull_stick(self, name):
        """Pulls it out. Returns whether the board has written to it."""
        self.unplug(name)
        self.ask("blockdev-del", **{"node-name": name})
        return not filecmp.cmp(image_of(name), image_of(name + "-plugged"), shallow=False)

    def plug_card(self):
        self.ask("blockdev-change-medium", id="card", filename=image_of("card"), format="raw")

    def pull_card(self):
        self.ask("blockdev-open-tray", id="card", force=True)
        self.ask("blockdev-remove-medium", id="card")

    def set_cable(self, plugged):
        """Plugs the Ethernet cable in, or pulls it."""
        self.ask("set_link", name="eth0", up=plugged)

    def plug_modem(self):
        """Plugs in the 4G modem: a network adapter and two serial ports."""
        self.ask("device_add", driver="usb-net", bus="usb.0", netdev="usb0", id="modem-usb0")
        for port in ("ttyUSB0", "ttyUSB1"):
            self.ask("device_add", driver="usb-serial", bus="usb.0", chardev=port,
                     id="modem-" + port, **{"always-plugged": True})

    def pull_modem(self):
        for device in ("modem-usb0", "modem-ttyUSB0", "modem-ttyUSB1"):
            self.unplug(device)


class Console:
    """The shell on the board's console."""

    def __init__(self):
        self.peer = connect("console")
        self.count = 0
        self.wait_for_shell()

    def wait_for_shell(self, patience=60):
        """Asks again after each second of silence: the console forgets what it was sent while a
        shell takes it over."""
        self.peer.settimeout(1)
        heard = b""
        end = time.monotonic() + patience
        while b"==shell" not in heard and time.monotonic() < end:
            self.peer.sendall(b"\x15echo '=='shell\n")
            try:
                while b"==shell" not in heard:
                    heard += self.hear()
            except socket.timeout:
                pass

    def hear(self):
        """Returns what the console says next. OSError tells that there is none."""
        said = self.peer.recv(65536)
        if not said:
            raise OSError("QEMU has ended")
        return said

    def run(self, command, patience=60):
        """Runs a command. Returns its output and its exit status."""
        self.count += 1
        self.peer.settimeout(patience)
        # The console echoes the command. Quotes break the marks in the echo, so that only the
        # output has them whole.
        self.peer.sendall(b"\x15echo '=='begin %d; { %s\n} 2>&1; echo '=='end %d $?\n"
                          % (self.count, command.encode(), self.count))
        marks = re.compile(rb"==begin %d\r?\n(.*)==end %d (\d+)\r?\n" % (self.count, self.count),
                           re.DOTALL)
        heard = b""
        while True:
            heard += self.hear()
            found = marks.search(heard)
            if found:
                return found[1].replace(b"\r", b"").decode(errors="replace"), int(found[2])

    def text(self, command, patience=60):
        """What a command prints, without the last line end."""
        return self.run(command, patience)[0].rstrip("\n")
