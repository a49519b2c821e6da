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
- An fsync keeps nothing of a file that has no name when it returns.
Journaling file systems keep more: they never do half of a rename.

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
import types

BLOCK = 4096  # bytes that a disk writes as a whole
MOST_PIECES = 8  # of a file for which every combination of pieces is tried
SAMPLES = 100  # combinations tried for a file of more pieces: random, but the same in each run
STRACE = ["strace", "-f", "-qq", "-xx", "-s", "99999999", "-o", "calls.txt", "-e", "trace=%desc,%file,%process,sync"]
# Calls that change neither names nor contents, or promise nothing.
HARMLESS = set("""access arch_prctl chmod execve exit exit_group faccessat faccessat2 fadvise64 fchmod fchmodat fchown
    fchownat fcntl fgetxattr fremovexattr fsetxattr fstat fstatfs getcwd getdents64 getxattr ioctl lseek lstat munmap
    newfstatat poll ppoll pread64 read readlink readlinkat stat statfs statx sync_file_range wait4 write""".split())
TORN, TORN_REMOVED = "OUTPUT is neither old nor new", "the removed file is neither old nor new"
LOST, STRANGE = "a block is in neither file", "another file appeared or changed"
FAILED, OLD = "a file is new after a run without success", "OUTPUT is old after the report"
NOT_KEPT = "OUTPUT~ is torn, or does not hold the old OUTPUT although OUTPUT is new"

Call = collections.namedtuple("Call", "name text args data result begin end")


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


class Recording:
    """Turns calls into steps: ("write", FILE, OFFSET, BYTES), ("cut", FILE, SIZE), ("names", {PATH: FILE or None}),
    ("sync", FILE or FOLDER), and ("done",) when the program says that the run is complete. Files have numbers. Paths
    start at the folder of the run, which has to be the current one."""

    def __init__(self, calls, paths):
        self.names, self.numbers = {path: number for number, path in enumerate(paths)}, itertools.count(len(paths))
        self.opened = {}  # what descriptors lead to: a folder's path, or a file's number and a place in it
        self.steps, self.ends = [], {}
        for call in calls:
            self.add(call)

    def change(self, call, *step):
        self.steps.append(step)
        if step[0] == "names":
            self.names.update(step[1])
        for what in map(folder_of, step[1]) if step[0] == "names" else [step[1]]:
            self.ends[what] = max(call.end, self.ends.get(what, 0))

    def path(self, folder, name):
        """Returns a path from the folder of the run, or the number of the open file that is meant."""
        meant = re.fullmatch(r"/(?:proc/\w+|dev)/fd/(\d+)", name) or name == "" and re.match(r"(\d+)", folder)
        if meant and int(meant[1]) in self.opened:
            return self.opened[int(meant[1])].what
        return os.path.relpath(os.path.join("." if folder == "AT_FDCWD" else self.opened[int(folder)].what, name))

    def open(self, call, what):
        if "O_TMPFILE" in call.text:
            what = next(self.numbers)
        elif what.startswith(".."):
            return
        elif not os.path.isdir(what):
            if self.names.get(what) is None:
                self.change(call, "names", {what: next(self.numbers)})
            what = self.names[what]
            if "O_TRUNC" in call.text:
                self.change(call, "cut", what, 0)
        self.opened[call.result] = types.SimpleNamespace(what=what, offset=0)

    def add(self, call):
        name, args = call.name, call.args
        here = self.opened.get(int(args[0])) if args[0].isdigit() else None
        pairs = zip(args[::2], args[1::2]) if re.search("at2?$", name) else (("AT_FDCWD", arg) for arg in args)
        paths = itertools.starmap(self.path, pairs)
        if name in ("open", "openat", "openat2"):
            self.open(call, next(paths))
        elif name == "close":
            self.opened.pop(int(args[0]), None)
        elif here and (name.startswith("dup") or "F_DUPFD" in call.text):
            self.opened[call.result] = here
        elif here and name in ("read", "lseek"):
            here.offset = call.result + (here.offset if name == "read" else 0)
        elif here and name in ("write", "writev", "pwrite64"):
            self.change(call, "write", here.what, int(args[3]) if name == "pwrite64" else here.offset,
                        call.data[:call.result])
            here.offset += 0 if name == "pwrite64" else call.result
        elif name == "ftruncate":
            self.change(call, "cut", here.what, int(args[1]))
        elif name in ("fsync", "fdatasync", "sync", "syncfs"):
            kept = list(self.ends) if name.startswith("sync") else [here.what] if here else []
            self.steps += [("sync", what) for what in kept if self.ends.get(what, 0) <= call.begin
                           and (isinstance(what, str) or what in self.names.values())]
        elif name in ("rename", "renameat", "renameat2"):
            old, new = next(paths), next(paths)
            replaced = self.names.get(new) if "RENAME_EXCHANGE" in call.text else None
            self.change(call, "names", {old: replaced, new: self.names[old]})
        elif name in ("link", "linkat"):
            old, new = next(paths), next(paths)
            self.change(call, "names", {new: self.names.get(old, old)})
        elif name in ("unlink", "unlinkat"):
            self.change(call, "names", {next(paths): None})
        elif name == "exit_group" and args == ["0"] or name == "write" and b"Completed in" in call.data:
            self.steps.append(("done",))
        elif not (name in HARMLESS or name.startswith("clone") and "CLONE_FILES" in call.text
                  or name == "mmap" and "PROT_WRITE, MAP_SHARED" not in call.text):
            sys.exit(f"FAILED: power_cut.py does not know the call {name}({call.text})")


class Disk:
    """Everything that a cut may leave after the steps so far."""

    def __init__(self, files):
        self.names = {path: [number] for number, path in enumerate(files)}  # what each may lead to; the last does now
        self.kept = collections.defaultdict(bytes, enumerate(files.values()))  # contents at the last fsync
        self.pieces = collections.defaultdict(list)  # what changed since: offset and bytes, or size and None

    def do(self, kind, what=None, offset=0, data=b""):
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
        pieces, sizes = self.pieces[file], [len(self.kept[file])]
        for offset, data in pieces:
            sizes.append(offset if data is None else max(sizes[-1], offset + len(data)))
        if len(pieces) <= MOST_PIECES:
            choices = itertools.product(itertools.product((False, True), repeat=len(pieces)), sizes)
        else:
            pick = random.Random(1)
            choices = ((pick.choices((False, True), k=len(pieces)), pick.choice(sizes)) for _ in range(SAMPLES))
        return {self.content(file, itertools.compress(pieces, chosen), size) for chosen, size in choices}

    def states(self):
        """Yields the contents of the files by path, but not those of temporary files, which do not matter."""
        for choice in itertools.product(*map(dict.fromkeys, self.names.values())):
            shown = {path: file for path, file in zip(self.names, choice)
                     if file is not None and not re.search(r"(^|/)quillmere-[^/]*\.tmp$", path)}
            for contents in itertools.product(*map(self.contents, shown.values())):
                yield dict(zip(shown, contents))


def check(steps, files, new, outcome="new"):
    """Returns the first thing that is wrong in a state, if anything, and how many states were checked."""
    (removed_path, new_removed), (output_path, new_output) = new.items()
    old_removed, old_output, older = files.get(removed_path), files.get(output_path), files.get(output_path + "~")
    disk, done, count = Disk(files), False, 0
    for step in steps:
        disk.do(*step)
        done = done or step[0] == "done"
        for count, state in enumerate(disk.states(), count + 1):
            removed, output = state.get(removed_path), state.get(output_path)
            kept = state.pop(output_path + "~", None)
            wrong = {TORN: output not in (old_output, new_output),
                     STRANGE: {**state, **new, output_path + "~": older} != {output_path + "~": None, **files, **new},
                     NOT_KEPT: kept != older and kept != old_output or older and output == new_output and kept == older,
                     TORN_REMOVED: removed not in (old_removed, new_removed),
                     LOST: output == new_output and removed == old_removed,
                     OLD: done and output == old_output, FAILED: outcome == "old" and removed == new_removed}
            if any(wrong.values()):
                return next(text for text, is_so in wrong.items() if is_so), count
    return None, count


def read_files():
    return {os.path.relpath(os.path.join(folder, name)): open(os.path.join(folder, name), "rb").read()
            for folder, _, names in os.walk(".") for name in names if name != "calls.txt"}


def broken(steps, files, names):
    """Yields the steps of programs with a fault: what it is, what has to be found, and the steps."""
    old, output, removed = list(files).index("out.scp"), names["out.scp"], names["other/gone.scp"]
    removed_at, at = (i for i, step in enumerate(steps)
                      if step[0] == "names" and {"out.scp", "other/gone.scp"} & set(step[1]))
    placing = steps[at]
    written = next(i for i, step in enumerate(steps) if step[:2] == ("write", output))
    early = steps[:at] + steps[at + 1:]
    in_place = [(step[0], old, *step[2:]) if output in step[1:2] else step for step in early]
    for what, due, target in (("OUTPUT", TORN, output), ("the removed file", TORN_REMOVED, removed),
                              ("OUTPUT's folder", OLD, "."), ("the removed file's folder", LOST, "other")):
        yield f"no fsync of {what}", due, [step for step in steps if step != ("sync", target)]
    yield "OUTPUT put in place first", LOST, steps[:removed_at] + steps[removed_at + 1:at + 1] + [steps[removed_at]]
    yield "OUTPUT put in place before it is written", TORN, early[:written] + [placing] + early[written:]
    yield "OUTPUT written in place", TORN, [("cut", old, 0), *in_place]
    yield "OUTPUT removed first", TORN, steps[:at] + [("names", {"out.scp": None})] + steps[at:]
    yield "a report before OUTPUT is in place", OLD, steps[:at] + [("done",)] + steps[at:]
    yield "a file left", STRANGE, [*steps, ("names", {"x.scp": output})]


batch, *paths = map(os.path.abspath, sys.argv[1:])
texts = dict(zip(("small", "big", "list"), (open(path, "rb").read() for path in paths)))
new_files = {}
failures = 0


def expect(what, expected, actual):
    global failures
    if expected != actual:
        failures += 1
        print(f"FAILED: {what}\n  expected: {expected}\n  actual:   {actual}")


def run(what, removed_path="other/gone.scp", output=b"old\n", removed=b"gone\n", world="small", fault=None, code=0,
        outcome="new", break_it=False, older=None):
    """Checks a run in a new folder. Returns the names of its calls."""
    shutil.rmtree("run", ignore_errors=True)
    os.makedirs("run/other")
    os.chdir("run")
    given = {"in.scp": texts[world], "list.lst": texts["list"], "out.scp": output, removed_path: removed, "out.scp~": older}
    for path, content in given.items():
        if content is not None:
            with open(path, "wb") as file:
                file.write(content)
    files = read_files()
    arguments = ["--list", "list.lst", "--items", "equal", "--removed", removed_path, "in.scp", "out.scp"]
    arguments += ["--backup"] if older else []
    ended = subprocess.run(STRACE + (["-e", f"inject={fault}"] if fault else []) + [batch, *arguments],
                           stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    expect(f"exit code, {what}", code, ended.returncode)
    calls, after = read_calls(), read_files()
    recording = Recording(calls, files)
    os.chdir("..")
    disk = Disk(files)
    for step in [*recording.steps, *(("sync", what) for what in (".", "other", *recording.names.values()))]:
        disk.do(*step)
    expect(f"files at the end of the recording, {what}", after, *disk.states())

    new = new_files.setdefault(world, (after.get(removed_path), after.get("out.scp")))
    new = dict(zip((removed_path, "out.scp"), new))
    wrong, count = check(recording.steps, files, new, outcome)
    expect(what, None, wrong)
    print(f"{what}: {count} states after {len(recording.steps)} steps")
    for fault, due, steps in broken(recording.steps, files, recording.names) if break_it else []:
        wrong, count = check(steps, files, new)
        expect(f"{what}, {fault}", due, wrong)
        print(f"  {fault}: found in state {count}")
    return [call.name for call in calls]


run("--backup", older=b"older\n")
run("a big world", world="big", break_it=True)
calls = run("a small world", break_it=True)
for files in itertools.product(("gone.scp", "other/gone.scp"), (b"old\n", None), (b"gone\n", None)):
    run("{}, old OUTPUT {}, old removed file {}".format(*files), *files)
last_block = calls.count("read") - 1  # the last read finds the end
run("SIGTERM", fault=f"read:signal=TERM:when={last_block}", code=130, outcome="old")
run("a read that fails", fault=f"read:error=EIO:when={last_block}", code=1, outcome="old")
for old, number in itertools.product((b"old\n", None), range(1, calls.count("fsync") + 1)):
    run(f"old OUTPUT {old}, fsync {number} fails", output=old, fault=f"fsync:error=EIO:when={number}", code=1,
        outcome="any")
sys.exit(1 if failures else 0)
