# SPDX-License-Identifier: MIT
"""Kills and stops at random moments."""
import os
import random
import signal
import time

from fault_arena import KindOfOutput, Neighbours
from fault_jobs import (ALL_TERMS, COUPLING, ENDLESS, LONG_CAMPAIGN, SHIELDING, TIGHT, Chain, ExactSpins, Examples,
                        Molecule, WeakSpins)

WRITING_SECONDS = 0.03  # after a kill's file has appeared
SLOWEST_MEDIAN = 0.1    # from the signal of a stop to the end of the process, s
SLOWEST_STOP = 0.5
SLOWEST_BUSY_STOP = 2.0  # where times aren't judged strictly


def WaitForNeighbour(child, folder, job):
    """Until the run begins to write its result, and a little longer."""
    while not Neighbours(folder, job) and not child.Ended():
        time.sleep(0.0001)
    time.sleep(random.uniform(0, WRITING_SECONDS))


def WaitForMoment(whole, child, folder, job):
    """Half of the kills come at any moment, a quarter in the last tenth, a quarter while the result is written."""
    choice = random.randrange(4)
    if choice == 3:
        WaitForNeighbour(child, folder, job)
        return
    part = random.uniform(0.9, 1.05) if choice == 2 else random.random()
    child.WaitForWork(part * whole)


def Kill(arena, table, row, job, older, log):
    whole = arena.Time(job, log)
    folder = arena.Folder(job, older)
    (arena.top / "w.log").unlink(missing_ok=True)
    child = arena.Start(job, log="w.log" if log else None)
    WaitForMoment(whole, child, folder, job)
    child.process.kill()
    ended = child.Wait() == 0
    outcome = KindOfOutput(folder, job, older)
    allowed = ["whole"] if ended else ["whole", "ERRMSG", "older" if older else "absent"]
    table.Expect(outcome in allowed, f"{job.name} killed, log {log}: the output is {outcome}")
    left = len(Neighbours(folder, job))
    row.Count("had ended: whole" if ended else f"{outcome}, a file left beside it" if left else outcome)


def RunKills(arena, table, count):
    """Half of the kills go to the examples, half to longer runs."""
    examples = Examples()
    longer = [ExactSpins(11), ExactSpins(12), WeakSpins(16), WeakSpins(18), WeakSpins(19),
              Molecule("naphthalene", "all terms", ALL_TERMS + TIGHT),
              Molecule("cholesterol", "all terms", ALL_TERMS + TIGHT)]
    longer = longer if count >= LONG_CAMPAIGN else longer[0:3:2]
    rows = {older: table.AddRow("SIGKILL, " + ("an older result there" if older else "no older result"))
            for older in (False, True)}
    for i in range(count):
        job = examples[i // 2 % len(examples)] if i % 2 else longer[i // 2 % len(longer)]
        for older, row in rows.items():
            Kill(arena, table, row, job, older, log=random.random() < 0.5)


def Stop(arena, table, row, job, older, log, limit):
    folder = arena.Folder(job, older)
    (arena.top / "w.log").unlink(missing_ok=True)
    part = random.random()
    moment = part * arena.Time(job, log)
    child = arena.Start(job, log="w.log" if log else None)
    stoppable = child.WaitUntilStoppable()
    child.WaitForWork(moment)
    before = child.Ended()
    sent = time.monotonic()
    if not before:
        os.kill(child.process.pid, signal.SIGTERM)
    code = child.Wait()
    latency = time.monotonic() - sent
    outcome = KindOfOutput(folder, job, older)
    where = f"{job.name}, log {log}, at {part:.2f} of the run"
    table.Expect(code == 0, f"stop: {where}: exit code {code}")
    table.Expect(outcome in ["whole", "older" if older else "absent"], f"stop: {where}: the output is {outcome}")
    table.Expect(not Neighbours(folder, job), f"stop: {where}: a file is left beside the output")
    if before or not stoppable:
        table.Expect(outcome == "whole", f"stop: {where}: the run ended of itself, the output is {outcome}")
        row.Count("had ended: whole")
        return
    row.Count("in its last step: whole" if outcome == "whole" else "stopped", latency, where)
    table.Expect(latency <= limit, f"stop: {where}: it took {latency:.3f} s, the output is {outcome}")


def StopKinds():
    """Each kind of run with its jobs, from a fraction of a second to several, and their shares."""
    return {
        "exact spectrum": [(ExactSpins(11), 25), (ExactSpins(12), 72), (ExactSpins(13), 3)],
        "weak spectrum": [(WeakSpins(16), 26), (WeakSpins(18), 60), (WeakSpins(20), 12), (WeakSpins(22), 2)],
        "wavefunction": [(Chain(60, "wavefunction", COUPLING + ENDLESS.format(10), 1), 60),
                         (Molecule("cholesterol", "wavefunction", COUPLING + ENDLESS.format(300), 1), 38),
                         (Molecule("helix", "wavefunction", COUPLING + ENDLESS.format(20), 1), 2)],
        "couplings": [(Molecule("cholesterol", "couplings", COUPLING + TIGHT, 25), 60),
                      (Chain(40, "couplings", COUPLING + TIGHT, 10), 40)],
        "shielding, terms 1 to 4": [(Molecule("cholesterol", "shielding", SHIELDING + TIGHT), 38),
                                    (Chain(60, "shielding", SHIELDING + ENDLESS.format(10)), 60),
                                    (Molecule("helix", "shielding", SHIELDING + TIGHT), 2)],
        "shielding, all ten terms and tensors": [
            (Chain(15, "all terms", ALL_TERMS + TIGHT), 40), (Chain(20, "all terms", ALL_TERMS + TIGHT), 20),
            (Molecule("cholesterol", "all terms", ALL_TERMS + TIGHT), 40)],
    }


def RunStops(arena, table, kind, count, strict):
    """In a short campaign the first job of the kind alone."""
    shares = StopKinds()[kind] if count >= LONG_CAMPAIGN else StopKinds()[kind][:1]
    row = table.AddRow("SIGTERM, " + kind)
    jobs = random.choices([job for job, _ in shares], [share for _, share in shares], k=count)
    for i, job in enumerate(jobs):
        Stop(arena, table, row, job, i % 4 < 2, i % 2 == 0, SLOWEST_STOP if strict else SLOWEST_BUSY_STOP)
    stops = row.outcomes["stopped"]
    table.Expect(stops >= count / 2, f"stop: {kind}: only {stops} of {count} runs were met in time")
    if strict:
        table.Expect(row.Median() <= SLOWEST_MEDIAN, f"stop: {kind}: the median is {row.Median():.3f} s")
