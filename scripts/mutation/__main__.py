"""The command behind scripts/mutate."""

import argparse
import os
import signal
import sys
import time
from collections import Counter
from pathlib import Path

from work import ROOMS, Results, Workplace, work

ROOT = Path(__file__).resolve().parents[2]
EQUAL = Path(__file__).resolve().parent / 'equal.txt'
PLACE = ROOT / 'build' / 'mutate'
NOTHING_TO_NOTICE = ('no program', 'same code')


def positive(text):
    if not text.isdecimal() or int(text) < 1:
        raise argparse.ArgumentTypeError('"%s" is not a whole number of 1 or more' % text)
    return int(text)


def arguments():
    parser = argparse.ArgumentParser(
        prog='scripts/mutate', formatter_class=argparse.RawDescriptionHelpFormatter,
        description='Changes the sources of the plug-in in small ways, one at a time, builds and runs the unit tests on each, '
                    'and lists the\nchanges that no test notices. Works in a copy of the tree under build/mutate.',
        epilog='Changes that make no difference stand in scripts/mutation/equal.txt, one on a line, with the reason.\n'
               'Exit status: 0 when every other change is noticed, 1 when some are not, 2 for wrong arguments, 130 when stopped.\n'
               'When a stopped run is started again, it continues where it was, unless sources or tests have changed.')
    parser.add_argument('--only', metavar='FILE', action='append', default=[], help='only changes of this file (repeatable)')
    parser.add_argument('--id', metavar='ID', action='append', default=[], help='only this change, even if it was tried before (repeatable)')
    parser.add_argument('--sample', metavar='N', type=positive, help='N of the changes, the same ones each time as long as they exist')
    parser.add_argument('--survivors', action='store_true', help='leave out changes that an earlier state of sources and tests noticed; report on all')
    parser.add_argument('--list', action='store_true', help='list the changes and try none')
    parser.add_argument('--jobs', metavar='N', type=positive, default=os.cpu_count(), help='how many changes to try at a time (%(default)s)')
    parser.add_argument('--report', metavar='FILE', type=Path, default=PLACE / 'report.txt',
                        help='where to write the report (build/mutate/report.txt)')
    return parser.parse_args()


def sources():
    files = ['host/auto_com.h', 'host/DualKey.h']
    for room in ROOMS:
        files += [str(path.relative_to(ROOT)) for path in (ROOT / room).iterdir() if path.suffix in ('.cpp', '.h')]
    return sorted(files)


def read_equal():
    """Returns the changes that make no difference, as a map from id to reason."""
    reasons = {}
    for number, line in enumerate(EQUAL.read_text().splitlines(), 1):
        if not line.strip() or line.startswith('#'):
            continue
        name, _, reason = line.partition(' ')
        if len(name) != 8 or not reason.strip() or name in reasons:
            raise SystemExit('mutate: %s:%d: write an id that no other line has, a space, the file and the reason'
                             % (EQUAL.relative_to(ROOT), number))
        reasons[name] = reason.strip()
    return reasons


def wanted(mutants, options):
    """Returns the changes that the options ask for."""
    known = {mutant.id for mutant in mutants}
    for name in options.id:
        if name not in known:
            raise SystemExit('mutate: no change has the id "%s"; --list shows them all' % name)
    for name in options.only:
        if name not in sources():
            raise SystemExit('mutate: "%s" is not a source of the plug-in; allowed: %s' % (name, ' '.join(sources())))
    chosen = [mutant for mutant in mutants if not options.id or mutant.id in options.id]
    chosen = [mutant for mutant in chosen if not options.only or mutant.file in options.only]
    if options.sample is not None and options.sample < len(chosen):
        # An id is a hash, so the first ones are a fair choice, and a new change replaces at most one of them.
        kept = set(sorted(mutant.id for mutant in chosen)[:options.sample])
        chosen = [mutant for mutant in chosen if mutant.id in kept]
    return chosen


def to_try(mutant, options, results, digest):
    known = results.known.get(mutant.id, {})
    if options.survivors and known.get('state', 'unnoticed') != 'unnoticed':
        return False
    return bool(options.id) or known.get('digest') != digest


def shown(mutant):
    return '%s  %s:%d  %s%s\n    - %s\n    + %s' % (
        mutant.id, mutant.file, mutant.line, mutant.kind, ' in ' + mutant.function if mutant.function else '', mutant.before,
        mutant.after)


class Progress:
    """Shows the progress in one line on a terminal, and nothing elsewhere."""

    def __init__(self, count):
        self.count, self.done, self.start = count, 0, time.monotonic()

    def __call__(self, mutant, state, by):
        self.done += 1
        if sys.stdout.isatty():
            print('\r%d of %d, %d s ' % (self.done, self.count, time.monotonic() - self.start), end='', flush=True)


def judge(mutants, results, reasons, digest, whole):
    """Returns the lines of the report, and the complaints; without complaints all is well."""
    states = {mutant.id: results.known[mutant.id]['state'] for mutant in mutants}
    survivors = [mutant for mutant in mutants if states[mutant.id] == 'unnoticed' and mutant.id not in reasons]
    equal = [mutant for mutant in mutants if states[mutant.id] == 'unnoticed' and mutant.id in reasons]
    wrong = [mutant.id for mutant in mutants if states[mutant.id] != 'unnoticed' and mutant.id in reasons]
    if whole:
        wrong += sorted(set(reasons) - {mutant.id for mutant in mutants})
    real = [mutant for mutant in mutants if states[mutant.id] not in NOTHING_TO_NOTICE]
    count = Counter(states.values())
    lines = ['%d changes: %d do not compile, %d give the same code; of the other %d the tests notice %d, %d make no difference '
             '(equal.txt), %d are unnoticed' % (len(mutants), count['no program'], count['same code'], len(real),
                                                count['noticed'], len(equal), len(survivors)), '']
    earlier = sum(results.known[mutant.id]['digest'] != digest for mutant in mutants)
    if earlier:
        lines[1:] = ['(%d of them tried with an earlier state of sources and tests)' % earlier, '']
    lines.append('%-40s %8s %8s %8s %8s' % ('', 'tried', 'noticed', 'equal', 'unnoticed'))
    for file in sorted({mutant.file for mutant in real}):
        here = [mutant for mutant in real if mutant.file == file]
        lines.append('%-40s %8d %8d %8d %8d' % (
            file, len(here), sum(states[mutant.id] == 'noticed' for mutant in here),
            sum(mutant in equal for mutant in here), sum(mutant in survivors for mutant in here)))
    lines += [''] + ['%s\n    %s' % (shown(mutant), reasons[mutant.id]) for mutant in equal]
    complaints = ['unnoticed: ' + shown(mutant) for mutant in survivors]
    complaints += ['%s: the change %s is noticed or no longer exists: remove its line' % (EQUAL.relative_to(ROOT), name)
                   for name in wrong]
    return lines, complaints


def main():
    options = arguments()
    from find import find  # here, so that --help works without libclang
    reasons = read_equal()
    results = Results(PLACE / 'results.jsonl')
    every = [mutant for file in sources() for mutant in find(ROOT, file)]
    mutants = wanted(every, options)
    if options.list:
        print('\n'.join(shown(mutant) for mutant in mutants))
        print('%d changes' % len(mutants))
        return 0
    PLACE.mkdir(parents=True, exist_ok=True)
    workplace = Workplace(ROOT, PLACE)
    workplace.prepare()
    left = [mutant for mutant in mutants if to_try(mutant, options, results, workplace.digest)]
    start = time.monotonic()
    work(workplace, left, results, options.jobs, Progress(len(left)))
    if sys.stdout.isatty():
        print('\r', end='')
    lines, complaints = judge(mutants, results, reasons, workplace.digest, len(mutants) == len(every))
    options.report.write_text('\n'.join(lines + [''] + complaints) + '\n')
    print('\n'.join(line for line in lines[:2] if line))
    print('\n'.join(complaints + ['%d tried now, in %d s; the report is in %s' % (
        len(left), time.monotonic() - start, options.report)]))
    return 1 if complaints else 0


if __name__ == '__main__':
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    try:
        sys.exit(main())
    except KeyboardInterrupt:
        print('\nmutate: stopped; the results so far are kept', file=sys.stderr)
        sys.exit(128 + signal.SIGINT)
