"""A copy of the project with a build of its own, and what the tests of that build cover."""

import concurrent.futures
import json
import os
import pathlib
import re
import shutil
import signal
import subprocess
import time

PRODUCT = ("frame", "protocols", "instruments", "pages")
LEFT_OUT = {".git", "build", "out", "__pycache__"}

# Tests of the source, the resources, the scripts and the simulated board, and those that take
# minutes.
NOT_RUN = re.compile(
    r"Source-|Resources|Refusals|Service$|Versions|QtSymbols|Endurance|RandomTaps|TourTest|OperatorTest"
    r"|SimulatedFlashingLog|BoardDescription|Layers")


def run(command, limit=None, **options):
    """Runs a command. Returns its exit code and output; the code is None when the limit in seconds
    has passed. Then everything that it has started is stopped, too."""
    process = subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                               text=True, errors="replace", start_new_session=True, **options)
    try:
        output, _ = process.communicate(timeout=limit)
        return process.returncode, output
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, signal.SIGKILL)
        output, _ = process.communicate()
        return None, output
    except BaseException:
        os.killpg(process.pid, signal.SIGKILL)
        raise


class Tree:
    """A copy of the project in `folder`/source, built in `folder`/build."""

    def __init__(self, project, folder, flags):
        self.source = folder / "source"
        self.build = folder / "build"
        self.copy(project)
        configured, output = run(
            ["cmake", "-G", "Ninja", "-S", self.source, "-B", self.build,
             "-DCMAKE_BUILD_TYPE=", f"-DCMAKE_CXX_FLAGS=-O0 -w {flags}"])
        if configured != 0:
            raise SystemExit(output)

    def copy(self, project):
        """Makes the copy equal to the project. Files that are equal keep their times."""
        wanted = set()
        for folder, folders, files in os.walk(project):
            folders[:] = [name for name in folders if name not in LEFT_OUT]
            for name in files:
                origin = pathlib.Path(folder, name)
                copied = self.source / origin.relative_to(project)
                wanted.add(copied)
                if not copied.exists() or copied.read_bytes() != origin.read_bytes():
                    copied.parent.mkdir(parents=True, exist_ok=True)
                    shutil.copyfile(origin, copied)
                shutil.copymode(origin, copied)
        for copied in self.source.rglob("*"):
            if copied.is_file() and copied not in wanted:
                copied.unlink()

    def tests(self):
        """What CTest knows about each test, by name. A program that is not built has no command."""
        _, listed = run(["ctest", "--test-dir", self.build, "--show-only=json-v1"])
        return {test["name"]: test for test in json.loads(listed)["tests"]
                if not NOT_RUN.search(test["name"])}

    def make(self, tests):
        """Builds the tests with what they need. Returns whether that worked, and the output."""
        code, output = run(["cmake", "--build", self.build, "--target", *tests])
        return code == 0, output

    def failure(self, test, limit):
        """Runs a test through CTest. Returns what failed first, or None when it passed."""
        code, output = run(["ctest", "--test-dir", self.build, "-R", f"^{test}$",
                            "--no-tests=error", "--output-on-failure"], limit)
        if code == 0:
            return None
        if code is None:
            return f"still running after {limit:.0f} s"
        first = re.search(r"^(?:\d+: )?(?:FAIL!|QFATAL).*$", output, re.MULTILINE)
        return first.group().strip() if first else "the program ended early"

    def cover(self, test, notes):
        """Runs a test of a build with --coverage. Returns the seconds that it took and the lines
        that it ran, by file; None for the lines when the test failed."""
        notes = notes / test["name"]
        shutil.rmtree(notes, ignore_errors=True)
        notes.mkdir(parents=True)
        command = test["command"]
        if "--" in command:
            command = [command[0], "--share", str(notes), *command[1:]]
        environment = dict(os.environ, GCOV_PREFIX=str(notes))
        for entry in test["properties"]:
            if entry["name"] == "ENVIRONMENT":
                environment.update(setting.split("=", 1) for setting in entry["value"])
        began = time.monotonic()
        code, output = run(command, 600, env=environment, cwd=self.build)
        seconds = time.monotonic() - began
        if code != 0:
            print(output[-2000:])
            return seconds, None
        return seconds, self.lines_run(notes)

    def lines_run(self, notes):
        """The product's lines that ran, by file, from the counts that a test has left in notes."""
        lines = {}
        copied = notes / self.build.relative_to("/")
        for counts in copied.rglob("*.gcda"):
            place = counts.relative_to(copied)
            if place.parts[0] not in PRODUCT:
                continue
            note = place.with_suffix(".gcno")
            shutil.copy(self.build / note, copied / note)
            _, told = run(["gcov", "--json-format", "--stdout", counts], cwd=notes)
            for file in json.loads(told)["files"]:
                path = pathlib.Path(os.path.normpath(self.build / file["file"]))
                if self.source in path.parents:
                    ran = {line["line_number"]: line["count"] > 0 for line in file["lines"]}
                    known = lines.setdefault(str(path.relative_to(self.source)), {})
                    for line, did in ran.items():
                        known[line] = known.get(line, False) or did
        return lines


def measure(tree, notes, at_once):
    """What each test of a build with --coverage takes and runs: {test: [seconds, {file: {line:
    whether it ran}}]}. A test that fails is named and left out."""
    tests = tree.tests()
    with concurrent.futures.ThreadPoolExecutor(at_once) as pool:
        results = dict(zip(tests, pool.map(lambda test: tree.cover(test, notes), tests.values())))
    for test, (_, lines) in results.items():
        if lines is None:
            print(f"{test} fails without any fault and is not used.")
    return {test: result for test, result in results.items() if result[1] is not None}
