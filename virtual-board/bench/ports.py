"""What is plugged into the board's serial ports."""

import threading
import time

from bench.machine import connect

# Bytes that a line carries at 115200 baud, 8N1.
BYTES_PER_SECOND = 11520


class Port:
    """The far end of a serial port. Notes what the board sends, and may answer it."""

    def __init__(self, name, answer=None):
        """`answer` gets what has arrived at once and returns what to send back."""
        self.peer = connect(name)
        self.answer = answer
        self.heard = b""
        threading.Thread(target=self.listen, daemon=True).start()

    def listen(self):
        while True:
            try:
                data = self.peer.recv(65536)
            except OSError:
                return
            if not data:
                return
            self.heard += data
            if self.answer:
                self.peer.sendall(self.answer(data))

    def send(self, data):
        self.peer.sendall(data)

    def send_at_line_rate(self, data):
        """Sends as a line at 115200 baud would."""
        begun = time.monotonic()
        step = 576
        for sent in range(0, len(data), step):
            self.peer.sendall(data[sent:sent + step])
            ahead = begun + (sent + step) / BYTES_PER_SECOND - time.monotonic()
            if ahead > 0:
                time.sleep(ahead)

    def forget(self):
        self.heard = b""

    def close(self):
        self.peer.close()


def line_echo():
    """A partner that answers each line with "echo: " and the line."""
    pending = b""

    def answer(data):
        nonlocal pending
        *lines, pending = (pending + data).split(b"\n")
        return b"".join(b"echo: " + line + b"\n" for line in lines)
    return answer


def modem_answer(data):
    """A 4G modem: it accepts each AT command."""
    return b"\r\nOK\r\n" if b"AT" in data else b""


def flashing_log(lines=1500):
    """The log of a board that is being flashed, with all markers of a good run."""
    log = []

    def say(*texts):
        for text in texts:
            stamp = len(log) * 31
            log.append(f"[{stamp // 1000:5}.{stamp % 1000:03}]{text}")

    def chatter(count):
        for i in range(count):
            say(f"sunxi flash: part {i % 9} sector 0x{i * 2654435761 % (1 << 32):08x} err 0")

    chatter(lines // 10)
    say("begin to erase flash", "successed in erasing flash")
    chatter(lines // 2)
    say("successed in download part rootfs")
    chatter(lines // 4)
    say("successed in downloading uboot", "sprite success ")
    chatter(lines // 10)
    say("MOSK_HARD_NET: ok", "MOSK_HARD_EMMC: ok 7456MB", "MOSK_HARD_DDR: fail", "mmc 2 exit ok")
    return "\r\n".join(log) + "\r\n"
