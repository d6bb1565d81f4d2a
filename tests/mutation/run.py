#!/usr/bin/env python3
"""Mutation run over src/ and platform/file/: which small faults in the code does no test find?

    tests/mutation/run.py --sample 300 --seed 1 --survivors survivors.txt --matrix matrix.txt

Takes the files of HEAD, changes each operator, condition, constant, call, assignment and return value of each function
in turn (mutants.py), and runs the GoogleTest programs on the changed code. Each such change is a mutant. A mutant is
killed if a test fails, crashes or hangs. One build holds all mutants, and QUILLBOX_MUTANT switches one on. At first
each test runs alone and without a mutant. This shows which mutants the test reaches and how long it takes. After that,
the tests that reach a mutant run with this mutant switched on.

A mutant of the code that deletes files can delete any file. So bubblewrap starts each test in an environment where
everything is read-only but /tmp and /dev/shm, which are small file systems in memory. When the test ends, these file
systems disappear and its child processes are killed. This needs the package bubblewrap and Linux 6.6 (extended
attributes of users in tmpfs).

Not covered: headers, constants outside of functions, and code that no GoogleTest program reaches.
"""
import argparse
import collections
import concurrent.futures
import hashlib
import io
import json
import os
import pathlib
import random
import re
import select
import subprocess
import sys
import tarfile
import time

from mutants import Source, instrumented

HERE = pathlib.Path(__file__).resolve().parent
MUTATED = re.compile(r"(src|platform/file)/.*\.cpp")
FLAGS = f"-O1 -w -Wno-narrowing -Werror=vla -fmax-errors=0 -fdiagnostics-color=never -include {HERE}/chosen_mutant.h"
# A test that prints nothing for SILENT_SECONDS may hang. It counts as hanging if it then prints nothing for HANG_FACTOR
# times the test's time without the mutant. This time is measured at that moment, because on a busy machine any test is
# slow.
SILENT_SECONDS, HANG_FACTOR = 5, 4
MEMORY_FOLDERS = [word for folder in ("/tmp", "/dev/shm") for word in ("--size", str(512 << 20), "--tmpfs", folder)]
ISOLATED = ["prlimit", f"--as={8 << 30}", "bwrap", "--ro-bind", "/", "/", "--dev", "/dev", "--proc", "/proc", *MEMORY_FOLDERS,
            "--chdir", "/tmp", "--unshare-pid", "--die-with-parent", *(["--cap-add", "ALL"] if os.geteuid() == 0 else [])]


def output(*command):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE).stdout


def write_if_new(path, content):
    """Writes the file unless it already has this content. So an unchanged file isn't compiled again."""
    path.parent.mkdir(parents=True, exist_ok=True)
    if not path.exists() or path.read_bytes() != content:
        path.write_bytes(content)


def extract(tree):
    """Writes the files of HEAD to the tree, except the sources to mutate. Yields these sources with their paths."""
    with tarfile.open(fileobj=io.BytesIO(output("git", "-C", HERE.parents[1], "archive", "HEAD"))) as archive:
        for file in filter(tarfile.TarInfo.isfile, archive):
            content = archive.extractfile(file).read()
            if MUTATED.fullmatch(file.name):
                yield tree / file.name, Source(file.name, content.decode())
            else:
                write_if_new(tree / file.name, content)


def configure(tree, build, sources):
    """Configures the build. Returns the GoogleTest programs that are built from a mutated source."""
    output("cmake", "-S", tree, "-B", build, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=", f"-DCMAKE_CXX_FLAGS={FLAGS}",
           "-DQUILLBOX_WINDOW=OFF")
    programs, targets = [], output("ninja", "-C", build, "-t", "targets", "all").decode()
    for program in re.findall(r"^(tests/[^/\n]+): CXX_EXECUTABLE_LINKER", targets, re.M):
        inputs = output("ninja", "-C", build, "-t", "inputs", program).decode()
        if "gtest_main" in inputs and any(str(source) in inputs for source in sources):
            programs.append(program)
    return programs


def build_mutants(scratch, jobs):
    """Builds the test programs with all mutants that compile. Returns these mutants and the programs."""
    tree, build = scratch / "tree", scratch / "build"
    sources = dict(extract(tree))
    mutants = {path: list(source.mutants()) for path, source in sources.items()}
    for number, mutant in enumerate((m for found in mutants.values() for m in found), 1):
        mutant.number = number
    notes = scratch / f"not-compiling-{hashlib.sha256(repr(mutants).encode()).hexdigest()[:16]}.json"  # by an earlier run
    dropped = set(json.loads(notes.read_text())) if notes.exists() else set()
    programs = None
    while True:
        owners = {}
        for path, source in sources.items():
            text, owners[path] = instrumented(source.text, [m for m in mutants[path] if m.number not in dropped])
            write_if_new(path, text.encode())
        programs = programs or configure(tree, build, sources)
        result = subprocess.run(["ninja", "-C", build, "-k", "0", f"-j{jobs}", *programs], text=True, stdout=subprocess.PIPE)
        if result.returncode == 0:
            built = {number for lines in owners.values() for line in lines for number in line}
            return [m for found in mutants.values() for m in found if m.number in built], [build / p for p in programs]
        wrong = mutants_in_errors(result.stdout, build, owners)
        if not wrong:
            sys.exit(result.stdout[-5000:])
        dropped |= wrong
        notes.write_text(json.dumps(sorted(dropped)))


def mutants_in_errors(text, build, owners):
    """Returns the mutants that cause the compiler's errors: for each error, those in the first line that the compiler
    names and that has mutants. If no such line has any, those in the nearest line above the first one."""
    wrong = set()
    for error in re.split(r"^(?=\S+:\d+:\d+: (?:fatal )?error: )", text, flags=re.M)[1:]:
        named = [(pathlib.Path(os.path.normpath(build / file)), int(line) - 1)
                 for file, line in re.findall(r"^(\S+?):(\d+):\d+: ", error, re.M)]
        lines = [(file, line) for file, line in named if file in owners]
        above = [(lines[0][0], line) for line in range(lines[0][1], -1, -1)] if lines else []
        wrong |= next((owners[file][line] for file, line in lines + above if owners[file][line]), set())
    return wrong


class Run:
    def __init__(self, mutants, programs):
        self.mutants = {m.number: m for m in mutants}
        self.seconds = {}  # by (program, test)
        self.reaching = collections.defaultdict(list)  # by mutant: the tests that reach it
        self.killers = {}  # by mutant that was run: the tests that fail
        self.hung = set()  # mutants with which a test hung
        for program in programs:
            self.record(program)

    def start(self, program, arguments, mutant=0, reached=None):
        environment = {**os.environ, "QUILLBOX_MUTANT": str(mutant), "TMPDIR": "/tmp"}
        if reached is not None:
            environment["QUILLBOX_REACHED"] = str(reached)
        return subprocess.Popen([*ISOLATED, program, *arguments], env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                stderr=subprocess.STDOUT, pass_fds=[] if reached is None else [reached])

    def record(self, program):
        group, size = "", max(self.mutants) + 1
        for line in self.start(program, ["--gtest_list_tests"]).communicate()[0].decode().splitlines():
            name = line.split("#")[0].rstrip()
            if not name.startswith("  "):
                group = name
                continue
            test, started, flags = (program, group + name.strip()), time.monotonic(), os.memfd_create("reached")
            os.truncate(flags, size)
            process = self.start(program, [f"--gtest_filter={test[1]}"], reached=flags)
            process.communicate()
            if process.returncode == 0:
                self.seconds[test] = time.monotonic() - started
                for number in (n for n, flag in enumerate(os.pread(flags, size, 0)) if flag and n in self.mutants):
                    self.reaching[number].append(test)
            else:
                print(f"left out, since it fails alone, without a mutant: {program.name} {test[1]}", flush=True)
            os.close(flags)

    def judge(self, number, every, slow):
        """Finds the tests that kill the mutant. Unless `every` is true, it stops at the first one. Tests that take
        longer than `slow` seconds run one by one, and only if no other test kills the mutant. After a test that hangs
        no further test runs, because each may take as long."""
        quick = collections.defaultdict(list)
        for test in self.reaching[number]:
            if self.seconds[test] <= slow:
                quick[test[0]].append(test)
        groups = sorted(quick.values(), key=lambda tests: sum(self.seconds[test] for test in tests))
        alone = sorted((test for test in self.reaching[number] if self.seconds[test] > slow), key=self.seconds.get)
        killers = set()
        for tests in groups + [[test] for test in alone]:
            if not killers or every and number not in self.hung and tests in groups:
                killers |= self.failing(number, tests, every)
        self.killers[number] = killers

    def failing(self, number, tests, every):
        """Returns those of the tests that fail. All of them are in one program. A crash ends the program, so the
        remaining tests need another process."""
        program, left, failed = tests[0][0], [name for _, name in tests], set()
        while left:
            process = self.start(program, ["--gtest_filter=" + ":".join(left)] + ["--gtest_fail_fast"] * (not every), number)
            text = self.read(process, program, number)
            code = process.wait()
            failed |= set(re.findall(r"^\[  FAILED  \] ([\w./]+)(?:, where .*)? \(\d+ ms\)", text, re.M)) & set(left)
            if code in (0, 1) and re.search(r"^\[=+\] .* ran\. \(", text, re.M):
                break
            begun = [name for name in re.findall(r"^\[ RUN      \] ([\w./]+)", text, re.M) if name in left] or left[:1]
            failed.add(begun[-1])
            left = [name for name in left if name not in begun] if every and number not in self.hung else []
        return {(program, name) for name in failed}

    def read(self, process, program, number):
        """Returns the output of a test program. Kills the program if a test hangs or prints without end."""
        text, more = b"", b" "
        while more and len(text) < 1 << 24:
            silent = not select.select([process.stdout], [], [], SILENT_SECONDS)[0]
            begun = re.findall(rb"^\[ RUN      \] ([\w./]+)", text, re.M)
            if silent and begun:
                started = time.monotonic()
                self.start(program, ["--gtest_filter=" + begun[-1].decode()]).communicate()
                silent = not select.select([process.stdout], [], [], HANG_FACTOR * (time.monotonic() - started))[0]
            if silent:
                break
            more = os.read(process.stdout.fileno(), 65536)
            text += more
        if more:
            process.kill()
            self.hung.add(number)
        process.stdout.close()
        return text.decode(errors="replace")

    def write_score(self, out):
        rooms = collections.defaultdict(lambda: [0, 0, 0])
        for number, killers in self.killers.items():
            for room in "/".join(self.mutants[number].file.split("/")[:2]), "~ all":
                rooms[room] = [sum(pair) for pair in zip(rooms[room], (1, bool(killers), not self.reaching[number]))]
        for room, (count, killed, unreached) in sorted(rooms.items()):
            score = 100 * killed / count
            print(f"{room:16} {killed:5} of {count:5} killed: {score:5.1f} %; {unreached:4} not reached", file=out)

    def write_survivors(self, out):
        for number in sorted(n for n, killers in self.killers.items() if not killers):
            mutant, tests = self.mutants[number], len(self.reaching[number])
            print(f"{mutant.file}:{mutant.line}: {mutant.shown}  [{tests or 'no'} tests reach it]", file=out)

    def write_matrix(self, out):
        """A mutant that hangs doesn't count as killed by one test alone, because too few tests ran with it."""
        killed = collections.Counter(test for tests in self.killers.values() for test in tests)
        alone = collections.Counter(next(iter(tests)) for number, tests in self.killers.items()
                                    if len(tests) == 1 and number not in self.hung)
        print("killed  by it alone  seconds  test", file=out)
        for test in sorted(self.seconds, key=lambda t: (alone[t], killed[t], -self.seconds[t])):
            print(f"{killed[test]:6} {alone[test]:14} {self.seconds[test]:8.2f}  {test[0].name} {test[1]}", file=out)


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    add, output_file = parser.add_argument, argparse.FileType("w")
    add("--sample", type=int, default=10 ** 9, metavar="N", help="so many mutants, drawn at random; else all")
    add("--seed", type=int, default=1, help="of the sample")
    add("--minutes", type=float, default=1e9, help="begin no mutant after so many; the sample is then smaller")
    add("--only", default="", metavar="TEXT", help="only mutants in files whose path has this text")
    add("--survivors", type=output_file, metavar="FILE", help="to list the mutants that no test kills")
    add("--matrix", type=output_file, metavar="FILE", help="to list how many mutants each test kills, and kills alone: "
        "runs all tests on each mutant, not only up to the first that fails")
    add("--slow", type=float, default=1, metavar="SECONDS", help="longer tests run only if no other kills the mutant")
    add("--jobs", type=int, default=1)
    add("--scratch", type=pathlib.Path, default=HERE.parents[1] / "build/mutation", help="for the build, which is kept")
    options = parser.parse_args()
    scratch = options.scratch.resolve()
    if any(scratch.is_relative_to(hidden) for hidden in ("/tmp", "/dev/shm")):
        sys.exit("tests can't see a scratch folder below /tmp or /dev/shm")

    mutants, programs = build_mutants(scratch, options.jobs)
    print(f"{len(mutants)} mutants in {', '.join(program.name for program in programs)}", flush=True)
    run = Run(mutants, programs)
    numbers = [m.number for m in mutants if options.only in m.file]
    end = time.monotonic() + 60 * options.minutes

    def judge(number):
        started = time.monotonic()
        if started < end:
            run.judge(number, options.matrix is not None, options.slow)
            verdict = "hangs" if number in run.hung else "killed" if run.killers[number] else "SURVIVES"
            mutant = run.mutants[number]
            print(f"{verdict:8} {time.monotonic() - started:5.1f} s  {mutant.file}:{mutant.line}: {mutant.shown}", flush=True)

    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        list(pool.map(judge, random.Random(options.seed).sample(numbers, min(options.sample, len(numbers)))))
    run.write_score(sys.stdout)
    if options.survivors:
        run.write_survivors(options.survivors)
    if options.matrix:
        run.write_matrix(options.matrix)


if __name__ == "__main__":
    main()
