# SPDX-License-Identifier: MIT
"""The table of a fault campaign, and the promises that were broken."""
import collections
import statistics

SHOWN = 40  # broken promises that are told in full


class Row:
    """One kind of fault: how often it was done, what came of it, how long it took."""

    def __init__(self, name):
        self.name = name
        self.outcomes = collections.Counter()
        self.times = []
        self.slowest = (0.0, "")

    def count(self, outcome, seconds=None, where=""):
        self.outcomes[outcome] += 1
        if seconds is not None:
            self.times.append(seconds)
            self.slowest = max(self.slowest, (seconds, where))

    def median(self):
        return statistics.median(self.times) if self.times else 0.0

    def text(self):
        outcomes = ", ".join(f"{count} {outcome}" for outcome, count in sorted(self.outcomes.items()))
        times = f"{self.median():.3f} | {max(self.times):.3f}" if self.times else "- | -"
        return f"| {self.name} | {sum(self.outcomes.values())} | {outcomes} | {times} |"


class Table:
    def __init__(self):
        self.rows = []
        self.skipped = []
        self.broken = []

    def add_row(self, name):
        self.rows.append(Row(name))
        return self.rows[-1]

    def skip(self, name, reason):
        self.skipped.append(f"skipped: {name} ({reason})")

    def expect(self, held, what):
        """Notes a broken promise."""
        if not held:
            self.broken.append(what)
            if len(self.broken) <= SHOWN:
                print("BROKEN:", what, flush=True)

    def print_all(self):
        print("| Fault | Times | Outcomes | Median (s) | Largest (s) |\n|---|---:|---|---:|---:|")
        for row in self.rows:
            print(row.text())
        for row in self.rows:
            if row.slowest[1]:
                print(f'slowest of "{row.name}": {row.slowest[0]:.3f} s, {row.slowest[1]}')
        for line in self.skipped:
            print(line)
        print(f"broken promises: {len(self.broken)}")
