#!/usr/bin/python3
"""What the documents tell people to type and to read is there: commands with their options,
presets, targets and tests, paths, links, functions and variables of the environment.

  documents.py PROJECT
"""

import glob
import itertools
import json
import os
import re
import shlex
import sys

os.chdir(sys.argv[1])
FOLDERS = [".ci"] + [name[:-1] for name in glob.glob("*/") if name not in ("build/", "out/")]
DOCUMENTS = [path for path in ["README.md", "HACKING.md", "CHANGELOG.md"] +
             glob.glob("docs/**/*.md", recursive=True) if "/source/" not in path]
wrong = []


def read(path):
    with open(path, encoding="utf-8", errors="replace") as file:
        return file.read()


SOURCES = [path for folder in FOLDERS for path in glob.glob(folder + "/**/*", recursive=True)
           if os.path.isfile(path) and not path.endswith((".md", ".png", ".html"))] + [
               "run.sh", "test.sh", "CMakeLists.txt"]
SOURCE = "\n".join(map(read, SOURCES))
CMAKE = "\n".join(read(path) for path in SOURCES if path.endswith("CMakeLists.txt"))
PRESETS = {preset["name"] for preset in json.loads(read("CMakePresets.json"))["configurePresets"]}
TARGETS = set(re.findall(r"add_(?:custom_target|executable|library|board_test|fuzzer)\((\S+)", CMAKE))
TESTS = re.findall(r"add_(?:board_test\(|test\(NAME |protocol_test\()(\S+?)[)\s]", CMAKE)
PROGRAMS = {"mosktest-tour": "simulated-board/tour/main.cpp",
            "operate": "simulated-board/operator/operate.cpp"}
# Whose names these are: CMake's, Buildroot's, the kernel's, Yocto's.
OTHERS = ("CMAKE_", "BR2_", "USB_", "PR_", "SYSVINIT_")


def pieces(text):
    """What a document has as code: its indented lines, and what stands between backquotes."""
    for line in text.split("\n"):
        if re.match(r" {4,}\S", line) and "|" not in line[:5]:
            yield re.sub(r"\s+#.*", "", line)
        yield from re.findall(r"`([^`]+)`", line)


def is_ours(word):
    return word.startswith("./") or word.split("/")[0] in FOLDERS and "/" in word


def exists(path):
    """Whether there is such a file. NAME and New... stand for others; a class has two files."""
    if re.search(r"[A-Z]{3,}|/New[A-Z]|\$|\.\.\.|…", path) and not os.path.exists(path):
        return True
    braces = re.split(r"\{(.*?)\}", path)
    choices = [part.split(",") if i % 2 else [part] for i, part in enumerate(braces)]
    return all(glob.glob(each) or glob.glob(each + ".cpp")
               for each in map("".join, itertools.product(*choices)))


def has_word(text, word):
    return re.search(rf"(?<![\w-]){re.escape(word)}(?![\w-])", text)


def look_at_command(words):
    """Returns what is wrong with a command of ours, or with one of CMake's."""
    while words and re.match(r"[A-Z_]+=", words[0]):
        words = words[1:]
    for option, arguments in zip(words, words[1:]):
        if words[0] in ("cmake", "ctest", "./test.sh"):
            if option == "--preset" and arguments not in PRESETS:
                yield f"no preset {arguments}"
            if option == "--target" and arguments not in TARGETS:
                yield f"no target {arguments}"
            if option == "-R" and not any(re.search(arguments, test) for test in TESTS):
                yield f"no test {arguments}"
    if len(words) < 2:
        return
    if words[0] in PROGRAMS:
        script = read(PROGRAMS[words[0]]).replace('{"', '{"--')
    elif is_ours(words[0]) and os.path.isfile(words[0]):
        if not os.access(words[0], os.X_OK):
            yield f"{words[0]} cannot be run"
            return
        script = read(words[0])
        if words[:2] == ["./run.sh", "accept"]:
            script += read("virtual-board/accept") + "--help"
    else:
        return
    own = list(itertools.takewhile(lambda word: word != "--", words[1:]))
    for number, word in enumerate(own):
        is_known = has_word(script, word) or words[0] == "operate" and f'"{word}"' in SOURCE
        if re.match(r"--\w" if number else r"--\w|[a-z-]{3,}$", word) and not is_known:
            yield f"{words[0]} knows no {word}"


def look_at(path):
    text = read(path)
    for piece in pieces(text):
        for part in re.split(r" && |\s{2,}", piece.strip()):
            try:
                words = shlex.split(part)
            except ValueError:
                words = part.split()
            if words and words[0].startswith("--") and not has_word(SOURCE, words[0]):
                yield f"no option {words[0]}"
            for word in words:
                if is_ours(word) and not exists(word.rstrip(",.:")) and not word.endswith(".deb"):
                    yield f"no {word}"
            # A shortened command of the same folder; other commands run ours as their arguments.
            starts = [i for i, word in enumerate(words) if i == 0 or is_ours(word)]
            for start in starts:
                yield from look_at_command(words[start:])
        for name in re.findall(r"\b([A-Z]\w+)\(", piece):
            if path != "CHANGELOG.md" and not has_word(SOURCE, name):
                yield f"no function {name}()"
        for name in re.findall(r"(?<![\w/])([A-Z]+_[A-Z_]+)\b", piece.replace("-D", "")):
            if name not in SOURCE and not name.startswith(OTHERS):
                yield f"nothing is called {name}"
    for link in re.findall(r"\]\(([^)#]+)", text):
        if "://" not in link and not os.path.exists(os.path.join(os.path.dirname(path), link)):
            yield f"no {link}"


told = set(re.findall(r"\\-\\-(\w+)", read("packaging/man/mosktest-tour.1")))
known = set(re.findall(r'addOption\(\{"(\w+)"', read(PROGRAMS["mosktest-tour"])))
if told != known:
    wrong.append(f"packaging/man/mosktest-tour.1 and the tour's options: {told ^ known}")
told = set(re.findall(r"^\| `([a-z0-9-]+)[ `]", read("docs/simulated-board.md"), re.M))
known = set(re.findall(r'^    \{"([a-z0-9-]+)", \d', read("simulated-board/BoardDescription.cpp"), re.M))
if told != known:
    wrong.append(f"docs/simulated-board.md and BoardDescription.cpp: {sorted(told ^ known)}")
table = read("docs/testing.md").split("| section |")[1].split("\n\n")[0]
told = re.findall(r"^\| `(\w+)` ", table, re.M)
known = re.search(r'^sections="(.*)"', read("tests/source-checks.sh"), re.M)[1].split()
if told != known:
    wrong.append(f"docs/testing.md has the sections {told}, tests/source-checks.sh has {known}")
for document in sorted(DOCUMENTS):
    for problem in dict.fromkeys(look_at(document)):
        wrong.append(f"{document}: {problem}")
print("\n".join(wrong) or "What the documents name is there: ok")
sys.exit(len(wrong))
