"""Builds the unit tests in a copy of the tree and runs them on one mutant after the other."""

import json
import os
import re
import resource
import shutil
import signal
import subprocess
import threading
from concurrent.futures import ThreadPoolExecutor
from hashlib import sha256
from pathlib import Path

COPIED = ['CMakeLists.txt', 'CMakePresets.json', 'agent', 'bench', 'cmake', 'config', 'devhost', 'device', 'drivers', 'fuzz',
          'host', 'reentry', 'tests', 'variables']
ROOMS = ['agent', 'config', 'device', 'reentry', 'variables']
# The unit tests that run first on a room's mutants; the others run only when these notice nothing.
FIRST = {'agent': ['agent_test'], 'config': ['section_test', 'config_test'], 'device': ['device_test'],
         'reentry': ['reentry_test'], 'variables': ['variables_test'], 'host': ['host_test']}
PROGRAMS = ['host_test', 'reentry_test', 'section_test', 'variables_test', 'device_test', 'rootless_document_test', 'other_host_test',
            'config_test', 'agent_test', 'faults_test']
CPU_SECONDS = 10     # what a program may use on one mutant: many times what it needs
WALL_SECONDS = 1200  # for a program that waits; long enough that a busy machine does not look like one
MEMORY = 4 << 30


def run(command, cwd, **options):
    # A process group of its own: if Ctrl-C ended a test's program, that would look like a test that fails.
    return subprocess.run(command, cwd=cwd, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, errors='replace',
                          process_group=0, **options)


def fail(message, output=''):
    raise SystemExit(output[-6000:] + '\nmutate: ' + message if output else 'mutate: ' + message)


def limit():
    resource.setrlimit(resource.RLIMIT_CPU, (CPU_SECONDS, CPU_SECONDS))
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def without_outputs(command):
    """Returns a compiler's command up to its source, without the options that name outputs."""
    command = [word for word in command if word != '-MD']
    for option in ('-MT', '-MF', '-o'):
        at = command.index(option)
        del command[at:at + 2]
    return command


class Workplace:
    """A copy of the tree under `place`, with its own build of the unit tests."""

    def __init__(self, root, place):
        self.root, self.place = root, place
        self.tree, self.build, self.scratch = place / 'tree', place / 'build', place / 'scratch'
        self.reference = {}
        self.lock = threading.Lock()

    def prepare(self):
        self.copy()
        # No warnings, because a mutant may leave a name unused. No debug information, because it costs time.
        flags = ['-G', 'Ninja', '-DCMAKE_BUILD_TYPE=None', '-DCMAKE_CXX_COMPILER=g++', '-DCMAKE_CXX_FLAGS=-O0 -w']
        done = run(['cmake', '-S', str(self.tree), '-B', str(self.build)] + flags, self.root)
        if done.returncode:
            fail('cannot configure the copy', done.stdout)
        done = run(['ninja'] + PROGRAMS, self.build)
        if done.returncode:
            fail('cannot build the copy', done.stdout)
        for program in PROGRAMS:
            verdict = self.try_program(self.build / 'tests' / program)
            if verdict:
                fail('%s fails without any change: %s' % (program, verdict))
        self.links = {program: self.command('tests/' + program) for program in PROGRAMS}
        self.compiles = {}
        for link in self.links.values():
            for word in link:
                if word.endswith('.cpp.o') and word not in self.compiles:
                    self.compiles[word] = self.command(word)
        self.precompile()
        self.needs = {target: set(names) for target, names in self.dependencies().items() if target in self.compiles}

    def copy(self):
        """Copies what has changed since the last time and removes what is gone."""
        listed = run(['git', 'ls-files', '-co', '--exclude-standard', '--'] + [p for p in COPIED if (self.root / p).exists()],
                     self.root).stdout.split('\n')
        wanted = {name for name in listed if name and (self.root / name).is_file()}
        for name in wanted:
            source, target = self.root / name, self.tree / name
            if not target.exists() or target.read_bytes() != source.read_bytes():
                target.parent.mkdir(parents=True, exist_ok=True)
                shutil.copyfile(source, target)
        for target in list(self.tree.rglob('*')):
            if target.is_file() and str(target.relative_to(self.tree)) not in wanted:
                target.unlink()
        self.digest = sha256()
        for name in sorted(wanted):
            if name.startswith(('host/', 'tests/support/', 'devhost/xml/') + tuple('tests/' + r + '/' for r in ROOMS + ['faults', 'host'])
                               + tuple(r + '/' for r in ROOMS)):
                self.digest.update(name.encode() + b'\0' + (self.tree / name).read_bytes())
        self.digest = self.digest.hexdigest()[:16]  # of everything that a verdict depends on

    def precompile(self):
        """Compiles the library headers of the plug-in once: they take most of a compiler's time."""
        includes = set()
        for room in ROOMS + ['host']:
            for path in (self.tree / room).iterdir():
                if path.suffix in ('.h', '.cpp'):
                    includes.update(re.findall(r'^#include <.*>$', path.read_text(), re.M))
        self.header = self.place / 'libraries.h'
        self.header.write_text('\n'.join(sorted(includes)) + '\n')
        command = next(command for target, command in self.compiles.items() if target.split('/')[0] in ROOMS)
        command = without_outputs(command)[:-2]
        done = run(command + ['-x', 'c++-header', str(self.header), '-o', str(self.header) + '.gch'], self.build)
        if done.returncode:
            fail('cannot compile the library headers', done.stdout)

    def command(self, target):
        lines = run(['ninja', '-t', 'commands', target], self.build).stdout.strip().split('\n')
        return lines[-1].replace(': && ', '').replace(' && :', '').replace('\\"', '"').split()

    def dependencies(self):
        found, target = {}, None
        for line in run(['ninja', '-t', 'deps'], self.build).stdout.split('\n'):
            if line.startswith('    '):
                if line.strip().startswith(str(self.tree)):
                    found[target].append(os.path.relpath(line.strip(), self.tree))
            elif ':' in line:
                target = line.split(':')[0]
                found[target] = []
        return found

    def try_program(self, program):
        """Returns what fails when the program runs, or an empty text."""
        try:
            done = run([str(program), '--gtest_brief=1', '--gtest_fail_fast'], self.build, preexec_fn=limit,
                       timeout=WALL_SECONDS)
        except subprocess.TimeoutExpired:
            return 'waits forever'
        if done.returncode == 0:
            return ''
        failed = re.search(r'^\[  FAILED  \] ([^,\s]+)', done.stdout, re.M)
        if failed:
            return failed.group(1)
        if done.returncode in (-signal.SIGXCPU, -signal.SIGKILL):
            return 'does not end'
        return 'ends with %s' % (signal.Signals(-done.returncode).name if done.returncode < 0 else done.returncode)

    def objects(self, program, file):
        """Returns the objects of a program that must be compiled again for a change of `file`. If the plug-in is part of the
        program, its own objects are enough: they come first at the link, so the inline code of a header is taken from them.
        Otherwise the object of the test that is named after the header is enough."""
        touched = [word for word in self.links[program] if file in self.needs.get(word, ())]
        plugin = [word for word in touched if word.split('/')[0] in ROOMS]
        test = '/%stest.cpp.o' % Path(file).stem.replace('_', '').lower()
        return plugin or [word for word in touched if word.lower().endswith(test)] or touched

    def compile(self, target, output, overlay, file, extra=()):
        command = without_outputs(self.compiles[target]) + ['-o', str(output)]
        source = command.index('-c') + 1
        if target.split('/')[0] in ROOMS and not extra:
            command[1:1] = ['-include', str(self.header)]
            source += 2
        if overlay is not None:
            if command[source] == str(self.tree / file):
                command[source] = str(overlay / file)
            command.insert(1, '-I' + str(overlay))
        return run(command + list(extra), self.build)

    def try_mutant(self, mutant):
        """Returns the verdict on a mutant: (state, what noticed it)."""
        overlay = self.scratch / mutant.id
        source = (self.tree / mutant.file).read_bytes()
        for start, end, replacement in reversed(mutant.edits):
            source = source[:start] + replacement.encode() + source[end:]
        changed = overlay / mutant.file
        changed.parent.mkdir(parents=True, exist_ok=True)
        changed.write_bytes(source)
        try:
            return self.try_overlay(mutant.file, overlay)
        finally:
            shutil.rmtree(overlay)

    def try_overlay(self, file, overlay):
        first = FIRST[file.split('/')[0]]
        compiled = {}
        for program in first + [program for program in PROGRAMS if program not in first]:
            touched = self.objects(program, file)
            for target in touched:
                if target not in compiled:
                    compiled[target] = overlay / (target.replace('/', '_'))
                    if self.compile(target, compiled[target], overlay, file).returncode:
                        return 'no program', ''
            if not touched:
                continue
            link = [str(compiled.get(word, word)) for word in self.links[program]]
            link[link.index('-o') + 1] = str(overlay / program)
            done = run(link + ['-fuse-ld=gold'], self.build)
            if done.returncode:
                return 'no program', ''
            noticed = self.try_program(overlay / program)
            (overlay / program).unlink()
            if noticed:
                return 'noticed', program + ': ' + noticed
        if all(self.same_code(target, overlay, file) for target in compiled):
            return 'same code', ''
        return 'unnoticed', ''

    def same_code(self, target, overlay, file):
        """Returns whether the optimiser makes the same code from the mutant: then no test can notice it."""
        extra = ['-O2', '-g0']
        with self.lock:
            if target not in self.reference:
                output = self.scratch / ('reference_' + target.replace('/', '_'))
                if self.compile(target, output, None, file, extra).returncode:
                    fail('cannot compile ' + target)
                self.reference[target] = output.read_bytes()
        output = overlay / 'optimised.o'
        self.compile(target, output, overlay, file, extra)
        return output.read_bytes() == self.reference[target]


class Results:
    """The results for each mutant, in a file that grows by one line at a time."""

    def __init__(self, path):
        self.path = path
        self.lock = threading.Lock()
        self.known = {}
        if path.exists():
            for line in path.read_text().splitlines():
                try:
                    entry = json.loads(line)
                    self.known[entry['id']] = entry
                except ValueError:
                    pass  # a line that was cut off

    def add(self, mutant, digest, state, by):
        entry = {'id': mutant.id, 'digest': digest, 'state': state, 'by': by}
        with self.lock:
            self.known[mutant.id] = entry
            with self.path.open('a') as file:
                file.write(json.dumps(entry) + '\n')


def work(workplace, mutants, results, jobs, tell):
    shutil.rmtree(workplace.scratch, ignore_errors=True)
    workplace.scratch.mkdir(parents=True)

    def one(mutant):
        state, by = workplace.try_mutant(mutant)
        results.add(mutant, workplace.digest, state, by)
        tell(mutant, state, by)

    with ThreadPoolExecutor(jobs) as pool:
        futures = [pool.submit(one, mutant) for mutant in mutants]
        try:
            for future in futures:
                future.result()
        except BaseException:
            for future in futures:
                future.cancel()  # running ones finish
            raise
