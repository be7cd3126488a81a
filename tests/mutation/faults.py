"""The small faults that a line of the program can be given."""

import random
import re
from typing import NamedTuple


class Fault(NamedTuple):
    """One changed line. `after` is empty where the line is dropped."""

    file: str
    line: int
    rule: str
    before: str
    after: str

    def __str__(self):
        return f"{self.file}:{self.line}: {self.rule}: {self.before.strip()} -> {self.after.strip()}"


OPPOSITE = {"==": "!=", "!=": "==", "<": ">=", ">=": "<", ">": "<=", "<=": ">"}
NEXT = {"<": "<=", "<=": "<", ">": ">=", ">=": ">"}
OTHER = {"&&": "||", "||": "&&", "true": "false", "false": "true", "++": "--", "--": "++",
         "+=": "-=", "-=": "+=", "+": "-", "-": "+", "*": "/", "/": "*"}

# The rules: a name, what is looked for, and what takes the place of its first group. Texts,
# characters and comments are blank when these look at a line.
RULES = [
    ("opposite comparison", r" (==|!=|[<>]=?) ", lambda found: OPPOSITE[found]),
    ("moved boundary", r" ([<>]=?) ", lambda found: NEXT[found]),
    ("other operator", r"(?<!\S)(&&|\|\|)(?!\S)", lambda found: OTHER[found]),
    ("opposite condition", r"\b(?:if|while) \(([^;]*)\) \{$", lambda found: f"!({found})"),
    ("opposite condition", r"(\S+) \? ", lambda found: f"!{found}"),
    ("lost negation", r"(!)(?=[\w(])", lambda found: ""),
    ("other truth", r"\b(true|false)\b", lambda found: OTHER[found]),
    ("number off by one", r"(?<![\w.])(0x[0-9a-fA-F]+|0|[1-9]\d*)(?![\w.])",
     lambda found: str(int(found, 0) + 1)),
    ("other operator", r" ([-+*/]) ", lambda found: OTHER[found]),
    ("other operator", r"(\+\+|--|\+=|-=)", lambda found: OTHER[found]),
    ("other result", r"^\s+return ([^;]+);$", lambda found: "{}"),
    ("lost return", r"^\s+(return;|break;|continue;)$", lambda found: ";"),
    ("negated argument", r"(?<!\bif)(?<!\bswitch)(?<=\w)\((?!this|parent|page|nullptr|\d|[A-Z])(\w+)\)",
     lambda found: f"!{found}"),
]
TEXT = re.compile(r'"(?:[^"\\]|\\.)*"' + r"|(?<!\w)'(?:[^'\\]|\\.)+'")
COMMENT = re.compile(r"//.*$|/\*.*?\*/")
LOG = re.compile(r"\bq(?:Debug|Info|(?:Errno)?Warning|Critical)\(")


def without(pattern, line):
    """The line with blanks in place of what the pattern finds."""
    return pattern.sub(lambda found: " " * len(found.group()), line)


def is_statement(lines, index):
    """Whether the line is one whole statement that only calls something or changes a variable."""
    line = lines[index]
    before = lines[index - 1].strip()
    starts_here = before == "" or before.endswith((";", "{", "}", ":")) or before.startswith("//")
    calls = re.match(r"^\s+(?!return|delete|const |auto )[\w.:>\[\]()&*-]+(\(.*\)| [-+]?= .*);$", line)
    return starts_here and bool(calls) and line.count("(") == line.count(")")


def faults_of(file, source):
    """Every fault that the rules make in a source file, but for lines that only write a log."""
    lines = source.split("\n")
    in_log = False
    for index, line in enumerate(lines):
        in_log = in_log or bool(LOG.search(line))
        if in_log or line.lstrip().startswith(("//", "#", "extern")):
            in_log = in_log and not line.endswith(";")
            continue

        def fault(rule, start, end, text):
            return Fault(file, index + 1, rule, line, line[:start] + text + line[end:])

        uncommented = without(COMMENT, line) if not TEXT.search(line) else line
        for text in TEXT.finditer(uncommented):
            changed = '"X' + text.group()[1:] if text.group()[0] == '"' else "'~'"
            yield fault("other text", text.start(), text.end(), changed)
        code = without(COMMENT, without(TEXT, line)).rstrip()
        for rule, pattern, change in RULES:
            for found in re.finditer(pattern, code):
                start, end = found.span(1)
                changed = change(line[start:end])
                if changed != line[start:end]:
                    yield fault(rule, start, end, changed)
        if file.endswith(".cpp") and is_statement(lines, index):
            yield Fault(file, index + 1, "lost statement", line, "")


def in_turn(faults, seed):
    """The faults in a random order that takes each file and rule in its turn, and new lines first."""
    groups = {}
    chance = random.Random(seed)
    faults = sorted(faults)
    chance.shuffle(faults)
    for fault in faults:
        groups.setdefault((fault.file, fault.rule), []).append(fault)
    queues = list(groups.values())
    chance.shuffle(queues)
    ordered = [queue[turn] for turn in range(max(map(len, queues), default=0))
               for queue in queues if turn < len(queue)]
    lines = set()
    first, later = [], []
    for fault in ordered:
        (later if fault[:2] in lines else first).append(fault)
        lines.add(fault[:2])
    return first + later
