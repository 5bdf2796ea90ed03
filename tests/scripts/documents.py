#!/usr/bin/env python3
"""Plays every example of the documents from the documents' own text.

    documents.py play PROGRAM            all but the one below, on the display that is there
    documents.py play PROGRAM DOCUMENT   that one alone
    documents.py block DOCUMENT START    prints the code block of a document that begins so

A code block, and a command in backticks, belongs to the player in PLAYERS that stands under its document with the words that
the example begins with. An example without a player fails the test, and so does a player without an example: who writes
an example says here how it is played, by which other test, or why it cannot be. The players of a document run in their order,
in one folder of its own.
"""
import glob
import os
import re
import shutil
import subprocess
import sys
import tempfile
import time

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(os.path.dirname(HERE))
sys.path.insert(0, HERE)
import line

# A tool's verb alone is a mention, not an example.
COMMAND = re.compile(r"(\w+=\S+ )+\S|(quarlo --|(xvfb-run|printf|cp|grep|chmod|sudo|mt|gcc|g\+\+|\./\w+|\w+tool \w+) \S)")


def read(path):
    with open(os.path.join(ROOT, path), encoding="utf-8") as file:
        return file.read()


def blocks(document):
    """The code blocks of a document: lines set in by four, behind an empty line."""
    found = re.findall(r"(?:^|\n\n)((?:    .*\n|\n(?=    ))+)", read(document))
    return [re.sub("^    ", "", block, flags=re.M) for block in found]


def commands(document):
    """The commands that stand in backticks within the text."""
    text = re.sub(r"^    .*$", "", read(document), flags=re.M)
    return [span for span in re.findall(r"`([^`]+)`", text) if COMMAND.match(span)]


def block(document, start):
    return next(text for text in blocks(document) if text.startswith(start))


def dumped_bytes(text):
    """Pieces (place, bytes) of a hexadecimal dump; where a line says "...", what precedes it counts."""
    pieces = []
    for row in text.splitlines():
        words = re.sub(r"\|.*|\.\.\..*", "", row).split()
        if words and re.fullmatch("[0-9a-f]{8}", words[0]):
            pieces.append((int(words[0], 16), bytes.fromhex("".join(words[1:]))))
    return pieces


def write(path, data):
    os.makedirs(os.path.dirname(os.path.abspath(path)), exist_ok=True)
    with open(path, "wb") as file:
        file.write(data if isinstance(data, bytes) else data.encode())


def contents(path):
    with open(path, "rb") as file:
        return file.read()


def run(command, status=0, **variables):
    """Runs a shell command as it stands and returns what it printed on both outputs."""
    done = subprocess.run(["bash", "-euc", command], capture_output=True, text=True, errors="replace", timeout=240,
                          env={**os.environ, **variables}, check=False)
    output = done.stdout + done.stderr
    assert done.returncode == status, f"status {done.returncode} of: {command}\n{output}"
    return output


def script(text, status=0, **variables):
    write("play.qs", text)
    return run("quarlo --script play.qs", status, **variables)


def says(output, *lines):
    for each in lines:
        assert each in output, f"no {each!r} in\n{output}"


def drives(*names, **cartridges):
    """Virtual drives in the folder "drives"; a cartridge is given by its bytes."""
    for number, name in enumerate(names):
        write(f"drives/{name}.tap", cartridges.get(name, b""))
        write(f"drives/{name}.drive", f"model = {name}\nid = {number}\ncartridge = {name}.tap\n")
    os.environ["QUARLO_VIRTUAL_DRIVES"] = "drives"


def sample():
    if not os.path.exists("sample.tap"):
        run("tapetool sample sample.tap")
    return contents("sample.tap")


COPY_DIALOG = "press main.image-copy\n"


# ---- README.md ----------------------------------------------------------------------------------------------------------

def block_size(text):
    """What stands for ./run: the program as it is built."""
    write("run", "#!/bin/sh\nexec quarlo --script limit.qs\n")
    os.chmod("run", 0o755)
    write("limit.qs", 'expect line console "I/O will be limited to 1024k bytes per block."\n')
    drives()
    run(text)


def window_labels():
    """The labels of the tour's windows, from the program: {window: {label: control}}."""
    drives("left", "right", left=sample())
    output = script("""
        press main.image-copy\npress copy.output-tape\ndump-windows\npress output-drive.cancel
        press copy.input-tape\nselect input-drive.drives "*left*"\ndump-windows\npress input-drive.ok
        press copy.input-disk\ndump-windows\npress file-box.cancel
        press copy.input-tape\nselect input-drive.drives "*left*"\npress input-drive.ok
        answer-file probe.tpf\npress copy.output-disk\npress copy.start
        wait window input-continue 60\ndump-windows\npress input-continue.stop
        wait text copy.status "Complete" 60\npress copy.output-disk\ndump-windows\npress file-box.cancel
        press main.verify\npress main.tape-dump\nwait window verify 10\ndump-windows\n""")
    labels = {}
    for window, control, label in re.findall(r'^    ([\w-]+)\.([\w-]+) +button .*"(.*)"$', output, re.M):
        labels.setdefault(window, {})[bare(label)] = control
    return labels


def bare(label):
    return label.removesuffix("…").removesuffix("...")


class Tour:
    """Follows the steps of the tour: **press**, `choose`, *select*, "see"."""

    OPENED = {"image-copy": "copy", "verify": "verify", "tape-dump": "tape-dump"}

    def __init__(self):
        self.labels = window_labels()
        self.open = ["main"]
        self.script = ["wait window main 20"]

    def do(self, statement):
        self.script.append(statement)

    def enter(self, window):
        self.open.append(window)
        self.do(f"wait window {window} 60")

    def press(self, label, stops_next):
        window = next((each for each in reversed(self.open) if bare(label) in self.labels[each]), None)
        assert window, f"the tour presses {label!r}, which is a button of none of {self.open}"
        control = self.labels[window][bare(label)]
        self.do(f"press {window}.{control}")
        if window in ("input-drive", "output-drive", "file-box", "input-continue"):
            self.open.remove(window)
        elif window == "main":
            self.enter(self.OPENED[control])
        elif control.endswith("-disk"):
            self.enter("file-box")
        elif control.endswith("-tape") or control == "select-drive":
            self.enter("output-drive" if control == "output-tape" else "input-drive")
        elif control == "start" and stops_next:
            self.enter("input-continue")

    def choose(self, words, text):
        top = self.open[-1]
        assert words in ("select", "takes", "such as"), f"the tour does not say what to do with {text!r}"
        self.do(f'type file-box.name "{text}"' if top == "file-box" else f'select {top}.drives "*{text}*"')
        if words == "takes":
            self.do(f"press {top}.ok")
            self.open.pop()

    def see(self, words, text):
        if words == "shows":
            self.do(f'wait text {self.open[-1]}.status "{text}" 120')
        else:
            self.do(f'wait console "{text}" 120')

    def step(self, text):
        token = r'\*\*(?P<press>[^*]+)\*\*|\*(?P<format>\w+)\*|`(?P<choose>[^`]+)`|"(?P<see>[^"]+)"|[Cc]lose the (?P<close>\w+)'
        found = list(re.finditer(token, text))
        for at, each in enumerate(found):
            words = re.search(r"(such as|\w+|)\W*$", text[:each.start()])[1]
            if each["press"]:
                self.press(each["press"], at + 1 < len(found) and found[at + 1]["press"] == "Stop")
            elif each["choose"]:
                self.choose(words, each["choose"])
            elif each["format"]:
                self.do(f'select {self.open[-1]}.format "{each["format"]}"')
            elif each["see"]:
                self.see(words, each["see"])
            else:
                self.do(f"press {each['close']}.close")
                self.open.remove(each["close"])


def tour():
    tale = Tour()
    steps = read("README.md").split("## Five minutes without hardware")[1].split("\n## ")[0]
    steps = re.findall(r"^\d+\. ((?:.|\n(?=   ))*)", steps, re.M)
    assert len(steps) == 7, steps
    drives("left", "right", left=sample())  # as ./run makes them, which the first step tells of
    for name in ("left", "right"):
        write(f"drives/{name}.drive", contents(f"drives/{name}.drive").replace(b"model = ", b"vendor = VIRTUAL\nmodel = "))
    for text in steps[1:]:
        tale.step(re.sub(r"\s+", " ", re.sub(r"!\[.*\)", "", text)))
    script("\n".join(tale.script) + '\nwait line tape-dump-window "*SAMPLE LINE 1*" 30\n')
    output = run("tapetool compare drives/left.tap drives/right.tap || true")
    assert output.startswith("equal"), output


# ---- docs/scripts.md ----------------------------------------------------------------------------------------------------

def night(text):
    drives("one", one=sample())
    write("night.qs", text)


def night_fails(text):
    lines = text.splitlines()
    os.mkdir("empty")
    says(run("quarlo --script night.qs", 1, QUARLO_VIRTUAL_DRIVES="empty"), lines[1])
    says(run("quarlo --script night.qs", 1, QUARLO_TAPE_FAULT="read:1+:EIO"), lines[0])
    run("rm -f line-1201.tpf")


def night_leaves_out(_):
    """The last expectation finds a block that is left out, though the job is complete."""
    run("cp sample.tap drives/one.tap && tapetool badblock drives/one.tap 5")
    says(run("quarlo --script night.qs", 1), ":13: console has the line", "Error reading tape on drive")
    run("rm line-1201.tpf && cp sample.tap drives/one.tap")


def night_runs(text):
    run("rm -f line-1201.tpf\n" + text)
    assert os.path.getsize("line-1201.tpf") > 326160


def stays_open(text):
    """A script that ends with "stay": the program is ended when it has told its windows."""
    write("stay.qs", text)
    with subprocess.Popen(["quarlo", "--script", "stay.qs"], stdout=subprocess.PIPE, text=True) as program:
        told = ""
        while "copy.status" not in told:
            told += program.stdout.readline()
        assert program.poll() is None
        time.sleep(1)  # for the statement "stay" itself
        program.terminate()
        program.communicate(timeout=60)
    says(told, "copy.start", '"Idle"')


def shows(text):
    """A script with variables, and the command that gives them."""
    if not text.startswith("quarlo"):
        return write("show.qs", text)
    write("show.qs", blocks("docs/scripts.md")[blocks("docs/scripts.md").index(text) + 1])
    says(run(text), "half way\n")


def overwrites(text):
    script(COPY_DIALOG + text + 'wait text copy.output-name "*line-1201.tpf" 5\n')


def by_hand(text):
    run("mkdir -p ~/data && cp line-1201.tpf ~/data")
    script(COPY_DIALOG + text + 'wait text copy.input-name "*line-1201.tpf" 5\n')


def statements_of_tables():
    """Every statement that a table of the page shows is one: a script is read whole before it is played."""
    page = read("docs/scripts.md").split("\n## Actions\n")[1]
    statements = [row.replace("\\|", "|") for row in re.findall(r"^\| `([^`]+)` \|", page, re.M)]
    assert len(statements) > 35, statements
    script("quit\n" + "\n".join(statements), DRIVES="drives")


# ---- docs/jobs.md -------------------------------------------------------------------------------------------------------

def reels():
    """Three drives as the page has them, the sample in the first."""
    drives("a", "b", "c", a=sample())
    for name, reel in (("a", 100), ("b", 200), ("c", 300)):
        text = contents(f"drives/{name}.drive").decode().replace(f"model = {name}", f"vendor = ACME\nmodel = REEL {reel}")
        write(f"drives/{name}.drive", text)
    os.environ["QUARLO_VIRTUAL_DRIVES"] = os.path.abspath("drives")


def jobs_listed(text):
    listed = run(text)
    says(listed, *re.findall(r"^\| `([\w-]+)` \| [^|]+ \|$", read("docs/jobs.md").split("## Drives")[0], re.M))


def job(text):
    reels()
    says(run(text), "3 files copied.\n")


def jobs_played(text):
    import field
    line.make("line.sgy")
    write("inlines.txt", "1010 - 1020\n")
    write("corners.txt", "4\n1010 0\n1020 0\n1020 9999\n1010 9999\n")
    os.mkdir("line-1203")
    for command in text.strip().splitlines():
        if "segd" in command:
            field.cartridge("drives/a.tap", (101, 102))
        says(run(command), " ended at ")
    assert len(glob.glob("line-1203/*.sgd")) == 2
    assert len(line.read("part.sgy")[1]) + len(line.read("outside.sgy")[1]) == len(line.read("line.sgy")[1])


def job_refuses(text):
    reels()
    says(run("quarlo --job tape-to-disk input=0 output=line-1201.tpf", 1), text)


def by_the_clock(text):
    reels()
    os.mkdir("data")
    run(text.split(None, 5)[5].replace("/data/1201", "data").replace("\\%", "%"))
    [made] = glob.glob("data/*.tpf")
    assert contents(made) == contents("line-1201.tpf")
    says(contents("data/job.log").decode(), "3 files copied.")


def from_afar(text):
    reels()
    command = re.search("'(.*)'", text)[1].replace("/data/1201", "data")
    says(run(f"(sleep 2; echo stop) | script -qec '{command}' /dev/null"), "or type stop:", "1 tape copied.")


def own_job(text):
    write(".local/share/quarlo/jobs/to-tape.qs", text)
    reels()
    says(run("HOME=$PWD quarlo --job to-tape input=line-1201.tpf output=1"), "Byte comparison succeeded.")


# ---- docs/virtual-drives.md ---------------------------------------------------------------------------------------------

def drives_are_used(text):
    """Where the program is started for the user's hands, a script stands for them."""
    write("two.qs", 'press main.image-copy\npress copy.input-tape\nexpect rows input-drive.drives 2\n')
    assert text.rstrip().endswith(" quarlo")
    run(text.rstrip() + " --script two.qs")


def listed(text):
    [(_, first), (_, second), (_, third)] = dumped_bytes(text)
    write("example.tap", first + second + third)
    says(run("tapetool list example.tap"), "3 bytes x 1\n", "2 bytes x 1  UNREADABLE\n", "mark\nend\n")


def tool_verbs(text):
    for row in text.strip().splitlines():
        command = re.match(r"tapetool \w+( [A-Z]{2,})+", row)[0]
        run(command.replace("CARTRIDGE", "new.tap" if "blank" in command else "tapes/line1.tap"))


def no_fault_complaint(text):
    output = run(f"export {text}\nquarlo --script two.qs", QUARLO_VIRTUAL_DRIVES="tapes")
    assert "is no fault" not in output, output


# ---- docs/dialogs.md ----------------------------------------------------------------------------------------------------

def rows_of_dialogs():
    """{window: {control: (label, what it holds at first)}} as the page has it. A window has the name of its picture."""
    dialogs = {}
    for section in read("docs/dialogs.md").split("\n## ")[1:]:
        names = re.findall(r"^!\[.*\]\(images/(.*)\.png\)", section, re.M) or ["-test"]
        rows = dialogs.setdefault("main" if names[0] == "start" else names[0], {})
        for label, controls, first in re.findall(r"^\| ([^|]+) \| (`[^|]+`) \|[^|]*\| *([^|]*?) *\|$", section, re.M):
            for control in re.findall("`(.+?)`", controls):
                rows[control] = (label, first)
    return dialogs


def dialogs_are_told():
    """Every field of every dialog is on the page, with its label and with what it holds at first; every picture is taken."""
    os.mkdir("pictures")
    told, missing = rows_of_dialogs(), set()
    shown = run(f"{ROOT}/docs/images/take $BUILD --documents pictures")
    pictures = set(os.listdir("pictures"))
    assert pictures == {path for path in os.listdir(ROOT + "/docs/images") if path.endswith(".png")}, pictures
    seen = set()
    for window, control, kind, state, text in re.findall(
            r'^    ([a-z-]+)\.([\w-]+) +([a-z-]+) +(\[.\])?(?: *(?:disabled|hidden))* *"(.*)"$', shown, re.M):
        control = re.sub(r"^(primary|secondary)-\d+$", r"\1-1", control)
        if (window, control) in seen or kind in ("text", "meter") or control in ("ok", "cancel", "close"):
            continue
        seen.add((window, control))
        common = told["-test"] if window.endswith("-test") else {}
        label, first = told.get(window, {}).get(control) or common.get(control, ("", ""))
        if not label:
            missing.add(f"{window}.{control} is not on the page")
        elif kind in ("button", "check", "radio") and text.rstrip(" ▲▼") != label:
            missing.add(f"{window}.{control} has the label {text!r}")
        at_first = {"check": ("off", "on")[state == "[x]"], "radio": ("", "chosen")[state == "[x]"],
                    "edit": text or "empty", "option": text}.get(kind, first)
        if at_first != first and window != "file-box":
            missing.add(f"{window}.{control} is {at_first!r} at first")
    rows = {(window, control) for window in told if window != "-test" for control in told[window]}
    missing |= {f"there is no {window}.{control}" for window, control in rows - seen}
    assert not missing, "\n".join(sorted(missing))


# ---- docs/tutorials.md --------------------------------------------------------------------------------------------------

def night_of_copies(text):
    run(f"{text}\nmv night.txt first.txt")
    assert contents("first.txt").decode() == "line-1201: copied and compared\nline-1202: copied and compared\n"
    run("tapetool badblock tapes/line-1202.tap 5 && rm *.tpf && " + text)
    says(contents("night.txt").decode(), "line-1201: copied", "line-1202: look into line-1202.log")


def practice_drives(text):
    run(text)
    os.environ["QUARLO_VIRTUAL_DRIVES"] = os.path.abspath("tapes")


def month(text):
    """Field file 901 as SEG D, and the recording of the tests as SEG Y, stand for the user's own."""
    import field
    write("month.segd", b"".join(field.blocks(901)))
    shutil.copy(ROOT + "/docs/examples/instrument-test.qs", ".")
    says(run(text), "1 record, 130 traces")


def month_as_segy(text):
    write("files.txt", text)
    write("month.txt", block("docs/instrument-tests.md", "# month.txt"))
    run("""kyrtool record tests.kyr month.txt && quarlo --job reformat from=dataset input=tests.kyr to=segy output=month.sgy""")


def part_is_indexed(text):
    write("index.txt", run(text))


# ---- the data of the other pages ----------------------------------------------------------------------------------------

def dump_formats():
    """The file dump shows the page's bytes as its blocks do."""
    page = read("docs/dump-formats.md")
    write("forty", bytes.fromhex(re.search(r"^`((?:[0-9a-f]{2}\s+)+[0-9a-f]{2})`", page, re.M)[1]))
    section = page.split("## The same forty bytes")[1].split("\n## ")[0]
    shown = re.findall(r"^([A-Z][^\n]*(?:\n[^\n ][^\n]*)*)\n\n((?:    .*\n)+)", section, re.M)
    play = ["press main.file-dump", "answer-file forty", "press file-dump.open-file"]
    for at, (words, _) in enumerate(shown):
        name = re.match(r"Hexadecimal|ASCII|EBCDIC|Short Integer|Long Integer|IBM Float|IEEE Float|Unsigned", words)[0]
        play.append("press file-dump.unsigned" if name == "Unsigned" else f'select file-dump.format "{name}"')
        play += ["press file-dump.signed"] if "signed and" in words else []
        play += ["type file-dump.go-to-byte 0", "press file-dump.move-to-byte", "press file-dump.read", f"copy-lines file-dump-window shown{at}"]
    script("\n".join(play))
    for at, (words, text) in enumerate(shown):
        wanted = [row[4:].rstrip() for row in text.splitlines()]
        lines = [row.rstrip() for row in contents(f"shown{at}").decode(errors="replace").splitlines()]
        assert any(lines[i:i + len(wanted)] == wanted for i in range(len(lines))), (words, wanted, lines)
    return len(shown)


def dataset(text):
    data = bytearray()
    row = b""
    for place, piece in dumped_bytes(text):
        while len(data) < place:
            data += row
        row = piece
        data += piece
    write("example.kyr", bytes(data))
    says(run("kyrtool check example.kyr"), "live 1\n", "never-written 1\n", "lost 0\n")


def manual_dataset():
    text = re.search(r"^\.nf\n(.*?)^\.fi", read("packaging/kyrtool.1.in"), re.M | re.S)[1].replace("\\-", "-")
    write("line.txt", text)
    says(run("kyrtool make line.kyr line.txt && kyrtool dump line.kyr"), "trace 1 2 field-file=901 channel=2 kill-flag=16\n")


def session(text):
    """Commands behind a "$", each with what it prints."""
    shutil.copy(os.path.join(ROOT, "docs/examples/instrument-test.qs"), ".")
    for command, printed in re.findall(r"^\$ (.*)\n((?:(?!\$ ).*\n)*)", text, re.M):
        output = run(command).replace("\r", "")
        assert output == printed, f"{command}\n{output}"


def recording(text):
    """The recordings of the page: whether their signals are right is seen by the tests that measure them."""
    run(text)
    says(run("kyrtool check month.kyr"), "live 94\n", "dead 2\n", "lost 0\n")
    run(text.replace("month", "steps"))
    says(run("kyrtool headers steps.kyr 9 4"), "trace 9 4 field-file=9 trace-number=36 channel=4\n")


def manual_recording():
    text = re.findall(r"^\.nf\n(.*?)^\.fi", read("packaging/kyrtool.1.in"), re.M | re.S)[1].replace("\\-", "-")
    write("manual.txt", text)
    says(run("kyrtool record manual.kyr manual.txt && kyrtool headers manual.kyr"), "kill-flag=16\n", "trace 2 4 field-file=902 ")


def left_in(path, text):
    """A text of the page stands in a file that its script left; blanks at the ends of lines are not looked at."""
    left = [row.rstrip() for row in contents(path).decode().splitlines()]
    wanted = [row.rstrip() for row in text.splitlines()]
    assert any(left[i:i + len(wanted)] == wanted for i in range(len(left))), (wanted, left)


def tape_image(text):
    """The file that the copy makes of the page's tape."""
    drives("one", one=b"\5\0\0\0Hello\0\5\0\0\0" + bytes(4))
    script(block("docs/scripts.md", "# one cartridge"))
    data = contents("line-1201.tpf")
    assert len(data) == 165
    for place, piece in dumped_bytes(text):
        assert data[place:place + len(piece)] == piece, (hex(place), piece, data[place:place + len(piece)])


def index_record(text):
    import struct
    data = bytes.fromhex(text)
    assert struct.unpack("<ii", data[:8]) == (3200, 400)
    assert struct.unpack("<ddddi", data[8:]) == (2.0, 1.0, 0.0, 3600.0, 6240)


def list_keeps(text):
    """The in-lines of the list are kept, the remark is one, and nothing is warned of."""
    line.make("line.sgy", first_line=10080)
    write("inlines.txt", text)
    run("quarlo --job segy-copy input=line.sgy list=inlines.txt output=part.sgy")
    assert {line.field(trace, 189) for trace in line.read("part.sgy")[1]} == {10090, 10095}


def polygon_keeps(text):
    line.make("line.sgy", first_line=10080, first_cdp=2140)
    write("corners.txt", text)
    script(COPY_DIALOG + """
        select copy.format "SEG Y"\npress copy.parameters\npress segy.range-limit\npress segy.limit-by-polygon
        press segy.limit-settings\npress segy-polygon.from-file\npress segy-polygon.inclusion
        answer-file corners.txt\npress segy-polygon.choose-file
        type segy-polygon.primary-byte 189\nselect segy-polygon.primary-type "4 byte integer"
        type segy-polygon.secondary-byte 21\nselect segy-polygon.secondary-type "4 byte integer"
        press segy-polygon.ok\npress segy.ok
        answer-file line.sgy\npress copy.input-disk\nanswer-file polygon.sgy\npress copy.output-disk
        press copy.start\nwait console "SEG Y copy ended at *" 60\nexpect text copy.status "Complete"
        expect no-line console "*\\\\*\\\\**"\n""")
    wanted = [t for t in line.read("line.sgy")[1] if line.field(t, 189) >= 10090 and line.field(t, 21) >= 2150]
    assert line.read("polygon.sgy")[1] == wanted


def drive_rows(text):
    rows = text.rstrip("\n").split("\n")
    for row in rows:
        host, number, vendor, model = re.match(r"  (\d+):(\d+)   (\w+) (.*?)(?: \(offline\))?$", row).groups()
        drives(f"d{number}")
        loaded = "" if row.endswith("(offline)") else f"cartridge = d{number}.tap\n"
        write(f"drives/d{number}.drive", f"vendor = {vendor}\nmodel = {model}\nhost = {host}\nid = {number}\n{loaded}")
    script(COPY_DIALOG + "press copy.input-tape\n" + "".join(f'expect row input-drive.drives "{r}"\n' for r in rows))


def console_is_searched(text):
    write("console.txt", "Input blocks read: 5\n  *** Error reading tape on drive \"one\".\n  ** A warning.\n")
    assert run(text).splitlines() == ['2:  *** Error reading tape on drive "one".', "3:  ** A warning."]


def panel(command, **variables):
    """Width and brightness of the panel."""
    write("panel.qs", "wait window main 10\nsleep 0.3\nscreenshot main panel.png\nquit\n")
    run(command.rstrip() + " --script panel.qs", **variables)
    return [float(number) for number in run("identify -format '%w %[fx:mean]' panel.png").split()]


def looks_are_chosen(text):
    width, brightness = panel("quarlo")
    if "=" in text:
        chosen = panel(text)
    else:
        write("resources", text)
        chosen = panel("quarlo", XENVIRONMENT="resources")
    assert chosen[0] > 1.4 * width and chosen[1] < 0.3 < 0.8 < brightness, (chosen, width, brightness)


def home_is_made(text):
    run("mkdir -p ~/tapes/1201")
    write("end.qs", "expect window console\n")
    run(text + " --script end.qs")
    run("test -s ~/tapes/1201/console.txt")


def module_commands(text):
    os.symlink(ROOT, "QUARLO-SOURCE")
    os.makedirs("home/lib")
    shutil.copy(os.path.join(ROOT, "plugins/ioexample.cpp"), "iomine.cpp")
    main_phase = block("docs/format-modules.md", "int TMainPhase")
    write("iomine.c", '#include <string.h>\n#include "plugins/kyrmodule.h"\nvoid GetTuDllIdentifier(char* name, int* id) {\n'
                      '  strcpy(name, "Mine");\n  *id = 90;\n}\n' + main_phase)
    for command in text.strip().splitlines():
        run(command, KYRHOME="home")
        says(run("nm -D home/lib/iomine.so"), " T GetTuDllIdentifier", " T TMainPhase")


def modules_are_copied(text):
    os.symlink(os.environ["BUILD"], "build")
    run(text, KYRHOME="home")


def library_calls(text):
    """The page's calls compile, each "..." being a statement of the reader's."""
    code = re.sub(r"\) \.\.\.", ") {}", text)
    given = "int records, int traces, int samples, float interval, Link input, ProcessRecordPtr record" * ("NewOutput" in text)
    given += ", std::vector<float> data, TraceInfo header" * ("NewOutput" in text)
    write("calls.cpp", '#include <vector>\n#include "libkyr/datasets.h"\n#include "libkyr/process.h"\n'
                       '#include "libkyr/properties.h"\n' + f"int calls({given}) {{\n"
                       + ("Link link;\n" if "NewOutput" in text else "") + code + "\nreturn 0;\n}\n")
    run(f"g++ -std=c++20 -fsyntax-only -Wall -Wextra -I {ROOT} calls.cpp")


def rooms(text):
    for name in re.findall(r"^[\w/]+/|(?<=/ )\w+/", text, re.M):
        assert os.path.isdir(os.path.join(ROOT, name)), name


def arrows(text):
    table = open(os.path.join(ROOT, ".ci/fences"), encoding="utf-8").read()
    for name in re.findall(r"[\w]+(?:/\w+)?(?=[\s,<|;]|$)", re.sub(r"xvt/probe\.h|quarlo\.cpp| on ", " ", text)):
        assert re.search(rf'^    "(quarlo/|quarlo/tapelib/)?{name}":', table, re.M), name


def benches(text):
    """The second line, with next to no data, for a bench that no test plays is lost: nothing is timed."""
    command = text.splitlines()[1].replace("build-test/plain", '"$BUILD"')
    table = run(f"{ROOT}/{command} --runs 1 --size 1")
    assert "\ntape image to tape image, 64 KB blocks, tmpfs " in table, table


def prints_288(text):
    assert run(text) == "288\n"


# ---- which example is whose ---------------------------------------------------------------------------------------------

class By:
    """Another test plays the example: it names the document."""

    def __init__(self, test):
        self.test = test

    def check(self, document):
        assert document in read(self.test), f"{self.test} does not name {document}"


class Unplayed:
    """Why an example is not played."""

    def __init__(self, why):
        self.why = why


DEVICE = "needs a genuine drive"
PLAYERS = {
    "README.md": [
        ("", tour),
        ("./run", Unplayed("installs packages and builds; what it starts is the tour")),
        ("./test", Unplayed("runs this test")),
        ("quarlo --job", lambda text: says(run(text), "3 files copied.\n")),
        ("ST_BUFFER=1024 ./run", block_size),
        ("sudo usermod", Unplayed("changes the machine's users")),
        ("mt -f", Unplayed(DEVICE)),
    ],
    "docs/dump-formats.md": [("00000 ", dump_formats)],
    "docs/file-scan.md": [
        ("quarlo --job", By("tests/scripts/jobs_datasets.sh")),
        ("File scan of", By("tests/scripts/jobs_datasets.sh")),
    ],
    "docs/format-idx.md": [
        ("00000000 ", By("tests/scripts/jobs_datasets.sh")),
        ("import struct", By("tests/scripts/jobs_datasets.sh")),
    ],
    "docs/format-kyr.md": [
        ("lane = ", By("tests/kyr/dataset_example_test.cpp")),
        ("00000000", dataset),
        ("", manual_dataset),
    ],
    "docs/format-modules.md": [
        ("g++ ", module_commands),
        ("int TMainPhase", By("tests/scripts/documents.py")),
        ("cp build", modules_are_copied),
        ("# interval", By("tests/common/tprcstep_test.cpp")),
    ],
    "docs/format-segy-description.md": [
        ("Quarlo SEG Y format", By("tests/formats/segyformat_test.cpp")),
        ("mine.txt, line 12", By("tests/formats/segyformat_test.cpp")),
    ],
    "docs/format-tpf.md": [("00000000", tape_image)],
    "docs/hacking.md": [("cmake --build", Unplayed("how this very test is built")), ("quarlo/ ", rooms), ("libkyr | ", arrows), ("bench/run", benches)],
    "docs/instrument-tests.md": [
        ("# month.txt", lambda text: write("month.txt", text)),
        ("quarlo --job", By("tests/scripts/jobs_datasets.sh")),
        ("$ ", session),
    ],
    "docs/installing.md": [
        ("packaging/check", Unplayed("needs root, the network and a quarter of an hour")),
        ("sudo apt-get", Unplayed("changes the machine")),
        ("cmake -G Ninja", By("tests/scripts/reformat.sh")),
    ],
    "docs/jobs.md": [
        ("quarlo --jobs", jobs_listed),
        ("quarlo --job tape-to-disk", job),
        ("quarlo --job disk-to-tape", jobs_played),
        ("quarlo: tape-to-disk", job_refuses),
        ("30 22", by_the_clock),
        ("ssh", from_afar),
        ("#: title", own_job),
        ("KYRHOME=", lambda text: run(text.replace("~/tapes/1201", ".").replace("...", "--jobs"))),
    ],
    "docs/kills-report.md": [
        ("traces 6", lambda text: write("survey.txt", text)),
        ("press ", lambda text: write("kills.qs", text)),
        ("kyrtool record", run),
        ("quarlo --headless", run),
        ("Field File", lambda text: left_in("kills.txt", text)),
    ],
    "docs/libkyr.md": [("const ProcessRecordPtr", library_calls), ("SetNumberOfOutputs", library_calls)],
    "docs/dialogs.md": [("", dialogs_are_told)],
    "docs/messages.md": [("quarlo --help", run), ("mt ", Unplayed(DEVICE))],
    "docs/merge.md": [("quarlo --job", By("tests/scripts/jobs_datasets.sh"))],
    "docs/reformat.md": [
        ("quarlo --headless", By("tests/scripts/reformat.sh")),
        ("quarlo --job", By("tests/scripts/jobs_segd.sh")),
    ],
    "docs/scripts.md": [
        ("# one cartridge", night),
        ("script night.qs", night_fails),
        ("", lambda: night_leaves_out(None)),
        ("quarlo --script night.qs", night_runs),
        ("quarlo --headless", night_runs),
        ("quarlo --script show.qs", shows),
        ("print $text", shows),
        ("wait window main", stays_open),
        ("answer-file", overwrites),
        ("press copy.input-disk", by_hand),
        ("", statements_of_tables),
    ],
    "docs/segd-copy.md": [
        ("101", By("tests/scripts/jobs_segd.sh")),
        ("18", By("tests/scripts/jobs_segd.sh")),
        ("printf", prints_288),
        ("quarlo --job", By("tests/scripts/jobs_segd.sh")),
    ],
    "docs/segy-copy.md": [("H ", list_keeps), ("4\n", polygon_keeps), ("80 0C", index_record)],
    "docs/test-recordings.md": [
        ("# What a crew", lambda text: write("month.txt", text)),
        ("traces 4", lambda text: write("steps.txt", text)),
        ("kyrtool record", recording),
        ("", manual_recording),
    ],
    "docs/tutorials.md": [
        ("tapetool make-drive", practice_drives),
        ("quarlo --job tape-to-disk", lambda text: run(text, 2)),
        ("#!/bin/bash", lambda text: write("night.sh", text)),
        ("bash night.sh", night_of_copies),
        ("tapetool badblock", By("tests/scripts/documents.py")),
        ("quarlo --job reformat", month),
        ("kyrtool check", run),
        ("quarlo --headless", lambda text: says(run(text), "traces tested")),
        ("902", month_as_segy),
        ("quarlo --job segy-copy", run),
        ("quarlo --job index", part_is_indexed),
        ("Field files", lambda text: left_in("index.txt", text)),
    ],
    "docs/user-guide.md": [
        ("  0:4 ", drive_rows),
        ("grep", console_is_searched),
        ("cp console.txt", run),
        ("KYRHOME=", home_is_made),
        ("QUARLO_PALETTE=", looks_are_chosen),
        ("quarlo*palette", looks_are_chosen),
    ],
    "docs/virtual-drives.md": [
        ("tapetool make-drive", drives_are_used),
        ("00000000", listed),
        ("tapetool list", tool_verbs),
        ("QUARLO_TAPE_FAULT", no_fault_complaint),
        ("chmod", lambda text: run("cd tapes && " + text)),
        ("tapetool badblock", lambda text: run("cd tapes && chmod u+w line1.tap && " + text)),
        ("QUARLO_TAPE_DEVICE", Unplayed(DEVICE)),
    ],
}


def play_document(document):
    examples = blocks(document) + commands(document)
    players = PLAYERS.get(document, [])
    for start, player in players:
        mine = [example for example in examples if start and example.startswith(start)]
        assert mine or not start, f"{document}: no example begins with {start!r}: take its player away"
        examples = [example for example in examples if example not in mine]
        if isinstance(player, By):
            player.check(document)
        elif player is dump_formats:
            assert player() == len(mine), f"{document}: blocks without a format before them"
        elif not start:
            player()
        elif not isinstance(player, Unplayed):
            for example in mine:
                player(example)
    assert not examples, f"{document}: nobody knows how to play\n" + "\n".join(examples)


# Opens every dialog, which takes as long as all else: it is a test of its own, beside the others.
ALONE = "docs/dialogs.md"


def play(program, only=None):
    build = os.path.dirname(os.path.abspath(program))
    os.environ.update(PATH=build + ":" + os.environ["PATH"], BUILD=build)
    for name in ("KYRHOME", "IOHOME", "ST_BUFFER", "QUARLO_TAPE_FAULT"):
        os.environ.pop(name, None)
    documents = ["README.md"] + sorted(os.path.relpath(path, ROOT) for path in glob.glob(ROOT + "/docs/*.md"))
    assert set(PLAYERS) <= set(documents), set(PLAYERS) - set(documents)
    tests = "".join(read(os.path.relpath(path, ROOT)) for path in glob.glob(HERE + "/jobs*.sh"))
    for path in glob.glob(ROOT + "/resources/jobs/*.qs"):
        assert f"--job {os.path.basename(path)[:-3]} " in tests, f"no test plays {path}"
    failed = []
    for document in [only] if only else [each for each in documents if each != ALONE]:
        start = time.time()
        with tempfile.TemporaryDirectory() as folder:
            os.chdir(folder)
            os.environ.update(HOME=folder + "/home-of-user", QUARLO_VIRTUAL_DRIVES="")
            os.mkdir("home-of-user")
            try:
                play_document(document)
                print(f"{document}: played in {time.time() - start:.1f} s", flush=True)
            except (AssertionError, subprocess.TimeoutExpired) as reason:
                failed.append(document)
                print(f"{document}: FAILED: {reason}", flush=True)
            os.chdir("/")
    assert not failed, failed


if __name__ == "__main__":
    if sys.argv[1] == "block":
        sys.stdout.write(block(sys.argv[2], sys.argv[3]).rstrip("\n") + "\n")
    else:
        play(*sys.argv[2:])
