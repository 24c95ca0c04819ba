#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes docs/messages.md: every text of the message catalogue, and the test that raises it through the program.

Usage: message_table.py [--check] [--program PATH]    write the page, or compare with the one that is there
       message_table.py --label CATALOGUE             write a catalogue in which each text begins with its number

The program is velkoran_labelled: the program itself, built with the catalogue of --label. So a run says by its numbers
what it raises, also where several entries have the same text. Without the numbers its files must be the expected files
of the folder, byte for byte. The exit status is 1 if an entry that the code raises has no test, or with --check if the
page isn't what the runs give.
"""
import argparse
import concurrent.futures
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "python"))
from velkoran_runs.program import RunKind, make_run
from velkoran_runs.results import REFUSAL
from velkoran_runs.texts import read_text, read_text_if_there

TESTS = pathlib.Path(__file__).resolve().parent.parent
ROOT = TESTS.parent
CATALOGUE = ROOT / "core" / "resources" / "message_catalogue.inc"
PAGE = ROOT / "docs" / "messages.md"

PARAMETER, SPECTRUM = RunKind.PARAMETER, RunKind.SPECTRUM
RUN_LIMIT = 100  # seconds, of a run in a build with sanitizers
EMPTY_LINE = 8552  # has no text

# Number divided by 4096 to the kind of message; what lies beyond is raised by nothing.
KINDS = {0: "menu", 1: "progress", 2: "listing", 4: "warning", 6: "fatal"}

NO_KEY = "tests a flag that no option of the input sets"
# Entries that the code raises, but in no whole run: why. Single steps of the program raise them in a unit test.
NOT_IN_A_RUN = {
    50: "a text of the window, which leaves nothing in a file",
    8212: "a spectrum together with shielding or couplings is refused as 24707",
    16385: NO_KEY,
    24640: "the option takes the two methods only, and keeps what it has at any other value",
    24642: NO_KEY,
    24643: NO_KEY,
    24644: NO_KEY,
    24650: "the readers refuse an atom that isn't there as 24613",
    24673: "any multiplicity but 1 is refused as 24641, and with 1 a negative count as 24672",
    24675: "any multiplicity but 1 is refused as 24641",
}
# Tests of the code that can't come true whatever its data are, so that no test can raise these.
NEVER_TRUE = {
    24677: "half of a count of electrons, which isn't negative behind 24672, isn't negative either",
    24678: "the same comparison as 24674, which stands before it",
}

OPEN_SHELL = "belongs to open shells; the program calculates closed shells only"
FIELD_SIZE = "the size of the field has no effect on a result, and none is refused"
TYPE_FILE = "belongs to another format of the type file"
PLOTS = "belongs to plots, which the program doesn't make"
CONDITIONS = "a general text; each failure that the code tests has one of its own"
MATHEMATICS = "nothing raises it; it is kept as part of the table that front ends have"
# Entries that no code raises: why.
NOT_RAISED = {
    4129: "the levels are listed in rows under 8227",
    4130: OPEN_SHELL,
    4147: "the couplings begin without a line of their own",
    8199: OPEN_SHELL,
    8200: OPEN_SHELL,
    8211: FIELD_SIZE,
    8289: OPEN_SHELL,
    8290: OPEN_SHELL,
    8291: OPEN_SHELL,
    8292: OPEN_SHELL,
    8295: "the overlap matrix isn't listed",
    8296: "the overlap matrix isn't listed",
    8309: "8208 says whether there are d orbitals",
    16402: "the Slater-Condon constants of capping atoms aren't tested",
    16416: "there is no request for single orbitals",
    16417: OPEN_SHELL,
    16433: FIELD_SIZE,
    16434: FIELD_SIZE,
    24592: TYPE_FILE,
    24593: TYPE_FILE,
    24594: TYPE_FILE,
    24649: "24647 comes first: no element beyond argon gets so far",
    24704: PLOTS,
    24705: PLOTS,
    24706: PLOTS,
    24832: CONDITIONS,
    24833: CONDITIONS,
    24848: CONDITIONS,
    **{number: MATHEMATICS for number in [*range(65280, 65286), 65296, 65297]},
}

CLOSED_FORM = "[closed formulas](../tests/cases/closed_form_listings.py)"

LABEL = re.compile(r"@(\d+)@")
CONVERSION = re.compile(r"%[-.0-9l]*[a-z]")
LITERAL = r'"((?:[^"\\]|\\.)*)"'
LITERAL_ROW = re.compile(r'(?:"(?:[^"\\]|\\.)*"\s*)+')  # literals that the compiler joins


def catalogue():
    """Number to name and text, as they stand in the source; the text is empty where there is none."""
    lines = re.findall(r'^CATALOGUE_(?:TEXT|SILENCE)\((\w+), (\d+)(?:, "(.*)")?\)$', read_text(CATALOGUE), re.M)
    entries = {int(number): (name, text) for name, number, text in lines}
    if len(lines) != len(entries) or len(lines) != len(re.findall("^CATALOGUE_", read_text(CATALOGUE), re.M)):
        sys.exit("message_table: the catalogue can't be read")
    return entries


def write_labelled_catalogue(path):
    lines = [
        'CATALOGUE_TEXT(%s, %d, "@%d@%s")\n' % (name, number, number, text)
        for number, (name, text) in catalogue().items()
    ]
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text("// Made by message_table.py.\n" + "".join(lines), encoding="ascii")


def without_comments(source):
    return re.sub(
        r"//[^\n]*|/\*.*?\*/|" + LITERAL,
        lambda match: match.group(0) if match.group(1) is not None else " ",
        source,
        flags=re.S,
    )


def numbers_in_code(entries):
    """The numbers of the messages that the code names."""
    code = "".join(read_text(path) for path in (ROOT / "core").rglob("*.*"))
    names = set(re.findall(r"\bMessage::(\w+)", code))
    return {number for number, (name, _) in entries.items() if name in names}


def run_labelled(program, folder, kind):
    """Runs a folder; its output file and its log, None where there is none, with <INPUT> and <PARAMETERS> for paths."""
    name = kind.input_name
    with tempfile.TemporaryDirectory() as temporary:
        work = pathlib.Path(temporary)
        subprocess.run(["sh", TESTS / "support" / "parameter_folder.sh", folder, work / "p"], check=True)
        if (folder / name).is_dir():
            (work / name).mkdir()
        elif (folder / name).exists():
            shutil.copyfile(folder / name, work / name)
        made = make_run(program, work / "p", work, kind, work / "run.log", seconds=RUN_LIMIT)
    texts = []
    for text in [made.output, made.log]:
        for part, replacement in {f"{work}\\{name}": "<INPUT>", str(work / "p"): "<PARAMETERS>"}.items():
            text = text.replace(part, replacement) if text is not None else None
        texts.append(text)
    return texts


def numbers_of_folder(program, folder, kind, exact):
    """The numbers that a run raises; with exact its files, less the numbers, must be the expected ones."""
    texts = run_labelled(program, folder, kind)
    for text, name in zip(texts, ["expected.out", "expected.log"]):
        plain = LABEL.sub("", text) if text is not None else None
        if exact and plain != read_text_if_there(folder / name):
            sys.exit("message_table: %s isn't what the program gives" % (folder / name).relative_to(ROOT))
    return {int(number) for text in texts if text is not None for number in LABEL.findall(text)}


def compares_numbers(case):
    """False for a case of tests/reference part of whose numbers are left out of the comparison."""
    marks = [mark for mark in ["mask", "mask_tensor", "fuzzy"] if (case / mark).exists()]
    return not marks and "@@" not in read_text(case / "expected.log")


def folders_to_run():
    """Folder, kind of run, and whether its whole files are compared byte for byte."""
    jobs = []
    for group, kind in [("cases/spectrum", SPECTRUM), ("cases/regression", SPECTRUM), ("cases/parameter", PARAMETER)]:
        jobs += [(path, kind, True) for path in (TESTS / group).iterdir() if (path / "expected.out").exists()]
    for corpus, kind in [("spectrum", SPECTRUM), ("wavefunction", PARAMETER), ("parameter", PARAMETER)]:
        for path in (TESTS / "reference" / corpus / "cases").iterdir():
            if (path / "expected.log").exists() and compares_numbers(path):
                jobs.append((path, kind, False))
    return sorted(jobs)


def folders_by_number(program):
    """Number to the folder that stands for it: the one that raises fewest, the first of these by its name. Two tables:
    folders compared byte for byte, and runs with values evaluated independently."""
    jobs = folders_to_run()
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        results = list(pool.map(lambda job: numbers_of_folder(program, *job), jobs))
    tables = {True: {}, False: {}}
    for (folder, _, exact), numbers in zip(jobs, results):
        for number in numbers:
            rank = (len(numbers), str(folder))
            tables[exact].setdefault(number, []).append((rank, folder))
    return [{number: min(folders)[1] for number, folders in tables[exact].items()} for exact in (True, False)]


def tests_in(paths):
    """Name of each test of the files, and its literals."""
    tests = []
    for path in sorted(paths):
        pieces = re.split(r"^TEST(?:_F|_P)?\((\w+), (\w+)\) ", without_comments(read_text(path)), flags=re.M)
        for suite, name, body in zip(pieces[1::3], pieces[2::3], pieces[3::3]):
            body = body.split("\n}\n")[0]
            literals = ["".join(re.findall(LITERAL, row)) for row in LITERAL_ROW.findall(body)]
            tests.append(("%s.%s" % (suite, name), "\0".join(literals)))
    return tests


def holds(body, text):
    """True if the parts of a text between its conversions stand in a test's literals, in their order."""
    position = 0
    for part in CONVERSION.split(text):
        position = body.find(part, position)
        if position < 0:
            return False
        position += len(part)
    return True


def test_that_holds(text, tests):
    """The name of the shortest test with a text, or None."""
    return min(((len(body), name) for name, body in tests if holds(body, text)), default=(0, None))[1]


def quoted(text):
    return "`%s`" % text.replace("|", "\\|")


def table(header, rows):
    lines = ["| %s |" % " | ".join(row) for row in [header, *rows]]
    lines.insert(1, "|" + "---|" * len(header))
    return "\n".join(lines) + "\n"


def link(folder):
    path = folder.relative_to(ROOT).as_posix()
    name = path.removeprefix("tests/").removeprefix("reference/").replace("/cases/", "/")
    return "[%s](../%s)" % (name, path)


def source_of_values(text, folder, evaluated):
    if not re.search(r"%[-.0-9]*[feg]", text):
        return ""
    if evaluated is not None:
        return link(evaluated)
    return CLOSED_FORM if folder is not None and folder.name.startswith("listing_of_") else ""


def make_page(program):
    """The page, and what is wrong."""
    entries = catalogue()
    texts = {number: text for number, (_, text) in entries.items() if text}
    code = numbers_in_code(entries)
    exact, evaluated = folders_by_number(program)
    program_tests = tests_in((TESTS / "program").glob("*_test.cpp"))
    step_tests = tests_in([*(TESTS / "unit").rglob("*_test.cpp"), *(TESTS / "instance_setup").glob("*_test.cpp")])
    wrong = [
        "a run raises %d, which isn't found in the code" % number
        for number in {*exact, *evaluated}
        if number not in code
    ]
    wrong += [] if EMPTY_LINE in exact else ["no run has the empty line of %d" % EMPTY_LINE]
    in_runs, in_steps, never_true, not_raised = [], [], [], []
    for number, text in texts.items():
        kind = KINDS.get(number // 4096)
        name = quoted(entries[number][0])
        entry = [str(number), name, kind, quoted(text)]
        if number in exact or number in evaluated:
            if number in {**NOT_IN_A_RUN, **NEVER_TRUE, **NOT_RAISED}:
                wrong.append("%d is raised by a run, other than the lists of message_table.py say" % number)
        if number not in code:
            if number not in NOT_RAISED:
                wrong.append("%d is raised by no code; message_table.py gives no reason" % number)
            not_raised.append([str(number), name, quoted(text), NOT_RAISED.get(number, "")])
        elif number in NOT_RAISED:
            wrong.append("%d is raised by the code, other than message_table.py says" % number)
        elif number in NEVER_TRUE:
            never_true.append([*entry, NEVER_TRUE[number]])
        elif number in NOT_IN_A_RUN:
            test = test_that_holds(text, step_tests)
            if test is None:
                wrong.append("%d stands in no unit test" % number)
            in_steps.append([*entry, quoted(str(test)), NOT_IN_A_RUN[number]])
        else:
            test = test_that_holds(REFUSAL + text, program_tests) if kind == "fatal" else None
            if number in exact:
                shown = link(exact[number])
            elif test is not None:
                shown = quoted(test)
            else:
                shown = ""
                wrong.append("%d is raised by no test: %s" % (number, text))
            in_runs.append([*entry, shown, source_of_values(text, exact.get(number), evaluated.get(number))])
    counts = (len(texts), len(in_runs), len(in_steps), len(never_true), len(not_raised))
    return (
        PAGE_TEXT
        % (
            *counts,
            table([*COLUMNS, "Test", "Values evaluated independently"], in_runs),
            table([*COLUMNS, "Unit test", "Why no run raises it"], in_steps),
            table([*COLUMNS, "Why nothing raises it"], never_true),
            table(["Number", "Name", "Text", "Why, as far as it is known"], not_raised),
        ),
        wrong,
    )


COLUMNS = ["Number", "Name", "Kind", "Text"]

PAGE_TEXT = """# Messages

The texts of [the catalogue](../core/resources/message_catalogue.inc), and for each a test that raises it. The page
is made by `tests/documents/message_table.py`, from the names in the code, `Message::Name`, and from runs of the program
built with a catalogue in which each text begins with its number. The test `message_table` fails if the page isn't what
the runs give, or if the code raises a text that no test raises.

Of %d texts %d are raised by whole runs, %d by single steps of the program only, %d stand behind tests that can't come
true, and %d are raised by nothing.

Progress and listing lines and warnings go to the log; a fatal text stands behind `ERRMSG: ` in the output file. Two
messages in use have no text: `EmptyLine`, 8552, in the listings, and `SilentStop`, 24834, the end of a run on request,
which `tests/program/stop_test.cpp` tests.

## Raised by whole runs

Where the test is a folder of `tests`, the whole output file and the whole log of its run are compared with the expected
ones, byte for byte; where it is a name, it is a test of `tests/program`. Several runs may raise a text: the folder
is the one that raises fewest, the first of these by its name. The last column is for lines with calculated values: a
run of `tests/reference`, whose values were evaluated by another program, or the test that evaluates those of the
folder.

%s
## Raised by single steps only

No input leads to these. The unit test sets the state by hand.

%s
## Behind tests that can't come true

%s
## Raised by nothing

They are part of the table that front ends have, and stay in it.

%s"""


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--check", action="store_true")
    parser.add_argument("--program", default=str(ROOT / "build" / "release" / "tests" / "velkoran_labelled"))
    parser.add_argument("--label", type=pathlib.Path)
    arguments = parser.parse_args()
    if arguments.label is not None:
        write_labelled_catalogue(arguments.label)
        return 0
    page, wrong = make_page(os.path.abspath(arguments.program))
    if not arguments.check:
        PAGE.write_text(page, encoding="ascii")
    elif not PAGE.exists() or read_text(PAGE) != page:
        wrong.append(
            "docs/messages.md isn't what the runs give: python3 tests/documents/message_table.py writes it anew"
        )
    for line in wrong:
        print("message_table: " + line, file=sys.stderr)
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
