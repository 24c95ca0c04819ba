#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Fills in what the documents show of the program, by running the commands that they name in a copy of the project.

With --check it compares instead, and looks after links, file names, CITATION.cff and CHANGELOG.md. --program names the
program.
"""
import argparse
import difflib
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

import yaml

ROOT = pathlib.Path(__file__).resolve().parent.parent
COPIED = ("docs", "examples", "parameters")  # what a command of a document finds beside the program
SECONDS = 300  # for one command
COMMANDS = ("sh ", "cmake ", "ctest ", "python3 ", "velkoran ", "man ")

# A comment before a block says where it comes from: "run", the commands of the block itself; "shows: FILTER", the
# output of the last such block through a filter; "made by: COMMAND"; "draws FILE: COMMAND", a picture, printed by it.
MARK = re.compile(r"<!-- (run|shows|made by|draws (\S+))(?:: (.*?))? -->$")
FENCE = re.compile(r"```(\w*)$")
LINK = re.compile(r"\[[^\]]*\]\(([^)\s]+)\)")
QUOTED = re.compile(r"`([^`\s]+)`")


class Problems:
    """What is wrong, counted and told."""

    def __init__(self):
        self.count = 0

    def report(self, path, text):
        self.count += 1
        print(f"{path.relative_to(ROOT)}: {text}", file=sys.stderr)


class Workshop:
    """A copy of what the commands of one document need, in which they run one after the other."""

    def __init__(self, folder, program):
        self.folder = pathlib.Path(folder)
        self.last = ""
        for name in COPIED:
            shutil.copytree(ROOT / name, self.folder / name)
        (self.folder / "build" / "release").mkdir(parents=True)
        (self.folder / "build" / "release" / "velkoran").symlink_to(program)

    def run(self, commands, text=""):
        result = subprocess.run(
            ["sh", "-eu", "-c", commands],
            cwd=self.folder,
            input=text,
            text=True,
            timeout=SECONDS,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
        )
        if result.returncode != 0:
            raise RuntimeError(f"{commands!r} ended with {result.returncode}:\n{result.stdout}")
        return result.stdout


def block_after(lines, start):
    """First line and end of what a mark belongs to: the inside of a fence, a table, or a line with a picture; None if
    there is nothing of that."""
    if start < len(lines) and FENCE.match(lines[start]):
        return (start + 1, lines.index("```", start + 1)) if "```" in lines[start + 1 :] else None
    end = start
    while end < len(lines) and lines[end].startswith(("|", "![")):
        end += 1
    return (start, end) if end > start else None


def check_picture(path, name, made, check, problems):
    """Another version of the drawing program draws other bytes: only the same version is compared."""
    picture = ROOT / name
    if not check:
        picture.write_text(made)
        return
    versions = [re.search(r"Produced by (.*?) *</desc>", text) for text in (made, picture.read_text())]
    if None in versions:
        problems.report(path, f"{name} has no version of the program that drew it")
    elif versions[0].group(1) != versions[1].group(1):
        print(f"{name}: not compared, drawn by {versions[1].group(1)}; here is {versions[0].group(1)}")
    elif made != picture.read_text():
        problems.report(path, f"{name} isn't what its command draws now")


def fill_document(path, program, check, problems):
    """Runs the commands of one document; fills its blocks or compares them."""
    lines = path.read_text().splitlines()
    filled = []
    with tempfile.TemporaryDirectory() as folder:
        workshop = Workshop(folder, program)
        position = 0
        while position < len(lines):
            filled.append(lines[position])
            mark = MARK.match(lines[position])
            position += 1
            if not mark:
                continue
            place = block_after(lines, position)
            kind, picture, command = mark.groups()
            if place is None or (picture or kind == "made by") and not command:
                problems.report(path, f"line {position}: a mark without its block or command")
                continue
            start, end = place
            block = lines[start:end]
            if kind == "run":
                workshop.last = workshop.run("\n".join(block))
            elif picture:
                check_picture(path, picture, workshop.run(command), check, problems)
            else:
                made = workshop.run(command or "cat", workshop.last) if kind == "shows" else workshop.run(command)
                block = made.rstrip("\n").splitlines()
            filled += lines[position:start] + block
            position = end
    if filled == lines:
        return
    if check:
        problems.report(
            path,
            "what it shows isn't what its commands give now:\n"
            + "\n".join(difflib.unified_diff(lines, filled, "shown", "now", lineterm="", n=1)),
        )
    else:
        path.write_text("\n".join(filled) + "\n")


def check_blocks(path, problems):
    """Every block has a mark or holds commands only."""
    lines = [""] + path.read_text().splitlines()
    inside = False
    for number in range(1, len(lines)):
        fence = FENCE.match(lines[number])
        if fence:
            inside = not inside
            if inside and not MARK.match(lines[number - 1]) and fence.group(1) != "sh":
                problems.report(path, f"line {number}: a block without the command that makes it")
        elif not inside and lines[number].startswith("    ") and lines[number - 1] == "":
            block = lines[number:]
            block = block[: block.index("")] if "" in block else block
            if not all(line.strip().startswith(COMMANDS) for line in block):
                problems.report(path, f"line {number}: a block without the command that makes it")


def anchors(path):
    """The names by which the headings of a document can be linked."""
    headings = re.findall(r"^#+ (.*)$", path.read_text(), re.MULTILINE)
    return {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-") for heading in headings}


def check_links(path, problems):
    """Links lead to files and headings that are there, and so do the paths in quotes."""
    text = path.read_text()
    for target in LINK.findall(text):
        if re.match(r"[a-z]+:", target):
            continue
        name, _, anchor = target.partition("#")
        other = (path.parent / name).resolve() if name else path
        if not other.exists():
            problems.report(path, f"a link to {target}, which isn't there")
        elif anchor and (other.suffix != ".md" or anchor not in anchors(other)):
            problems.report(path, f"a link to {target}, which has no such heading")
    folders = tuple(f"{folder.name}/" for folder in top_folders())
    for quoted in QUOTED.findall(text):
        if quoted.startswith(folders) and not re.search(r"[*{}<>\[\]A-Z]", quoted) and not (ROOT / quoted).exists():
            problems.report(path, f"names {quoted}, which isn't there")
    for script in re.findall(r"\b(?:sh|python3) ((?:\w+/)+\w+\.(?:sh|py))", text):
        if not (ROOT / script).exists():
            problems.report(path, f"names {script}, which isn't there")


def top_folders():
    return [
        folder
        for folder in sorted(ROOT.iterdir())
        if folder.is_dir() and folder.name != "build" and not folder.name.startswith(".")
    ]


def check_completeness(problems):
    """The page of commands names every script, the index every page, the page of the structure every folder."""
    contributing = ROOT / "docs" / "contributing.md"
    for script in sorted((ROOT / "scripts").glob("*.sh")):
        if f"scripts/{script.name}" not in contributing.read_text():
            problems.report(contributing, f"doesn't name scripts/{script.name}")
    index = ROOT / "docs" / "README.md"
    for page in sorted((ROOT / "docs").glob("*.md")):
        if page != index and f"({page.name})" not in index.read_text():
            problems.report(index, f"doesn't name {page.name}")
    architecture = ROOT / "docs" / "architecture.md"
    folders = [folder.name for folder in top_folders() if folder.name != "core"]
    folders += [f"core/{folder.name}" for folder in (ROOT / "core").iterdir()]
    for folder in folders:
        if f"`{folder}/`" not in architecture.read_text():
            problems.report(architecture, f"doesn't name the folder {folder}/")


def check_citation(problems):
    """CITATION.cff is one of version 1.2.0 with what that requires, and both it and the changes name our version."""
    path = ROOT / "CITATION.cff"
    version = re.search(r"project\(velkoran VERSION ([\d.]+)", (ROOT / "CMakeLists.txt").read_text()).group(1)
    citation = yaml.safe_load(path.read_text())
    for key in ("cff-version", "message", "title", "authors", "version", "license"):
        if not citation.get(key):
            problems.report(path, f"lacks {key}")
    expected = {"cff-version": "1.2.0", "version": version, "license": "MIT", "type": "software"}
    for key, value in expected.items():
        if str(citation.get(key)) != value:
            problems.report(path, f"{key} is {citation.get(key)!r} in place of {value!r}")
    for author in citation.get("authors") or []:
        if not author.get("name"):
            problems.report(path, "an author without a name")
    changes = ROOT / "CHANGELOG.md"
    if f"\n## [{version}]" not in changes.read_text():
        problems.report(changes, f"has no section of version {version}")


def check_performance_page(problems):
    maker = ROOT / "benchmarks" / "make_performance.py"
    if subprocess.run([sys.executable, maker, "--check"]).returncode != 0:
        problems.report(maker, "docs/performance.md isn't what it makes")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--check", action="store_true")
    parser.add_argument("--program", default=ROOT / "build" / "release" / "velkoran")
    arguments = parser.parse_args()
    program = pathlib.Path(arguments.program).resolve()
    problems = Problems()
    documents = [ROOT / "README.md", ROOT / "CHANGELOG.md", *sorted((ROOT / "docs").glob("*.md"))]
    for path in documents:
        check_blocks(path, problems)
        try:
            fill_document(path, program, arguments.check, problems)
        except (RuntimeError, subprocess.TimeoutExpired) as error:
            problems.report(path, str(error))
    others = [path for folder in top_folders() for path in sorted(folder.rglob("*.md")) if path not in documents]
    for path in documents + others:
        check_links(path, problems)
    check_completeness(problems)
    check_citation(problems)
    check_performance_page(problems)
    print(f"documents: {problems.count} to mend" if problems.count else "documents: nothing has drifted")
    return 1 if problems.count else 0


if __name__ == "__main__":
    sys.exit(main())
