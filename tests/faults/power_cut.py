"""Shows what a power cut may leave of a run of the batch program. Records the system calls of runs, works out every
state in which a cut after each of them may leave the disk, and checks these states. Then it breaks recordings, by
leaving out an fsync for example, and checks that each fault is found.

The disk keeps what it has to keep, and no more:
- What is written to a file is kept when a later fsync of that file has returned. Until then each block of it may be on
  the disk or not, in any order, and the file may have any size that it had since its last fsync.
- A name is kept when a later fsync of its folder has returned. Until then it may lead to whatever it led to since the
  last fsync of the folder. So renames may be lost singly, and even in part: one name changed and the other not.
- An fsync of a file keeps none of its names, and an fsync of a folder keeps no file's data.
- An fsync keeps nothing of a file or folder that another thread was still changing when it began.
File systems keep more: ext4, XFS and Btrfs never do half of a rename.

Usage: power_cut.py BATCH_PROGRAM SMALL_WORLD BIG_WORLD LIST
"""

import collections
import itertools
import os
import random
import re
import shutil
import subprocess
import sys

BLOCK = 4096  # bytes that a disk writes as a whole
MOST_PIECES = 8  # of a file, for which every combination is tried; of more pieces
SAMPLES = 100  # combinations are picked at random
STRACE = ["strace", "-f", "-qq", "-xx", "-s", "99999999", "-o", "calls.txt", "-e", "trace=%desc,%file,%process,sync"]
# Calls that change neither names nor contents, or promise nothing.
HARMLESS = set("""access arch_prctl chmod execve exit faccessat faccessat2 fadvise64 fchmod fchmodat fchown fchownat fcntl
    fgetxattr fremovexattr fsetxattr fstat fstatfs getcwd getdents64 getxattr ioctl lstat munmap newfstatat poll ppoll
    pread64 readlink readlinkat stat statfs statx sync_file_range wait4""".split())
TORN, LOST, STRANGE = "OUTPUT is neither old nor new", "a block is in neither file", "another file appeared or changed"
TORN_REMOVED, FAILED, OLD = "the removed file is neither old nor new", "a failed run replaced a file", "old after the report"

Call = collections.namedtuple("Call", "name text args data result begin end")
Case = collections.namedtuple("Case", "name removed_path output removed world fault code outcome",
                              defaults=["other/gone.scp", b"old\n", b"old gone\n", "small", "", 0, "new"])


def folder_of(path):
    return os.path.dirname(path) or "."


def unhex(text):
    return bytes.fromhex(text.replace("\\x", ""))


def read_calls():
    """Returns the calls that did not fail. A change may have happened when its call began, all else when it ended."""
    calls, begun = [], {}
    for number, line in enumerate(open("calls.txt", encoding="ascii")):
        thread, text = line.rstrip("\n").split(maxsplit=1)
        begin = number
        if text.endswith("<unfinished ...>"):
            begun[thread] = number, text[:-len("<unfinished ...>")].rstrip(" ")
            continue
        if text.startswith("<... "):
            begin, head = begun.pop(thread)
            text = head + text[text.index(">") + 1:]
        match = re.fullmatch(r"(\w+)\((.*)\) += (\d+|\?)( .*)?", text)
        if match:
            name, text, result = match.group(1, 2, 3)
            data = b"".join(map(unhex, re.findall(r'"([^"]*)"', text)))
            args = [arg.strip('"') for arg in re.split(r", (?![^[{]*[]}])", text)]
            args = [os.fsdecode(unhex(arg)) if arg.startswith("\\x") else arg for arg in args]
            calls.append(Call(name, text, args, data, 0 if result == "?" else int(result), begin, number))
    return sorted(calls, key=lambda call: call.end if re.search("open|sync|dup|fcntl", call.name) else call.begin)


class Opened:
    """What descriptors lead to: a folder's path, or a file's number and a place in it."""

    def __init__(self, what):
        self.what, self.offset = what, 0


class Recording:
    """Turns calls into steps: ("write", FILE, OFFSET, BYTES), ("cut", FILE, SIZE), ("names", {PATH: FILE or None}),
    ("sync", FILE or FOLDER), and ("done",) when the program says that the run is complete. Files have numbers. Paths
    start at the folder of the run."""

    def __init__(self, calls, paths):
        self.names, self.numbers = {path: number for number, path in enumerate(paths)}, itertools.count(len(paths))
        self.opened, self.steps, self.ends = {}, [], {}
        for call in calls:
            self.add(call)

    def change(self, call, *step):
        self.steps.append(step)
        for what in map(folder_of, step[1]) if step[0] == "names" else [step[1]]:
            self.ends[what] = max(call.end, self.ends.get(what, 0))

    def name(self, call, names):
        self.names.update(names)
        self.change(call, "names", names)

    def path(self, folder, name):
        """Returns a path from the folder of the run, or the number of the open file that is meant."""
        meant = re.fullmatch(r"/(?:proc/\w+|dev)/fd/(\d+)", name) or name == "" and re.match(r"(\d+)", folder)
        if meant and int(meant[1]) in self.opened:
            return self.opened[int(meant[1])].what
        return os.path.relpath(os.path.join("." if folder == "AT_FDCWD" else self.opened[int(folder)].what, name), ".")

    def open(self, call, path):
        self.opened.pop(call.result, None)
        if "O_TMPFILE" in call.text:
            path = next(self.numbers)
        elif path.startswith(".."):
            return
        elif not os.path.isdir(path):
            if self.names.get(path) is None:
                self.name(call, {path: next(self.numbers)})
            path = self.names[path]
            if "O_TRUNC" in call.text:
                self.change(call, "cut", path, 0)
        self.opened[call.result] = Opened(path)

    def write(self, call, file):
        assert len(call.data) >= call.result
        offset = int(call.args[3]) if call.name == "pwrite64" else file.offset
        self.change(call, "write", file.what, offset, call.data[:call.result])
        if call.name != "pwrite64":
            file.offset += call.result

    def add(self, call):
        name, args = call.name, call.args
        here = self.opened.get(int(args[0])) if args[0].isdigit() else None
        pairs = zip(args[::2], args[1::2]) if re.search("at2?$", name) else (("AT_FDCWD", arg) for arg in args)
        paths = (self.path(*pair) for pair in pairs)
        if name in ("open", "openat", "openat2"):
            self.open(call, next(paths))
        elif name == "close":
            self.opened.pop(int(args[0]), None)
        elif name.startswith("dup") or "F_DUPFD" in call.text:
            self.opened[call.result] = here or Opened("..")
        elif name in ("read", "lseek") and here:
            here.offset = call.result + (here.offset if name == "read" else 0)
        elif name in ("write", "writev", "pwrite64") and here:
            self.write(call, here)
        elif name == "ftruncate":
            self.change(call, "cut", here.what, int(args[1]))
        elif name in ("fsync", "fdatasync", "sync", "syncfs"):
            kept = list(self.ends) if name.startswith("sync") else [here.what] if here else []
            self.steps += [("sync", what) for what in kept if self.ends.get(what, 0) <= call.begin]
        elif name in ("rename", "renameat", "renameat2", "link", "linkat"):
            old, new = next(paths), next(paths)
            file, replaced = self.names.get(old, old), self.names.get(new)
            gone = {} if "link" in name else {old: replaced if "RENAME_EXCHANGE" in call.text else None}
            self.name(call, {**gone, new: file})
        elif name in ("unlink", "unlinkat"):
            self.name(call, {next(paths): None})
        elif name == "exit_group" and args == ["0"] or name == "write" and b"Completed in" in call.data:
            self.steps.append(("done",))
        elif not (name in HARMLESS | {"read", "lseek", "write", "writev", "exit_group"}
                  or name.startswith("clone") and "CLONE_FILES" in call.text
                  or name == "mmap" and "PROT_WRITE, MAP_SHARED" not in call.text):
            sys.exit(f"FAILED: power_cut.py does not know the call {name}({call.text})")


class Disk:
    """Everything that a cut may leave after the steps so far."""

    def __init__(self, files):
        self.names = {path: [number] for number, path in enumerate(files)}  # what each may lead to; the last does now
        self.kept = collections.defaultdict(bytes, enumerate(files.values()))  # contents at the last fsync
        self.pieces = collections.defaultdict(list)  # what changed since: offset and bytes, or size and None
        self.possible = {}  # contents of files, worked out when they are wanted

    def do(self, kind, what=None, offset=0, data=b""):
        self.possible.pop(str(what), None)
        if kind == "names":
            for path, file in what.items():
                self.names.setdefault(path, [None]).append(file)
        elif kind == "cut":
            self.pieces[what].append((offset, None))
        elif kind == "write":
            ends = [0, *range(BLOCK - offset % BLOCK, len(data), BLOCK), len(data)]
            self.pieces[what] += [(offset + a, data[a:b]) for a, b in zip(ends, ends[1:])]
        elif kind == "sync":
            for path, files in self.names.items():
                if folder_of(path) == what:
                    del files[:-1]
            self.kept[what] = self.content(what, self.pieces.pop(what, []))

    def content(self, file, pieces, size=None):
        content = bytearray(self.kept[file])
        for offset, data in pieces:
            content += bytes(max(0, offset - len(content)))
            content[offset:None if data is None else offset + len(data)] = data or b""
        return bytes(content if size is None else content[:size].ljust(size, b"\0"))

    def contents(self, file):
        if str(file) not in self.possible:
            pieces = self.pieces[file]
            sizes = list(itertools.accumulate(
                pieces, lambda size, piece: max(size, piece[0] + len(piece[1])) if piece[1] is not None else piece[0],
                initial=len(self.kept[file])))
            if len(pieces) <= MOST_PIECES:
                choices = itertools.product(itertools.product((False, True), repeat=len(pieces)), sizes)
            else:
                choices = ((random.choices((False, True), k=len(pieces)), random.choice(sizes)) for _ in range(SAMPLES))
            self.possible[str(file)] = {self.content(file, itertools.compress(pieces, chosen), size)
                                        for chosen, size in choices}
        return self.possible[str(file)]

    def states(self):
        """Yields the contents of the files by path, but not those of temporary files, which do not matter."""
        for choice in itertools.product(*map(dict.fromkeys, self.names.values())):
            shown = {path: file for path, file in zip(self.names, choice)
                     if file is not None and not re.search(r"(^|/)quillmere-[^/]*\.tmp$", path)}
            for contents in itertools.product(*map(self.contents, shown.values())):
                yield dict(zip(shown, contents))


def complaint(state, files, new, outcome, done):
    """Returns what is wrong with a state, if anything."""
    (removed, old_removed, new_removed), (output, old_output, new_output) = (
        (state.get(path), files.get(path), content) for path, content in new.items())
    faults = {TORN: output not in (old_output, new_output), TORN_REMOVED: removed not in (old_removed, new_removed),
              LOST: output == new_output and removed == old_removed, STRANGE: {**state, **new} != {**files, **new},
              FAILED: outcome == "old" and removed == new_removed, OLD: done and output == old_output}
    return next((text for text, found in faults.items() if found), None)


def check(steps, files, new, outcome="new"):
    """Returns the first complaint, if any, and how many states were checked."""
    disk, done, count = Disk(files), False, 0
    for step in steps:
        disk.do(*step)
        done = done or step[0] == "done"
        for count, state in enumerate(disk.states(), count + 1):
            wrong = complaint(state, files, new, outcome, done)
            if wrong:
                return wrong, count
    return None, count


def read_files():
    return {os.path.relpath(os.path.join(folder, name)): open(os.path.join(folder, name), "rb").read()
            for folder, _, names in os.walk(".") for name in names if name != "calls.txt"}


def record(case, batch, texts):
    """Runs the program in a new folder. Returns its exit code, the files before and after, its calls and their steps."""
    shutil.rmtree("run", ignore_errors=True)
    os.makedirs("run/other")
    os.chdir("run")
    given = {"in.scp": texts[case.world], "list.lst": texts["list"], "out.scp": case.output,
             case.removed_path: case.removed}
    for path, content in given.items():
        if content is not None:
            with open(path, "wb") as file:
                file.write(content)
    files = read_files()
    fault = ["-e", f"inject={case.fault}"] if case.fault else []
    code = subprocess.run([*STRACE, *fault, batch, "--list", "list.lst", "--items", "equal", "--removed", case.removed_path,
                           "in.scp", "out.scp"], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL).returncode
    calls, after = read_calls(), read_files()
    recording = Recording(calls, files)
    disk = Disk(files)
    for step in recording.steps:
        disk.do(*step)
    there = {path: disk.content(held[-1], disk.pieces[held[-1]]) for path, held in disk.names.items()
             if held[-1] is not None}
    os.chdir("..")
    if there != after:
        sys.exit(f"FAILED: {case.name}: the recorded calls do not lead to the files that are there")
    return code, files, after, calls, recording


def broken(recording, files):
    """Yields recordings of programs with a fault: what it is, the complaint that is due, and the steps."""
    steps, output, removed = recording.steps, recording.names["out.scp"], recording.names["other/gone.scp"]
    old_output = list(files).index("out.scp")

    def without(*step):
        return [other for other in steps if other != step]

    def first(kind, *what):
        return next(i for i, step in enumerate(steps) if step[0] == kind and all(part in step[1] for part in what))

    removed_placed, output_placed = first("names", "other/gone.scp"), first("names", "out.scp")
    written = next(i for i, step in enumerate(steps) if step[:2] == ("write", output))
    early = steps[:output_placed] + steps[output_placed + 1:]
    swapped = list(steps)
    swapped[removed_placed], swapped[output_placed] = steps[output_placed], steps[removed_placed]
    in_place = [(step[0], old_output, *step[2:]) if output in step[1:2] else step for step in early]
    yield "no fsync of OUTPUT", TORN, without("sync", output)
    yield "no fsync of the removed file", TORN_REMOVED, without("sync", removed)
    yield "no fsync of the removed file's folder", LOST, without("sync", "other")
    yield "no fsync of OUTPUT's folder", OLD, without("sync", ".")
    yield "OUTPUT put in place first", LOST, swapped
    yield "OUTPUT put in place before it is written", TORN, early[:written] + [steps[output_placed]] + early[written:]
    yield "OUTPUT written in place", TORN, [("cut", old_output, 0), *in_place]
    yield "OUTPUT unlinked first", TORN, steps[:output_placed] + [("names", {"out.scp": None})] + steps[output_placed:]
    yield "reported before OUTPUT is in place", OLD, steps[:output_placed] + [("done",)] + steps[output_placed:]
    yield "another file left", STRANGE, steps + [("names", {"x.scp": output})]


def main():
    batch, *paths = map(os.path.abspath, sys.argv[1:])
    texts = dict(zip(("small", "big", "list"), (open(path, "rb").read() for path in paths)))
    failures, new_files = 0, {}

    def expect(what, expected, actual):
        nonlocal failures
        if expected != actual:
            failures += 1
            print(f"FAILED: {what}\n  expected: {expected}\n  actual:   {actual}")

    def run(case, find_faults=False):
        code, files, after, calls, recording = record(case, batch, texts)
        expect(f"exit code, {case.name}", case.code, code)
        new = new_files.setdefault(case.world, (after[case.removed_path], after["out.scp"]))
        new = dict(zip((case.removed_path, "out.scp"), new))
        wrong, count = check(recording.steps, files, new, case.outcome)
        expect(case.name, None, wrong)
        print(f"{case.name}: {count} states after {len(recording.steps)} steps")
        for what, due, steps in broken(recording, files) if find_faults and not wrong else []:
            wrong, count = check(steps, files, new)
            expect(f"{case.name}, {what}", due, wrong)
            print(f"  {what}: found in state {count}")
        return [call.name for call in calls]

    run(Case("a big world", world="big"), find_faults=True)
    calls = run(Case("a small world"), find_faults=True)
    for path, output, removed in itertools.product(("gone.scp", "other/gone.scp"), (b"old\n", None), (b"gone\n", None)):
        run(Case(f"{path}, {'old' if output else 'no'} OUTPUT, {'old' if removed else 'no'} removed file", path, output,
                 removed))
    last_block = calls.count("read") - 1  # the last read finds the end
    run(Case("SIGTERM", fault=f"read:signal=TERM:when={last_block}", code=130, outcome="old"))
    run(Case("a read that fails", fault=f"read:error=EIO:when={last_block}", code=1, outcome="old"))
    for number in range(1, calls.count("fsync") + 1):
        run(Case(f"fsync {number} fails", fault=f"fsync:error=EIO:when={number}", code=1, outcome="any"))
    sys.exit(1 if failures else 0)


main()
