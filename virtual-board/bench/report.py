"""The report of a walk: a line for each check, and the pictures beside it."""

import time


class Report:
    def __init__(self):
        self.area = ""
        self.checks = 0
        self.wrong = 0
        self.begun = time.monotonic()

    def check(self, what, shown, expected):
        """Prints a check with its verdict. Right is what equals `expected`."""
        self.judge(what, shown, expected, shown == expected)

    def judge(self, what, shown, expected, is_right):
        """Prints a check whose verdict is not whether both texts are equal."""
        self.checks += 1
        self.wrong += 0 if is_right else 1
        texts = [self.area, what, *(one_line(text) for text in (shown, expected))]
        print(" | ".join(texts + ["ok" if is_right else "WRONG"]), flush=True)

    def close(self):
        """Prints the sum. Returns whether there were checks, and all were right."""
        seconds = time.monotonic() - self.begun
        print(f"{self.checks} checks, {self.wrong} wrong, {seconds:.0f} s", flush=True)
        return self.checks > 0 and self.wrong == 0


def one_line(value, limit=160):
    text = str(value).replace("\n", "\\n")
    return text if len(text) <= limit else text[:limit] + "..."


def wait_for(is_so, seconds=20, pause=0.2):
    """Waits until the call returns something true, and returns it; after the limit the last."""
    end = time.monotonic() + seconds
    while True:
        result = is_so()
        if result or time.monotonic() > end:
            return result
        time.sleep(pause)
