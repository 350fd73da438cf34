#!/usr/bin/env python3
"""Plants faults in the program, one at a time, and shows which suite of the tests finds each.

    tools/mutate.py COUNT [--seed N] [--seconds N] [--under PATH]

Works in a copy of the commit in build/mutate, built as the release is; the order of the suites comes from how long they
took when test.sh last ran here. Every suite must pass without a fault. A run that is started again with the same seed
goes on after the faults that it has tried already; remove build/mutate to begin with a newer tree. The table is printed
and what it is made of kept in build/mutate/SEED.tsv.
"""

import argparse
import csv
import os
import pathlib
import random
import re
import shutil
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
WORK = ROOT / "build" / "mutate"
TREE = WORK / "tree"
SOURCE = WORK / "source"  # the layers as they are without a fault
BUILD = TREE / "build" / "release"

LAYERS = ("app", "options", "lists", "tray", "store", "platform")

# The suites nearest to a file: the first pattern that matches its path counts.
NEAREST = (
    (r"lists/(closed_log|log_file|newest_lines|site_of)", "closed_log"),
    (r"lists/", "lists settings_transfer accessibility"),
    (r"options/(settings|list_layouts)", "settings_transfer store"),
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
LONG = 60  # seconds: slower suites come last

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


def run(command, seconds, log):
    """The exit code, None when the time was over. What the command started ends with it."""
    with open(log, "ab") as output, subprocess.Popen(command, cwd=TREE, stdin=subprocess.DEVNULL, stdout=output,
                                                     stderr=output, start_new_session=True) as process:
        try:
            return process.wait(max(seconds, 1))
        except (subprocess.TimeoutExpired, KeyboardInterrupt) as reason:
            os.killpg(process.pid, 15)
            process.wait()
            if isinstance(reason, KeyboardInterrupt):
                raise
            return None


def prepare(log):
    """Copies the tree as it is committed, builds its programs and makes the prefix of the tests."""
    if not (WORK / "ready").exists():
        shutil.rmtree(TREE, ignore_errors=True)
        shutil.rmtree(SOURCE, ignore_errors=True)
        (TREE / "build").mkdir(parents=True)
        subprocess.run(f"git archive HEAD | tar -x -C {TREE}", cwd=ROOT, shell=True, check=True)
        subprocess.run(f"cp -al {ROOT}/build/wine-template* {TREE}/build/", shell=True, check=True)
        for layer in LAYERS:
            shutil.copytree(TREE / layer, SOURCE / layer)
    for layer in LAYERS:  # a run that was ended by force leaves its fault
        for path in (SOURCE / layer).rglob("*.*"):
            if path.read_bytes() != (TREE / path.relative_to(SOURCE)).read_bytes():
                shutil.copy(path, TREE / path.relative_to(SOURCE))
    build = "cmake --build --preset release --target SentrelConfig SentrelStandin CalvaneConfigLoader installer"
    for command in (["cmake", "--preset", "release"], build.split(),
                    [str(TREE / "tests" / "launch.sh"), str(BUILD)]):
        if run(command, 3600, log) != 0:
            sys.exit(f"{' '.join(command)} failed, see {log}")
    (WORK / "ready").touch()


def durations():
    """Seconds of each suite that is there, from CTest's own record."""
    record = ROOT / "build" / "release" / "Testing" / "Temporary" / "CTestCostData.txt"
    if not record.exists():
        sys.exit("Nobody has run the tests here yet: run ./test.sh first.")
    rows = [line.split() for line in record.read_text().splitlines()]
    taken = {row[0][:-len("_tests")]: float(row[2]) for row in rows if len(row) == 3 and row[0].endswith("_tests")}
    tests = TREE / "tests"
    return {name: taken[name] for name in taken if (tests / name).exists() or (tests / f"{name}_tests.cpp").exists()}


def suites_for(path, seconds):
    """Groups of suites that are built together: the nearest, the short ones, the long ones."""
    near = next(names.split() for pattern, names in NEAREST if re.match(pattern, path))
    near = [name for name in near if name in seconds]
    rest = sorted((name for name in seconds if name not in near), key=seconds.get)
    return [near, [name for name in rest if seconds[name] <= LONG], [name for name in rest if seconds[name] > LONG]]


def first_failure(suite):
    """The test case that failed first, from what the suite printed."""
    log = BUILD / "test-output" / f"{suite}_tests.log"
    said = log.read_text(errors="replace") if log.exists() else ""
    case = re.search(r"TEST CASE: *(.*)", said)
    return case.group(1).strip() if case else "(no test case: crash or time)"


def verdict(path, seconds, limit, log):
    """Builds and runs the suites until one fails."""
    end = time.monotonic() + limit
    for stage, suites in enumerate(suites_for(path, seconds)):
        command = ["cmake", "--build", "--preset", "release", "--target", *(f"{name}_tests" for name in suites)]
        code = run(command, end - time.monotonic(), log)
        if code not in (0, None):
            return "did not compile" if stage == 0 else "did not link"
        for suite in suites:
            left = int(end - time.monotonic())
            if left <= 0 or code is None:
                return "not decided in time"
            allowed = min(left, int(3 * seconds.get(suite, 100)) + 60)
            program = BUILD / "tests" / f"{suite}_tests.exe"
            if run([str(TREE / "tests" / "launch.sh"), str(BUILD), str(allowed), str(program)], left + 30, log) != 0:
                if allowed == left and time.monotonic() >= end:
                    return "not decided in time"
                return f"caught by {suite}: {first_failure(suite)}"
    return "survived"


def show(table):
    rows = list(csv.reader(table.open(), delimiter="\t"))
    print("| file | line | fault | before | after | |\n|---|---|---|---|---|---|")
    for row in rows:
        print("| " + " | ".join(cell.replace("|", "\\|") for cell in row) + " |")
    ends = [row[5] for row in rows]
    caught, survived = sum(end.startswith("caught") for end in ends), ends.count("survived")
    print(f"\n{caught} caught, {survived} survived, {len(rows) - caught - survived} not counted "
          f"(did not compile, or not decided in time).")


def main():
    parser = argparse.ArgumentParser(description="Plants faults and shows which suite finds them.")
    parser.add_argument("count", type=int, help="faults that are tried, those of an earlier run included")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--seconds", type=int, default=1800, help="limit for each fault")
    parser.add_argument("--under", default="", help="only files whose path begins so")
    arguments = parser.parse_args()

    WORK.mkdir(parents=True, exist_ok=True)
    log = WORK / "log"
    os.environ["CCACHE_BASEDIR"] = str(TREE)
    prepare(log)
    seconds = durations()
    table = WORK / f"{arguments.seed}{arguments.under.replace('/', '-')}.tsv"
    table.touch()
    done = len(table.read_text().splitlines())
    faults = plan(arguments.seed, arguments.under)
    for index, (path, kind, number, before, after, lines) in zip(range(arguments.count), faults):
        if index < done:
            continue
        file = TREE / path
        whole = (SOURCE / path).read_text()
        text = whole.split("\n")
        text[number:number + len(lines)] = lines
        try:
            file.write_text("\n".join(text))
            end = verdict(path, seconds, arguments.seconds, log)
        finally:
            file.write_text(whole)
        with table.open("a") as output:
            writer = csv.writer(output, delimiter="\t", lineterminator="\n")
            writer.writerow([path, number + 1, kind, before, after, end])
        print(f"{index + 1}: {path}:{number + 1}: {kind}: {end}", file=sys.stderr)
    show(table)


if __name__ == "__main__":
    main()
