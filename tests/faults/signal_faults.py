# SPDX-License-Identifier: MIT
"""Kills and stops at random moments."""
import os
import random
import signal
import time

from fault_arena import kind_of_output, neighbours
from fault_jobs import (
    ALL_TERMS,
    COUPLING,
    LONG_CAMPAIGN,
    SHIELDING,
    TIGHT,
    chain_run,
    exact_spins,
    field,
    example_jobs,
    molecule_run,
    weak_spins,
)

WRITING_SECONDS = 0.03  # after a kill's file has appeared
SLOWEST_MEDIAN = 0.1  # from the signal of a stop to the end of the process, s
SLOWEST_STOP = 0.5
SLOWEST_BUSY_STOP = 2.0  # where times aren't judged strictly


def wait_for_neighbour(child, folder, job):
    """Until the run begins to write its result, and a little longer."""
    while not neighbours(folder, job) and not child.has_ended():
        time.sleep(0.0001)
    time.sleep(random.uniform(0, WRITING_SECONDS))


def wait_for_moment(whole, child, folder, job):
    """Half of the kills come at any moment, a quarter in the last tenth, a quarter while the result is written."""
    choice = random.randrange(4)
    if choice == 3:
        wait_for_neighbour(child, folder, job)
        return
    part = random.uniform(0.9, 1.05) if choice == 2 else random.random()
    child.wait_for_work(part * whole)


def kill(arena, table, row, job, older, log):
    whole = arena.time_of(job, log)
    folder = arena.new_folder(job, older)
    (arena.top / "w.log").unlink(missing_ok=True)
    child = arena.start(job, log="w.log" if log else None)
    wait_for_moment(whole, child, folder, job)
    child.process.kill()
    ended = child.wait() == 0
    outcome = kind_of_output(folder, job, older)
    allowed = ["whole"] if ended else ["whole", "ERRMSG", "older" if older else "absent"]
    table.expect(outcome in allowed, f"{job.name} killed, log {log}: the output is {outcome}")
    left = len(neighbours(folder, job))
    row.count("had ended: whole" if ended else f"{outcome}, a file left beside it" if left else outcome)


def run_kills(arena, table, count):
    """Half of the kills go to the examples, half to longer runs."""
    examples = example_jobs()
    longer = [
        exact_spins(11),
        exact_spins(12),
        weak_spins(16),
        weak_spins(18),
        weak_spins(19),
        molecule_run("naphthalene", "all terms", ALL_TERMS | TIGHT),
        molecule_run("cholesterol", "all terms", ALL_TERMS | TIGHT),
    ]
    longer = longer if count >= LONG_CAMPAIGN else longer[0:3:2]
    rows = {
        older: table.add_row("SIGKILL, " + ("an older result there" if older else "no older result"))
        for older in (False, True)
    }
    for i in range(count):
        job = examples[i // 2 % len(examples)] if i % 2 else longer[i // 2 % len(longer)]
        for older, row in rows.items():
            kill(arena, table, row, job, older, log=random.random() < 0.5)


def stop(arena, table, row, job, older, log, limit):
    folder = arena.new_folder(job, older)
    (arena.top / "w.log").unlink(missing_ok=True)
    part = random.random()
    moment = part * arena.time_of(job, log)
    child = arena.start(job, log="w.log" if log else None)
    stoppable = child.wait_until_stoppable()
    child.wait_for_work(moment)
    before = child.has_ended()
    sent = time.monotonic()
    if not before:
        os.kill(child.process.pid, signal.SIGTERM)
    code = child.wait()
    latency = time.monotonic() - sent
    outcome = kind_of_output(folder, job, older)
    where = f"{job.name}, log {log}, at {part:.2f} of the run"
    table.expect(code == 0, f"stop: {where}: exit code {code}")
    table.expect(outcome in ["whole", "older" if older else "absent"], f"stop: {where}: the output is {outcome}")
    table.expect(not neighbours(folder, job), f"stop: {where}: a file is left beside the output")
    if before or not stoppable:
        table.expect(outcome == "whole", f"stop: {where}: the run ended of itself, the output is {outcome}")
        row.count("had ended: whole")
        return
    row.count("in its last step: whole" if outcome == "whole" else "stopped", latency, where)
    table.expect(latency <= limit, f"stop: {where}: it took {latency:.3f} s, the output is {outcome}")


def stop_kinds():
    """Each kind of run with its jobs, from a fraction of a second to several, and their shares."""
    return {
        "exact spectrum": [(exact_spins(11), 25), (exact_spins(12), 72), (exact_spins(13), 3)],
        "weak spectrum": [(weak_spins(16), 26), (weak_spins(18), 60), (weak_spins(20), 12), (weak_spins(22), 2)],
        "wavefunction": [
            (chain_run(60, "wavefunction", COUPLING | field(0, 10), 1), 60),
            (molecule_run("cholesterol", "wavefunction", COUPLING | field(0, 300), 1), 38),
            (molecule_run("helix", "wavefunction", COUPLING | field(0, 20), 1), 2),
        ],
        "couplings": [
            (molecule_run("cholesterol", "couplings", COUPLING | TIGHT, 25), 60),
            (chain_run(40, "couplings", COUPLING | TIGHT, 10), 40),
        ],
        "shielding, terms 1 to 4": [
            (molecule_run("cholesterol", "shielding", SHIELDING | TIGHT), 38),
            (chain_run(60, "shielding", SHIELDING | field(0, 10)), 60),
            (molecule_run("helix", "shielding", SHIELDING | TIGHT), 2),
        ],
        "shielding, all ten terms and tensors": [
            (chain_run(15, "all terms", ALL_TERMS | TIGHT), 40),
            (chain_run(20, "all terms", ALL_TERMS | TIGHT), 20),
            (molecule_run("cholesterol", "all terms", ALL_TERMS | TIGHT), 40),
        ],
    }


def run_stops(arena, table, kind, count, strict):
    """In a short campaign the first job of the kind alone."""
    shares = stop_kinds()[kind] if count >= LONG_CAMPAIGN else stop_kinds()[kind][:1]
    row = table.add_row("SIGTERM, " + kind)
    jobs = random.choices([job for job, _ in shares], [share for _, share in shares], k=count)
    for i, job in enumerate(jobs):
        stop(arena, table, row, job, i % 4 < 2, i % 2 == 0, SLOWEST_STOP if strict else SLOWEST_BUSY_STOP)
    stops = row.outcomes["stopped"]
    table.expect(stops >= count / 2, f"stop: {kind}: only {stops} of {count} runs were met in time")
    if strict:
        table.expect(row.median() <= SLOWEST_MEDIAN, f"stop: {kind}: the median is {row.median():.3f} s")
