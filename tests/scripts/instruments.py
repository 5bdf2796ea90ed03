"""Recordings made by kyrtool go through the instrument tests. What their reports say is compared, to the printed digit, with
numpy's own calculation from the samples in the file, and with what the recordings are on paper."""
import glob
import os
import re
import subprocess
import sys
import tempfile

import numpy as np

PROGRAM = os.path.realpath(sys.argv[1])
MONTH = """traces 6
samples 4001
interval 0.002
record 11
all noise 3e-7
all dc 2e-3
4 dead
record 12
all sine 1 31.25 phase 20
5 sine 0.02 31.25 phase 20
2 dead
all dc 0.01
record 13
all sine 1.003 31.25 phase 20
record 14
all impulse 0.1 100
6 impulse 0.002 101
record 15
all sine 1 31.25 phase 20 harmonics -60 -80
3 dead
record 16
odd sine 1 31.25 phase 20
even sine 1 31.25 phase 20 down 90
"""
VOLTAGES = """traces 4
samples 50
interval 0.002
record 1-9 halving
1,2,4 dc 8
3 dc 8.0008
"""


def dataset(name, text):
    """A recording as {field file: (samples by trace, kill flags)}, its records in order."""
    subprocess.run([os.path.join(os.path.dirname(PROGRAM), "kyrtool"), "record", name, "-"], input=text, text=True, check=True)
    raw = np.fromfile(name, np.uint8)
    records, traces, samples = (int(raw[48 + 4 * p:52 + 4 * p].view("<i4")[0]) for p in (0, 6, 8))
    slots = raw[4096:].reshape(records, traces, -1)
    head = np.ascontiguousarray(slots[:, :, 24:824]).view("<i4")
    data = np.ascontiguousarray(slots[:, :, 824:824 + 4 * samples]).view("<f4").astype(float)
    return {int(head[r, 0, 8]): (data[r], head[r, :, 11]) for r in range(records)}


def cycles(trace, remove_dc=True):
    """The whole cycles of a trace."""
    positive = trace > 0
    changes = np.flatnonzero(positive[1:] != positive[:-1]) + 1
    first, last = 0, len(trace) - 1
    if len(changes) and trace[0] != 0:
        alike = [c - 1 for c in changes if positive[c] == positive[changes[0]] and c > 1]
        if alike and alike[-1] > changes[0]:
            first, last = changes[0], alike[-1]
    part = trace[first:last + 1]
    return cycles(trace - part.mean(), False) if remove_dc else part


def rms(values):
    return float(np.sqrt(np.mean(np.square(values))))


def live(record, against=None):
    return [t for t in range(len(record[1])) if not record[1][t] and not (against and against[1][t])]


def one(record, measure):
    return [(t + 1, measure(record[0][t])) for t in live(record)]


def noise(record):
    return one(record, lambda x: float(np.std(x)) * 1e6)


def accuracy(record, level):
    return [(t, 1e3 * rms(x), 1e3 * x.min(), 1e3 * x.max(), abs(1e3 * rms(x) - level) * 100 / level)
            for t, x in ((t + 1, cycles(record[0][t])) for t in live(record))]


def levels(one_record, other):
    return [(t + 1, rms(cycles(one_record[0][t])), rms(cycles(other[0][t]))) for t in live(one_record, other)]


def dynamic(signal, quiet):
    pairs = levels(signal, quiet)
    average = np.mean([n for _, _, n in pairs])
    return [(t, s, n, 20 * np.log10(s / n), 20 * np.log10(s / average)) for t, s, n in pairs]


def step(one_record, other):
    return [(t, 1e3 * a, 1e3 * b, (a - b) * 100 / b) for t, a, b in levels(one_record, other)]


def impulse(record):
    traces = [record[0][t] - record[0][t].mean() for t in live(record)]
    average = np.mean(traces, axis=0)
    return [(t + 1, 100 * rms(x - average) / rms(average)) for t, x in zip(live(record), traces)]


def voltages(records):
    reference = [8.0 * 0.5 ** (r // 2) * (-1) ** r for r in range(8)]
    return [(t + 1, float(np.abs(x - v).max()) / v * 100) for v, (data, _) in zip(reference, records.values())
            for t, x in enumerate(data)]


def play(file, tests):
    """Runs tests one after the other. @return the tables and values of each"""
    lines = ["wait window main 20", "press main.file-dump", "wait window file-dump 5", f"answer-file {file}",
             "press file-dump.open-file"]
    for row, dialog, settings, _ in tests:
        lines += [f'select file-dump.reports "{row}"', "press file-dump.start-report", f"wait window {dialog} 5"]
        lines += [f"type {dialog}.{field} {text}" if text is not None else f"press {dialog}.{field}"
                  for field, text in settings.items()]
        lines += [f"press {dialog}.run", f'wait text {dialog}.status "*tested*" 20', f"answer-file {dialog}.csv",
                  f"press {dialog}.save", f"answer-file {dialog}.txt", "press file-dump.save", f"press {dialog}.close"]
    for kept in glob.glob("*-test.*"):
        os.remove(kept)
    with open("play.qs", "w", encoding="ascii") as script:
        script.write("\n".join(lines + ["quit"]))
    subprocess.run([PROGRAM, "--headless", "--script", "play.qs"], check=True, timeout=120)
    for row, dialog, _, expected in tests:
        if row == "THD Test":
            check_distortion(expected)
        else:
            compare(row, dialog, expected)


def compare(row, dialog, expected):
    with open(f"{dialog}.txt", encoding="ascii") as page:
        rows = re.findall(r"^(?:Channel)? {2,}(\d+)\b(?!\s*$)((?:\s+|[A-Za-z. ]+)-?[\d.].*)$", page.read(), re.M)
    with open(f"{dialog}.csv", newline="", encoding="ascii") as values:
        saved = [line.split(",") for line in values.read().split("\r\n")[1:-1]]
    # Percents are differences of levels in single precision.
    difference = 1e-5 if re.match("Gain|Impulse|A/D", row) else 0
    assert len(rows) == len(expected) == len(saved), f"{row}: {rows}\n{saved}\n{expected}"
    for (trace, text), line, wanted in zip(rows, saved, expected):
        printed = re.findall(r"-?\d+\.\d+", text)
        assert [int(trace), int(line[4])] == [wanted[0]] * 2, f"{row}: {trace} {line} {wanted}"
        assert len(printed) == len(wanted) - 1
        kept = [float(value) for value in line[-2 - len(printed):-2]]
        for shown, value, exact in zip(printed, kept, wanted[1:]):
            rounding = 5e-7 * abs(exact) + difference
            assert abs(float(shown) - exact) <= 0.5 * 10.0 ** -len(shown.split(".")[1]) + rounding, f"{row}: {text}, not {wanted}"
            assert abs(value - exact) <= rounding, f"{row}: {line}, not {wanted}"


def isolation(record, first, step):
    rows = [(t + 1, 1e3 * rms(cycles(record[0][t]))) for t in live(record)]
    driven = [row for row in rows if (row[0] - first) % step == 0 and row[0] >= first]
    average = np.mean([level for _, level in driven])
    return [(t, level, 20 * np.log10(average / level)) for t, level in driven + [row for row in rows if row not in driven]]


def by_transform(trace, interval):
    """A trace alone in its buffer."""
    n = len(trace)
    length = 1 << (2 * n - 1).bit_length()
    size = np.abs(np.fft.rfft((0.54 - 0.46 * np.cos(2 * np.pi * np.arange(n) / n)) * trace, length))
    strongest = max(int(np.argmax(size[1:length // 2 - 2])) + 1, 1)
    return strongest / (length * interval), size[strongest:length // 2:strongest]


def by_correlation(trace, interval):
    """The wave's whole cycles against sines and cosines, whose angles are in single precision."""
    up = np.flatnonzero((trace[:-1] < 0) & (trace[1:] >= 0))
    wave = trace[up[0] + 1:np.flatnonzero((trace[1:] > 0) & (trace[:-1] <= 0))[-1] + 1]
    changes = np.count_nonzero((wave[1:] > 0) != (wave[:-1] > 0))
    hertz = (changes + 1) / (2 * (len(wave) - 1) * interval)
    wave = wave - wave.mean()
    angles = [(np.arange(len(wave)) * (2 * np.pi * h * hertz * interval)).astype("f4").astype(float)
              for h in range(1, int(np.ceil(0.5 / interval / hertz)) + 1)]
    return hertz, np.array([np.hypot(np.sum(wave * np.cos(a)), np.sum(wave * np.sin(a))) for a in angles]) / np.sqrt(len(wave))


def distortion(record, method, paper, within):
    """Frequency, amplitude, distortion and the first harmonics of each trace."""
    rows = []
    for t in live(record):
        hertz, size = method(record[0][t], float(np.float32(0.002)))
        rows.append((t + 1, hertz, size[0], 100 * np.sqrt(np.sum(np.square(size[1:] / size[0]))),
                     *100 * size[1:6] / size[0]))
    near(rows, 3, [paper] * len(rows), within)
    return rows


def check_distortion(expected):
    with open("distortion-test.csv", newline="", encoding="ascii") as values:
        saved = [line.split(",") for line in values.read().split("\r\n")[1:-1]]
    assert len(saved) == len(expected) > 0, saved
    for line, (trace, *measures) in zip(saved, expected):
        assert int(line[4]) == trace and len(line) == 17, line
        for kept, exact in zip([line[6], *line[8:15]], measures, strict=True):
            assert abs(float(kept) - exact) <= 2e-6 * exact + 2e-5, f"{line}, not {measures}"


def near(rows, place, paper, within):
    assert all(abs(row[place] - wanted) <= within for row, wanted in zip(rows, paper)), f"{rows} on paper: {paper}"


os.chdir(tempfile.mkdtemp())
month = dataset("month.kyr", MONTH)
volts = dataset("volts.kyr", VOLTAGES)
root = 1000 / np.sqrt(2)
tables = {
    "DC": one(month[11], lambda x: 1e6 * float(x.mean())), "EIN": noise(month[11]), "range": dynamic(month[12], month[11]),
    "accuracy": accuracy(month[12], 707.1068), "step": step(month[13], month[12]), "impulse": impulse(month[14]),
    "A/D": voltages(volts)}
near(tables["DC"], 1, [2000] * 5, 0.01)
near(tables["EIN"], 1, [0.3] * 5, 0.0002)
near(tables["accuracy"], 1, [root, root, root, 1.02 * root, root], 0.2)
near(tables["step"], 3, [0.3, 0.3, 0.3, (1.003 / 1.02 - 1) * 100, 0.3], 0.01)
near(tables["A/D"], 1, [0, 0, 0.01, 0, 0, 0, -0.01, 0] * 4, 5e-6)
play("month.kyr", [
    ("DC Offset Test", "dc-offset-test", {"field-file": 11}, tables["DC"]),
    ("EIN Test", "noise-test", {"field-file": 11}, tables["EIN"]),
    ("Dynamic Range Test", "dynamic-range-test", {"field-file": 12, "second-file": 11}, tables["range"]),
    ("Gain Accuracy Test", "gain-accuracy-test", {"field-file": 12, "signal": 707.1068}, tables["accuracy"]),
    ("Gain Step Test", "gain-step-test", {"field-file": 13, "second-file": 12}, tables["step"]),
    ("Impulse Resp. Test", "impulse-test", {"field-file": 14}, tables["impulse"]),
])
tables["crossfeed"] = isolation(month[16], 1, 2)
near(tables["crossfeed"], 2, [0] * 3 + [90] * 3, 0.001)
play("month.kyr", [("Crossfeed Test", "crossfeed-test", {"field-file": 16}, tables["crossfeed"])])
paper = 100 * np.sqrt(1e-6 + 1e-8)
for way, method, within in (({}, by_correlation, 0.15),
                            ({"use-fft": None, "clear-buffer": None}, by_transform, 0.02)):
    play("month.kyr", [("THD Test", "distortion-test", {"field-file": 15, **way}, distortion(month[15], method, paper, within))])
play("volts.kyr", [("A/D Converter Test", "ad-test", {}, tables["A/D"])])
