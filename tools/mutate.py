#!/usr/bin/env python3
"""Plants faults in the program and shows which suite of the tests finds each.

    tools/mutate.py COUNT [--seed N] [--workers N] [--under PATH]

Each fault is tried alone by the suites nearest to its file. Those that pass them are planted together for all suites; a
suite that fails then is run with each half of them, and so on, until what is left passes every suite: that has
survived.

Works in copies of the commit in build/mutate, one for each worker, built as the release is; how long a suite may take
comes from the last run of test.sh here. Every suite must pass without a fault. A run that is started again with the
same seed goes on after what it has tried already; remove build/mutate to begin with a newer tree. The table is printed
and what it is made of kept in build/mutate/SEED.tsv.
"""

import argparse
import csv
import os
import pathlib
import queue
import random
import re
import shutil
import subprocess
import sys
import threading
from concurrent.futures import ThreadPoolExecutor

ROOT = pathlib.Path(__file__).resolve().parent.parent
WORK = ROOT / "build" / "mutate"
SOURCE = WORK / "source"  # the layers as they are without a fault
PASSED = "passed the nearest"

LAYERS = ("app", "options", "lists", "tray", "store", "platform")

# The suites nearest to a file: the first pattern that matches its path counts.
NEAREST = (
    (r"lists/(closed_log|log_file|newest_lines|site_of)", "closed_log"),
    (r"lists/", "lists settings_transfer accessibility"),
    (r"options/(settings_(loader|saver|transfer)|list_layouts)", "settings_transfer store"),
    (r"options/", "options settings_transfer"),
    (r"tray/(engine|tray_menu|tray_gestures|sentrel1)", "engine_control entry"),
    (r"tray/", "tray_icon entry"),
    (r"store/", "store settings_transfer"),
    (r"platform/com/(registration|registry_journal|own_type)", "registration platform automation"),
    (r"platform/com/server_security", "server_security"),
    (r"platform/com/", "platform entry automation engine_control"),
    (r"platform/controls/", "platform lists options accessibility scaling"),
    (r"platform/", "platform lists options"),
    (r"app/main", "automation registration server_security"),
    (r"app/", "entry automation options"),
)

SWAPS = {
    "comparison": {"==": "!=", "!=": "==", "<": "<=", "<=": "<", ">": ">=", ">=": ">", "&&": "||", "||": "&&"},
    "sign": {"+": "-", "-": "+", "+=": "-=", "-=": "+=", "|": "&", "|=": "&="},
}
TOKEN = re.compile(r'"(?:\\.|[^"\\])*"|//.*|(?<= )(?:==|!=|<=|>=|<|>|&&|\|\||\+=|-=|\|=|\+|-|\|)(?= )'
                   r"|\b(?:true|false)\b|(?<![\w.'])(?:0x[0-9A-Fa-f]+|[0-9]+)\b(?!')|!(?=[\w(])")
CALL = re.compile(r"(\s+)(?!return\b|throw\b|delete\b|using\b|case\b)"
                  r"[\w:]+(?:(?:\.|->|::)[\w:]+|\([^()]*\))*\(.*\);$")
NO_CODE = re.compile(r"\s*(#|//|static_assert|namespace|using |friend |template)")


def changed_token(text):
    """Kind and replacement of one token, or None."""
    for kind, swaps in SWAPS.items():
        if text in swaps:
            return kind, swaps[text]
    if text == "!":
        return "comparison", ""
    if text in ("true", "false"):
        return "constant", "false" if text == "true" else "true"
    if text[0].isdigit():
        return "constant", str(int(text, 0) + 1)
    if text[0] == '"' and len(text) > 2 and text[1] != "\\":
        return "string", f'"{"x" if text[1] != "x" else "y"}{text[2:]}'
    return None


def faults_of(path):
    """(kind, line, what was there, what is there now, first line that changes, its lines afterwards)."""
    lines = (SOURCE / path).read_text().split("\n")
    for number, line in enumerate(lines):
        if NO_CODE.match(line):
            continue
        for token in TOKEN.finditer(line):
            change = changed_token(token.group())
            if change:
                kind, text = change
                after = line[:token.start()] + text + line[token.end():]
                yield kind, number, line.strip(), after.strip(), [after]
        call = CALL.match(line)
        # Not the rest of a statement that began above.
        if call and re.search(r"[;{}:]\s*(//.*)?$", lines[number - 1] or "{"):
            yield "dropped call", number, line.strip(), "", [call.group(1) + ";"]
            following = lines[number + 1]
            if CALL.match(following) and CALL.match(following).group(1) == call.group(1) and following != line:
                yield ("swapped calls", number, line.strip(), f"after {following.strip()}", [following, line])


def plan(seed, under):
    """Every possible fault, in an order in which each kind comes up as often as the others."""
    kinds = {}
    for path in sorted(p for layer in LAYERS for p in (SOURCE / layer).rglob("*") if p.suffix in (".cpp", ".h")):
        name = path.relative_to(SOURCE).as_posix()
        if name.startswith(under):
            for fault in faults_of(name):
                kinds.setdefault(fault[0], []).append((name, *fault))
    chance = random.Random(seed)
    for faults in kinds.values():
        chance.shuffle(faults)
    while kinds:
        kind = chance.choice(sorted(kinds))
        yield kinds[kind].pop()
        if not kinds[kind]:
            del kinds[kind]


class Tree:
    """A copy of the commit that one worker builds and tests."""

    def __init__(self, number):
        self.path = WORK / f"tree{number}"
        self.build = self.path / "build" / "release"
        self.log = WORK / f"log{number}"

    def run(self, command):
        environment = dict(os.environ, CCACHE_BASEDIR=str(self.path))
        with open(self.log, "ab") as output:
            return subprocess.run(command, cwd=self.path, env=environment, stdin=subprocess.DEVNULL, stdout=output,
                                  stderr=output, check=False).returncode == 0

    def make(self, *targets):
        return self.run(["cmake", "--build", "--preset", "release", "--target", *targets])

    def launch(self, *arguments):
        return self.run([str(self.path / "tests" / "launch.sh"), str(self.build), *arguments])

    def prepare(self):
        """Copies the tree as it is committed, builds its programs and makes the prefix of the tests."""
        ready = self.path / "ready"
        if not ready.exists():
            shutil.rmtree(self.path, ignore_errors=True)
            (self.path / "build").mkdir(parents=True)
            subprocess.run(f"git archive HEAD | tar -x -C {self.path}", cwd=ROOT, shell=True, check=True)
            subprocess.run(f"cp -al {ROOT}/build/wine-template* {self.path}/build/", shell=True, check=True)
        self.plant([])
        if not (self.run(["cmake", "--preset", "release"])
                and self.make("SentrelConfig", "SentrelStandin", "CalvaneConfigLoader", "installer")
                and self.launch()):
            sys.exit(f"A tree cannot be made ready, see {self.log}")
        ready.touch()

    def plant(self, faults):
        """Leaves exactly these faults in the tree."""
        texts = {}
        for path, _, number, _, _, lines in faults:
            text = texts.setdefault(path, (SOURCE / path).read_text().split("\n"))
            text[number:number + len(lines)] = lines
        for source in (path for layer in LAYERS for path in (SOURCE / layer).rglob("*.*")):
            name = source.relative_to(SOURCE).as_posix()
            wanted = "\n".join(texts[name]).encode() if name in texts else source.read_bytes()
            if (self.path / name).read_bytes() != wanted:
                (self.path / name).write_bytes(wanted)

    def passes(self, suite, seconds):
        limit = str(int(3 * seconds[suite]) + 60)
        return self.launch(limit, str(self.build / "tests" / f"{suite}_tests.exe"))

    def first_failure(self, suite):
        """The test case that failed first, from what the suite printed."""
        log = self.build / "test-output" / f"{suite}_tests.log"
        said = log.read_text(errors="replace") if log.exists() else ""
        case = re.search(r"TEST CASE: *(.*)", said)
        return f"caught by {suite}: {case.group(1).strip() if case else '(no test case: crash or time)'}"

    def verdict(self, faults, suites, seconds):
        """What the first of the suites to fail says, or None."""
        self.plant(faults)
        if not self.make(*(f"{suite}_tests" for suite in suites)):
            return "did not compile"
        return next((self.first_failure(suite) for suite in suites if not self.passes(suite, seconds)), None)


def durations():
    """Seconds of each suite that is there, from CTest's own record."""
    record = ROOT / "build" / "release" / "Testing" / "Temporary" / "CTestCostData.txt"
    if not record.exists():
        sys.exit("Nobody has run the tests here yet: run ./test.sh first.")
    rows = [line.split() for line in record.read_text().splitlines()]
    taken = {row[0][:-len("_tests")]: float(row[2]) for row in rows if len(row) == 3 and row[0].endswith("_tests")}
    tests = ROOT / "tests"
    return {name: taken[name] for name in taken if (tests / name).exists() or (tests / f"{name}_tests.cpp").exists()}


def nearest(path, seconds):
    names = next(names.split() for pattern, names in NEAREST if re.match(pattern, path))
    return [name for name in names if name in seconds]


def together(faults):
    """As many of the faults (by their number) as change lines of their own."""
    taken = set()
    chosen = {}
    for index, fault in faults.items():
        lines = {(fault[0], fault[2] + offset) for offset in range(len(fault[5]))}
        if not lines & taken:
            taken |= lines
            chosen[index] = fault
    return chosen


class Run:
    def __init__(self, trees, seconds, table):
        self.trees = trees
        self.seconds = seconds
        self.table = table
        self.free = queue.Queue()
        for tree in trees:
            self.free.put(tree)
        self.writing = threading.Lock()
        table.touch()
        self.ends = {int(row[0]): row[6] for row in self.rows()}

    def rows(self):
        with self.table.open() as file:
            return list(csv.reader(file, delimiter="\t"))

    def note(self, index, fault, end):
        """A later row of the same fault counts."""
        path, kind, number, before, after, _ = fault
        with self.writing, self.table.open("a") as output:
            csv.writer(output, delimiter="\t", lineterminator="\n").writerow(
                [index, path, number + 1, kind, before, after, end])
        self.ends[index] = end
        print(f"{index}: {path}:{number + 1}: {kind}: {end}", file=sys.stderr)

    def each(self, work, items):
        """Calls work(tree, item) for each item; a tree does one at a time."""
        def on_a_tree(item):
            tree = self.free.get()
            try:
                return work(tree, item)
            finally:
                self.free.put(tree)

        with ThreadPoolExecutor(len(self.trees)) as pool:
            return list(pool.map(on_a_tree, items))

    def try_nearest(self, faults):
        def alone(tree, index):
            suites = nearest(faults[index][0], self.seconds)
            self.note(index, faults[index], tree.verdict([faults[index]], suites, self.seconds) or PASSED)

        self.each(alone, [index for index in faults if index not in self.ends])

    def failing(self, faults):
        """The suites that fail with all these faults, longest first."""
        def build(tree, _):
            tree.plant(faults)
            return tree.make(*(f"{suite}_tests" for suite in self.seconds))

        # One item for each tree: a pool of as many threads takes each once.
        if not all(self.each(build, self.trees)):
            return sorted(self.seconds, key=self.seconds.get)
        suites = sorted(self.seconds, key=self.seconds.get, reverse=True)
        passed = self.each(lambda tree, suite: tree.passes(suite, self.seconds), suites)
        return [suite for suite, well in zip(suites, passed) if not well][::-1]

    def culprits(self, suite, group):
        """Which of the faults, with which the suite fails, make it fail, by halves; and what it says."""
        def test(tree, part):
            return tree.verdict([group[index] for index in part], [suite], self.seconds)

        open_ones = [index for index in group if self.ends[index] == PASSED]
        parts = [open_ones] if open_ones else []
        while parts:
            failing = [(part, end) for part, end in zip(parts, self.each(test, parts)) if end]
            for part, end in failing:
                if len(part) == 1:
                    yield part[0], end
            halves = [(part[:len(part) // 2], part[len(part) // 2:]) for part, _ in failing if len(part) > 1]
            parts = [half for pair in halves for half in pair]

    def try_all(self, faults):
        left = {index: fault for index, fault in faults.items() if self.ends[index] == PASSED}
        while left:
            group = together(left)
            suites = self.failing(list(group.values()))
            print(f"{len(group)} together: {', '.join(suites) or 'every suite passes'}", file=sys.stderr)
            caught = [self.note(index, group[index], end) for suite in suites
                      for index, end in self.culprits(suite, group)]
            if not caught:
                for index, fault in group.items():
                    self.note(index, fault, "survived")
            left = {index: fault for index, fault in left.items() if self.ends[index] == PASSED}

    def show(self):
        rows = sorted({int(row[0]): row[1:] for row in self.rows()}.items())
        print("| | file | line | fault | before | after | |\n|---|---|---|---|---|---|---|")
        for index, row in rows:
            print(f"| {index} | " + " | ".join(cell.replace("|", "\\|") for cell in row) + " |")
        ends = [row[5] for _, row in rows]
        caught, survived = sum(end.startswith("caught") for end in ends), ends.count("survived")
        print(f"\n{caught} caught, {survived} survived, {ends.count('did not compile')} did not compile.")


def main():
    parser = argparse.ArgumentParser(description="Plants faults and shows which suite finds them.")
    parser.add_argument("count", type=int, help="faults that are tried, those of an earlier run included")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--workers", type=int, default=os.cpu_count())
    parser.add_argument("--under", default="", help="only files whose path begins so")
    arguments = parser.parse_args()

    WORK.mkdir(parents=True, exist_ok=True)
    if not SOURCE.exists():
        SOURCE.mkdir()
        subprocess.run(f"git archive HEAD {' '.join(LAYERS)} | tar -x -C {SOURCE}", cwd=ROOT, shell=True, check=True)
    trees = [Tree(number + 1) for number in range(arguments.workers)]
    with ThreadPoolExecutor(len(trees)) as pool:
        list(pool.map(Tree.prepare, trees))
    faults = {index: fault
              for index, fault in zip(range(1, arguments.count + 1), plan(arguments.seed, arguments.under))}
    this = Run(trees, durations(), WORK / f"{arguments.seed}{arguments.under.replace('/', '-')}.tsv")
    this.try_nearest(faults)
    this.try_all(faults)
    this.show()


if __name__ == "__main__":
    main()
