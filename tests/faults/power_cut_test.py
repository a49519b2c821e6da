#!/usr/bin/python3
"""Shows what a power cut may leave of a run of the batch program. Records the system calls of runs, works out every
state in which a cut after each of them may leave the disk, and checks these states. Then it breaks recordings, by
leaving out an fsync for example, and checks that each fault is found.

What a disk may do is in docs/reliability.md, under "Power cuts".
Usage: power_cut_test.py FOLDER_OF_PROGRAMS SAMPLES
"""

import ast
import collections
import itertools
import os
import pathlib
import random
import re
import subprocess
import sys
import tempfile

BLOCK = 4096  # bytes that a disk writes as a whole
MOST_PIECES = 8  # of a file for which every combination of pieces is tried
SAMPLES = 100  # combinations tried for a file of more pieces: random, but the same in each run
STRACE = "strace -f -y -qq -s 99999999 -o calls.txt -e trace=%desc,%file,sync".split()
# Calls that change neither names nor contents, or promise nothing.
HARMLESS = set("""access close execve faccessat fadvise64 fchmod fchown fcntl fgetxattr fremovexattr fsetxattr fstat
    fstatfs getcwd ioctl lseek munmap newfstatat poll pread64 read readlink readlinkat statfs statx
    sync_file_range""".split())

# `opened` are the descriptors among the arguments with their paths, `texts` the texts among them.
Call = collections.namedtuple("Call", "name opened texts words result begin end")


def folder_of(path):
    return os.path.dirname(path) or "."


def read_calls():
    """Returns the calls that did not fail. A change may have happened when its call began, all else when it ended."""
    calls, begun = [], {}
    for number, line in enumerate(open("calls.txt", encoding="ascii")):
        thread, text = line.rstrip("\n").split(maxsplit=1)
        begin, head = begun.pop(thread, (number, ""))
        if text.endswith("<unfinished ...>"):
            begun[thread] = number, text[:-len("<unfinished ...>")].rstrip(" ")
            continue
        text = head + (text[text.index(">") + 1:] if head else text)
        match = re.fullmatch(r"(\w+)\((.*)\) += (\d+.*|\?)", text)
        if match:
            a_text = r'"(?:[^"\\]|\\.)*"'
            texts = [ast.literal_eval("b" + each) for each in re.findall(a_text, match[2])]
            words, descriptor = re.sub(a_text, "", match[2]), r"(\w+)<([^>]*)>"
            calls.append(Call(match[1], re.findall(descriptor, words), texts, words,
                              re.findall(descriptor, match[3]) or match[3].split()[0], begin, number))
    return sorted(calls, key=lambda call: call.end if re.search("open|sync|fcntl", call.name) else call.begin)


class Recording:
    """Turns calls into steps: ("write", FILE, OFFSET, BYTES), ("cut", FILE, SIZE), ("names", {PATH: FILE or None}),
    ("sync", FILE or FOLDER), and ("done",) when the program says that the run is complete. A file is called by its
    first path, or by the one that the system shows for a file without a name. Paths start at the folder of the run,
    which has to be the current one."""

    def __init__(self, calls, paths):
        self.names, self.opened = {path: path for path in paths}, {}  # what paths and descriptors lead to
        self.sizes, self.ends = collections.Counter(), collections.Counter()  # bytes written; ends of changes
        self.steps = []
        for call in calls:
            self.add(call)

    def change(self, call, *step):
        self.steps.append(step)
        if step[0] == "names":
            self.names.update(step[1])
        for what in map(folder_of, step[1]) if step[0] == "names" else [step[1]]:
            self.ends[what] = max(call.end, self.ends[what])

    def lead(self, path):
        """Returns what a path leads to."""
        return self.opened[path[14:]] if path.startswith("/proc/self/fd/") else self.names.get(path, path)

    def open(self, call):
        (number, path), = call.result
        path = os.path.relpath(path)
        if "O_CREAT" in call.words and self.names.get(path) is None:
            self.change(call, "names", {path: f"{path} of call {call.begin}"})
        self.opened[number] = self.lead(path)
        if "O_TRUNC" in call.words:
            self.change(call, "cut", self.lead(path), 0)

    def add(self, call):
        name, data = call.name, b"".join(call.texts)
        opened = [os.path.relpath(path) for _, path in call.opened]
        here = self.lead(opened[0]) if opened and not opened[0].startswith("..") else None
        paths = [text if text.startswith("/proc/") else os.path.relpath(os.path.join(folder, text))
                 for folder, text in zip(opened, map(os.fsdecode, call.texts))]
        if name == "openat":
            self.open(call)
        elif name == "write" and here:
            self.change(call, name, here, self.sizes[here], data[:int(call.result)])
            self.sizes[here] += int(call.result)
        elif name == "fsync":
            # It keeps nothing of a file or folder that another thread was still changing when it began, and nothing of
            # a file that has no name when it returns.
            if self.ends.get(here, 0) <= call.begin and (os.path.isdir(here) or here in self.names.values()):
                self.steps.append(("sync", here))
        elif name in ("linkat", "renameat", "renameat2", "unlinkat") and "RENAME_EXCHANGE" not in call.words:
            old = {} if name == "linkat" else {paths[0]: None}
            self.change(call, "names", old | {path: self.lead(paths[0]) for path in paths[1:]})
        elif name == "write":
            self.steps += [("done",)] if b"Completed in" in data else []
        elif name not in HARMLESS and (name != "mmap" or "PROT_WRITE, MAP_SHARED" in call.words):
            sys.exit(f"FAILED: this test does not know the call {call}")


class Disk:
    """Everything that a cut may leave after the steps so far."""

    def __init__(self, files):
        self.names = {path: [path] for path in files}  # what each may lead to; the last does now
        self.kept = collections.defaultdict(bytes, files)  # contents at the last fsync
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


def check(steps, files, new, stays_old=False):
    """Returns the first thing that is wrong in a state, if anything, and how many states were checked."""
    paths = [*new, "out.scp~"]
    old_removed, old_output, older = map(files.get, paths)
    new_removed, new_output = new.values()
    others = {path: content for path, content in files.items() if path not in paths}
    disk, done, count = Disk(files), False, 0
    for step in steps:
        disk.do(*step)
        done = done or step[0] == "done"
        for count, state in enumerate(disk.states(), count + 1):
            removed, output, kept = (state.pop(path, None) for path in paths)
            is_new = output == new_output
            for what, wrong in (("OUTPUT torn", not is_new and output != old_output),
                                ("another file", state != others),
                                ("OUTPUT~ torn", kept not in (older, old_output)),
                                ("OUTPUT~ not kept", is_new and older and kept == older),
                                ("removed file torn", removed not in (old_removed, new_removed)),
                                ("blocks lost", is_new and removed == old_removed),
                                ("not done", done and output == old_output),
                                ("new without success", stays_old and removed == new_removed)):
                if wrong:
                    return what, count
    return None, count


def broken(steps, output, removed):
    """Yields the steps of programs with a fault: what it is, what has to be found, and the steps."""
    removed_at, at = (i for i, step in enumerate(steps)
                      if step[0] == "names" and {"out.scp", "other/gone.scp"} & set(step[1]))
    early = steps[:at] + steps[at + 1:]
    in_place = [(step[0], "out.scp", *step[2:]) if output in step[1:2] else step for step in early]
    for what, due, target in (("OUTPUT", "OUTPUT torn", output), ("the removed file", "removed file torn", removed),
                              ("OUTPUT's folder", "not done", "."), ("the other folder", "blocks lost", "other")):
        yield f"no fsync of {what}", due, [step for step in steps if step != ("sync", target)]
    swapped = early[:removed_at] + early[removed_at + 1:at] + [steps[at], steps[removed_at]]
    yield "OUTPUT put in place first", "blocks lost", swapped
    yield "OUTPUT written in place", "OUTPUT torn", [("cut", "out.scp", 0), *in_place]
    yield "a report before OUTPUT is in place", "not done", steps[:at] + [("done",)] + steps[at:]
    yield "a file left", "another file", [*steps, ("names", {"x.scp": output})]


def expect(what, expected, actual):
    if expected != actual:
        sys.exit(f"FAILED: {what}\n  expected: {expected}\n  actual:   {actual}")


def run(what, removed_path="other/gone.scp", output=b"old\n", removed=b"gone\n", older=None, blocks=100, fault=None,
        code=0, stays_old=False, break_it=False):
    """Checks a run in a new folder. Returns its calls."""
    given = {"in.scp": worlds[blocks], "list.lst": list_file, "out.scp": output, removed_path: removed,
             "out.scp~": older}
    files = {path: content for path, content in given.items() if content is not None}
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        os.mkdir("other")
        for path, content in files.items():
            pathlib.Path(path).write_bytes(content)
        command = [*STRACE, *(["-e", f"inject={fault}"] if fault else []), programs + "/quillmere-batch",
                   *(["--backup"] if older else []), "--items", "equal", "--list", "list.lst",
                   "--removed", removed_path, "in.scp", "out.scp"]
        ended = subprocess.run(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        expect(f"exit code, {what}", code, ended.returncode)
        calls = read_calls()
        os.remove("calls.txt")
        after = {str(path): path.read_bytes() for path in pathlib.Path().rglob("*") if path.is_file()}
        recording = Recording(calls, files)
        os.chdir("/")
    disk = Disk(files)
    for step in [*recording.steps, *(("sync", what) for what in (".", "other", *recording.names.values()))]:
        disk.do(*step)
    expect(f"files at the end of the recording, {what}", [after], [*disk.states()])

    new = new_files.setdefault(blocks, (after.get(removed_path), after.get("out.scp")))
    new = dict(zip((removed_path, "out.scp"), new))
    wrong, count = check(recording.steps, files, new, stays_old)
    expect(what, None, wrong)
    print(f"{what}: {count} states after {len(recording.steps)} steps")
    names = map(recording.names.get, ("out.scp", "other/gone.scp"))
    for fault, due, steps in broken(recording.steps, *names) if break_it else []:
        wrong, count = check(steps, files, new)
        expect(f"{what}, {fault}", due, wrong)
        print(f"  {fault}: found in state {count}")
    return calls


if os.system("strace -o /dev/null true 2>/dev/null") != 0:
    print("SKIPPED: power cuts: because strace cannot trace here")
    sys.exit()
programs, samples = map(os.path.abspath, sys.argv[1:])
list_file = pathlib.Path(samples, "cleanup.lst").read_bytes()
# The big world is enough for the output to be written on a thread of its own.
worlds = {blocks: subprocess.check_output([programs + "/make_world", f"--blocks={blocks}"]) for blocks in (100, 12000)}
new_files = {}
run("--backup", older=b"older\n")
run("a big world", blocks=12000, break_it=True)
calls = run("a small world", break_it=True)
made = collections.Counter(call.name for call in calls)
opens = [call.words for call in calls if call.name == "openat"]
first, second = (number for number, text in enumerate(opens, 1) if "O_TMPFILE" in text)
step = second + 1 - first  # an open with a name follows one without that fails
named = run("named files", fault=f"openat:error=EOPNOTSUPP:when={first}..{first + step}+{step}")
expect("files without a name", [], [call for call in named if "O_TMPFILE" in call.words])
for files in itertools.product(("gone.scp", "other/gone.scp"), (b"old\n", None), (b"gone\n", None)):
    run("{}, old OUTPUT {}, old removed file {}".format(*files), *files)
last_block = made["read"] - 1  # the last read finds the end
run("SIGTERM", fault=f"read:signal=TERM:when={last_block}", code=130, stays_old=True)
run("a read that fails", fault=f"read:error=EIO:when={last_block}", code=1, stays_old=True)
for old, number in itertools.product((b"old\n", None), range(1, made["fsync"] + 1)):
    run(f"old OUTPUT {old}, fsync {number} fails", output=old, fault=f"fsync:error=EIO:when={number}", code=1)
