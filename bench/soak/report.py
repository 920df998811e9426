"""What a soak says at its end: tables, and whether a curve grows."""
import collections
import statistics

import curves

# Curves that must not grow, and by how much each may rise: what comes and goes with the daemons that happen to run.
ALLOWANCES = {"front KB": 512, "host KB": 1024, "daemon KB": 512, "front descriptors": 2, "host descriptors": 6, "threads": 1,
              "helpers": 2, "state KB": 64, "state files": 1, "device files": 3, "snapshot bytes": 1000}
# A step is slower than before when the host process works half as long again on it, and 5 ms more.
SLOWER, WORK_ALLOWANCE = 0.5, 0.005
# Console and host process are restarted in the first quarter, and caches fill up; then nothing has a reason to grow.
JUDGED_FROM = 0.4
TABLE_ROWS = 30
# Seconds. In less time, what fills up once looks like what grows for ever.
SHORTEST_JUDGED = 600


def judged(points, end):
    return [point for point in points if point[0] >= JUDGED_FROM * end]


def is_judged(samples):
    # The first quarter is one of the time that was meant.
    return samples.is_whole and end_of(samples) >= SHORTEST_JUDGED


def end_of(samples):
    return samples.rows[-1]["seconds"]


def judge_curves(samples):
    """Returns a row for each curve: its name, its middle, its rise, and whether it grows."""
    rows = []
    for name, allowance in ALLOWANCES.items():
        points = judged([(row["seconds"], row[name]) for row in samples.rows], end_of(samples))
        if points:
            rows.append((name, statistics.median(value for _, value in points), curves.climb(points),
                         is_judged(samples) and curves.grows(points, allowance)))
    return rows


def judge_steps(samples):
    """Returns a row for each step and kind of device: count, median, 95 % and longest time in ms, the median of the processor's
    time, and whether that has grown."""
    times, work = collections.defaultdict(list), collections.defaultdict(list)
    for when, name, kind, _, seconds, used in samples.steps:
        times[name, kind].append(1000 * seconds)
        work[name, kind].append((when, used))
    rows = []
    for (name, kind), values in sorted(times.items()):
        values.sort()
        points = work[name, kind]
        is_slower = is_judged(samples) and curves.grows(judged(points, end_of(samples)), WORK_ALLOWANCE, SLOWER)
        rows.append((name, kind, len(values), statistics.median(values), values[round(0.95 * (len(values) - 1))], values[-1],
                     1000 * statistics.median(used for _, used in points), is_slower))
    return rows


def outcome_lines(samples):
    counts = collections.defaultdict(collections.Counter)
    for _, name, _, outcome, *_ in samples.steps:
        counts[name][outcome] += 1
    return [f"{name:<16}" + ", ".join(f"{count} {outcome}" for outcome, count in sorted(counts[name].items(), key=lambda item: -item[1]))
            for name in sorted(counts)]


def table_by_time(samples):
    """Returns the lines of the table that scripts/plots.py draws: the middle of each stretch of time."""
    lines = ["minute  front MB  host MB  daemon MB  descriptors  processes  states KB  snapshots  set ms  apply ms  drift ms"]
    size = max(1, len(samples.rows) // TABLE_ROWS)
    for first in range(0, len(samples.rows) - size + 1, size):
        rows = samples.rows[first:first + size]
        begin = samples.rows[first - 1]["seconds"] if first else 0
        middle = {name: statistics.median(row[name] for row in rows) for name in rows[0]}
        times = [latency(samples, name, begin, rows[-1]["seconds"]) for name in ("set", "apply", "drift")]
        lines.append(f"{rows[-1]['seconds'] / 60:6.1f}  {middle['front KB'] / 1000:8.2f}  {middle['host KB'] / 1000:7.2f}  "
                     f"{middle['daemon KB'] / 1000:9.2f}  {middle['front descriptors'] + middle['host descriptors']:11.0f}  "
                     f"{middle['daemons'] * 3 + middle['helpers'] + 1:9.0f}  {middle['state KB']:9.1f}  {middle['snapshots']:9.0f}  "
                     f"{times[0]:>6}  {times[1]:>8}  {times[2]:>8}")
    return lines


def latency(samples, name, begin, end):
    values = [1000 * seconds for when, step, _, _, seconds, _ in samples.steps if step == name and begin <= when < end]
    return f"{statistics.median(values):.0f}" if values else "-"


def text_of(samples, checks, work, head):
    """Returns the whole report and whether all is well."""
    lines = [head, ""]
    slower = judge_steps(samples)
    grown = judge_curves(samples)
    lines += ["step             device       times  median ms    95 %  longest  of the processor"]
    lines += [f"{name:<15}  {kind:<9}  {count:>8}  {median:>9.0f}  {most:>6.0f}  {longest:>7.0f}  {used:>16.1f}{'  SLOWER' if is_slower else ''}"
              for name, kind, count, median, most, longest, used, is_slower in slower]
    lines += ["", "how they went"] + outcome_lines(samples)
    lines += ["", "curve                  middle      rise  verdict"]
    lines += [f"{name:<18}  {middle:>9.1f}  {rise:>8.1f}  {'GROWS' if is_grown else 'flat' if is_judged(samples) else '-'}" for name, middle, rise, is_grown in grown]
    lines += [""] + table_by_time(samples)
    lines += ["",
              f"{checks.made} looks at files; snapshots made: {work.snapshots}; events read: {work.console.events}"]
    problems = list(checks.broken.values())
    problems += [f"the curve of {name} grows: by {rise:.1f} from its middle, {middle:.1f}" for name, middle, rise, is_grown in grown if is_grown]
    problems += [f"{name} of {kind} has become slower" for name, kind, *_, is_slower in slower if is_slower]
    well = "all invariants held, and no curve grows" if is_judged(samples) else \
        "all invariants held; the run was too short to judge curves"
    lines += ["", f"{len(problems)} problems:" if problems else well] + problems
    return "\n".join(lines) + "\n", not problems
