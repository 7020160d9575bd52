#!/usr/bin/env python3
"""An independent reading of the assistant's rules, used to write the
assistant_generated_*.scenario files and the transcripts they must give.

It draws random selections (fixed seed) on a coarse grid, so that ties and
exact boundaries come up often, and computes every log line and row from the
written rules alone. Run it from any folder; it rewrites the files beside it.
Re-running it gives the same files.
"""
import json
import math
import os
import random

HERE = os.path.dirname(os.path.abspath(__file__))
FILES = 5
CALLS_PER_FILE = 40

KEYS = ["ID", "Name", "Top", "Left", "Width", "Height", "ShpType", "HasFill", "FillColor",
        "HasTextFrame", "HasText", "AutoSize", "WordWrap", "MarginTop", "MarginLeft", "ZOrder",
        "HasLineBreaks"]


def row(name, keys, image, saved):
    return (name, tuple(keys), image, saved)


# ---- printing ---------------------------------------------------------------

def num(value):
    text = repr(float(value))
    return text


def quoted(text):
    return '"' + text.replace('\\', '\\\\').replace('"', '\\"') + '"'


def b(value):
    return "true" if value else "false"


def describe(shapes):
    parts = []
    for s in shapes:
        parts.append(
            "ShapeMetadata(ID: %d, Name: %s, Top: %s, Left: %s, Width: %s, Height: %s, ShpType: %s, "
            "HasFill: %s, FillColor: %d, HasTextFrame: %s, HasText: %s, AutoSize: %s, WordWrap: %s, "
            "MarginTop: %s, MarginLeft: %s, ZOrder: %d, HasLineBreaks: %s)" % (
                s["ID"], quoted(s["Name"]), num(s["Top"]), num(s["Left"]), num(s["Width"]),
                num(s["Height"]), quoted(s["ShpType"]), b(s["HasFill"]), s["FillColor"],
                b(s["HasTextFrame"]), b(s["HasText"]), b(s["AutoSize"]), b(s["WordWrap"]),
                num(s["MarginTop"]), num(s["MarginLeft"]), s["ZOrder"], b(s["HasLineBreaks"])))
    return "[" + ", ".join(parts) + "]"


# ---- the detectors, read from the rules ------------------------------------

def spreads(shapes):
    lefts = [float(s["Left"]) for s in shapes]
    tops = [float(s["Top"]) for s in shapes]
    return max(lefts) - min(lefts), max(tops) - min(tops)


def alignment(shapes, log):
    if len(shapes) < 2:
        log.append("Not enough shapes for alignment recommendation.")
        return []
    def values(s):
        l, t, w, h = float(s["Left"]), float(s["Top"]), float(s["Width"]), float(s["Height"])
        return [l, l + w / 2, l + w, t, t + h / 2, t + h]
    ref = values(shapes[0])
    flags = [True] * 6
    for s in shapes:
        v = values(s)
        for i in range(6):
            if abs(v[i] - ref[i]) > 1.0:
                flags[i] = False
    if any(flags):
        return []
    h, v = spreads(shapes)
    if h > v * 1.0:
        return [row("Align Top/Middle/Bottom", ["Ctrl", "Cmd", "↑/M/↓"], "AlignTop.png", "-3s")]
    if v > h * 1.0:
        return [row("Align Left/Center/Right", ["Ctrl", "Cmd", "←/C/→"], "AlignLeft.png", "-3s")]
    return []


def even(shapes, pos, size):
    if len(shapes) < 2:
        return True
    ordered = sorted(shapes, key=lambda s: float(s[pos]))
    span = float(ordered[-1][pos]) + float(ordered[-1][size]) - float(ordered[0][pos])
    total = 0.0
    for s in ordered:
        total += float(s[size])
    n = len(ordered) - 1
    expected = (span - total) / n
    for i in range(n):
        gap = float(ordered[i + 1][pos]) - (float(ordered[i][pos]) + float(ordered[i][size]))
        if abs(gap - expected) > 0.1:
            return False
    return True


def distribution(shapes, log):
    if len(shapes) < 3:
        log.append("Not enough shapes for distribution recommendation.")
        return []
    h, v = spreads(shapes)
    if h > v * 1.0:
        if even(shapes, "Left", "Width"):
            log.append("Shapes are already evenly distributed horizontally.")
            return []
        return [row("Distribute Horizontal", ["Ctrl", "Cmd", "H"], "DistributeHorizontal.png", "-3s")]
    if v > h * 1.0:
        if even(shapes, "Top", "Height"):
            log.append("Shapes are already evenly distributed vertically.")
            return []
        return [row("Distribute Vertical", ["Ctrl", "Cmd", "V"], "DistributeVertical.png", "-3s")]
    log.append("No dominant orientation for distribution recommendation.")
    return []


def box(s):
    l, t, w, h = float(s["Left"]), float(s["Top"]), float(s["Width"]), float(s["Height"])
    return l, t, l + w, t + h


def overlaps(a, b):
    al, at, ar, ab = box(a)
    bl, bt, br, bb = box(b)
    return al < br and bl < ar and at < bb and bt < ab


def divide(a, c):
    if c == 0:
        return math.nan if a == 0 else math.copysign(math.inf, a)
    return a / c


def arrange(selected, others):
    for s in selected:
        hits = [o for o in others if o["ID"] != s["ID"] and overlaps(o, s)]
        for o in hits:
            sl, st, sr, sb = box(s)
            ol, ot, orr, ob = box(o)
            area = max(min(sr, orr) - max(sl, ol), 0.0) * max(min(sb, ob) - max(st, ot), 0.0)
            mine = divide(area, float(s["Width"]) * float(s["Height"]))
            theirs = divide(area, float(o["Width"]) * float(o["Height"]))
            if not (mine > 0.45 or theirs > 0.45):
                continue
            up = s["ZOrder"] < o["ZOrder"]
            first = (row("Bring to Front", ["Cmd", "Shift", "F"], "BringToFront.png", "-3s") if up
                     else row("Send to Back", ["Cmd", "Shift", "B"], "SendToBack.png", "-3s"))
            if len(hits) == 1:
                return [first]
            second = (row("Bring Forward", ["Cmd", "Opt", "Shift", "F"], "BringForward.png", "-3s") if up
                      else row("Send Backward", ["Cmd", "Opt", "Shift", "B"], "SendBackward.png", "-3s"))
            return [first, second]
    return []


def elements(shapes):
    if not shapes:
        return []
    if any(s["Name"] and "harvey" in s["Name"].lower() for s in shapes):
        return [row("Toggle Harvey", ["Ctrl", "T"], "ToggleHarvey.png", "-10s")]
    if any(s["ShpType"] == "9" and abs(float(s["Height"])) > 0 and abs(float(s["Width"])) > 0 for s in shapes):
        return [row("Straighten Lines", ["Ctrl", "T"], "Lines.png", "-5s")]
    return []


def send(shapes):
    return [] if shapes else [row("Send Slides", ["Ctrl", "Cmd", "↵"], "Send.png", "-60s")]


def insert(shapes):
    if shapes:
        return []
    return [row("TextBox", ["Ctrl", "Q"], "Textbox.png", "-3s"),
            row("Text Table", ["Cmd", "T"], "VelmoraTable.png", "-30s"),
            row("Sticky Notes", ["Cmd", "0"], "Sticky.png", "-5s")]


def resize(shapes):
    if not shapes:
        return []
    out = []
    if len(shapes) == 2 and shapes[0]["ShpType"] and shapes[1]["ShpType"] and \
            shapes[0]["ShpType"].lower() == shapes[1]["ShpType"].lower():
        out.append(row("Swap Objects", ["Ctrl", "3"], "SwapIcon.png", "-6s"))
    h, v = spreads(shapes)
    first = shapes[0]
    same_w = all(float(s["Width"]) == float(first["Width"]) for s in shapes)
    same_h = all(float(s["Height"]) == float(first["Height"]) for s in shapes)
    if same_w and same_h:
        return out
    if h > v:
        if not same_h:
            out.append(row("Same Height", ["Cmd", "Shift", "E"], "SameHeight.png", "-5s"))
    elif v > h:
        if not same_w:
            out.append(row("Same Width", ["Ctrl", "Cmd", "E"], "SameWidth.png", "-5s"))
    return out


def text(shapes):
    if len(shapes) != 1 or not shapes[0]["HasText"]:
        return []
    s = shapes[0]
    out = []
    if not s["AutoSize"]:
        out.append(row("Enable AutoFit", ["Cmd", "8"], "Autofit.png", "-6s"))
    else:
        out.append(row("Disable AutoFit", ["Cmd", "Shift", "8"], "DisableAutofit.png", "-6s"))
        out.append(row("Toggle WordWrap", ["Cmd", "Shift", "7"] if s["WordWrap"] else ["Cmd", "7"],
                       "WordWrap.png", "-6s"))
    top, left = float(s["MarginTop"]), float(s["MarginLeft"])
    if top == 0 and left == 0 and s["HasFill"]:
        out.append(row("Increase Text Margin", ["Cmd", "Ctrl", "0"], "IncreaseMargin.png", "-6s"))
    elif top > 0 or left > 0:
        out.append(row("Decrease Text Margin", ["Cmd", "Ctrl", "9"], "DecreaseMargin.png", "-6s"))
    if s["HasLineBreaks"]:
        out.append(row("Adjust Line Spacing", ["Cmd", "Shift", "L"], "ListLineSpacing.png", "-6s"))
    return out


MISSED = {
    "IncreaseFontSize": row("Increase Font", ["Cmd", "Shift", "."], "FontIncrease.png", "+3s"),
    "AlignLeft": row("Align Left", ["Cmd", "Ctrl", "←"], "AlignLeft.png", "+3s"),
    "AlignBottom": row("Align Bottom", ["Cmd", "Ctrl", "↓"], "AlignBottom.png", "+3s"),
    "BringToFrontMenu": row("Bring to Front", ["Cmd", "Opt", "Shift", "F"], "BringToFront.png", "-3s"),
    "BringToFront": row("Bring to Front", ["Cmd", "Opt", "Shift", "F"], "BringToFront.png", "-3s"),
    "SendBackward": row("Send Backward", ["Cmd", "Shift", "B"], "SendBackward.png", "-3s"),
    "Group": row("Group Shapes", ["Cmd", "Opt", "G"], "Group.png", "+3s"),
    "NewSlide": row("New Slide", ["Ctrl", "M"], "NewSlide.png", "+3s"),
}


# ---- the simulated session --------------------------------------------------

class Session:
    def __init__(self):
        self.previous = []
        self.shown = []
        self.missed = []
        self.out = []

    def publish(self, rows):
        # The publish block runs after the command, before the next one.
        self.out.append("log: Assistant: Recommendations updated.")
        self.previous = rows
        self.shown = rows

    def trigger(self, selected_text, others_text, selected, others):
        self.out.append("log: Assistant: " + selected_text)
        if selected_text == "[SlideSelected]":
            rows = send([])
            if [r[0] for r in rows] != [r[0] for r in self.previous]:
                self.publish(rows)
            return
        self.out.append("log: Assistant: Successfully decoded Selected Shapes JSON. Count: %d" % len(selected))
        self.out.append("log: Assistant: " + describe(selected))
        self.out.append("log: Assistant: Successfully decoded NonSelected Shapes JSON. Count: %d" % len(others))
        log = []
        rows = alignment(selected, log) + distribution(selected, log) + arrange(selected, others) + \
            elements(selected) + send(selected) + insert(selected) + resize(selected) + text(selected)
        self.out.extend("log: " + line for line in log)
        if [r[0] for r in rows] == [r[0] for r in self.previous]:
            self.out.append("log: Assistant: Recommendations remain unchanged.")
            return
        self.publish(rows)

    def miss(self, command):
        r = MISSED.get(command, row(command, [], "Default.png", ""))
        required = {k.lower() for k in r[1]} & {"ctrl", "cmd", "opt", "shift"}
        if required == set():  # no modifier is ever held here
            self.out.append("log: Modifiers active for %s; skipping missed recommendation." % r[0])
            return
        if any(m[0] == r[0] for m in self.missed):
            self.out.append("log: Missed recommendation already exists: " + r[0])
            return
        self.missed = [r] + self.missed[:2]
        self.out.append("log: Added missed recommendation: " + r[0])

    def show(self):
        for label, rows in (("suggested", self.shown), ("missed", self.missed)):
            if not rows:
                self.out.append(label + ": (none)")
            for r in rows:
                self.out.append("%s: %s | %s | %s | %s" % (label, r[0], " ".join(r[1]), r[2], r[3]))


# ---- random selections -------------------------------------------------------

def coordinate(rng):
    return rng.choice([0, 10, 20, 50, 100]) + rng.choice([0, 0, 0.5, 1, 1.0, 1.5, 10.05, 10.4, 25])


def size(rng):
    return rng.choice([0, 10, 20, 20.0, 40, 50.5, 100, 100.0000001])


def shape(rng, ident):
    kind = rng.choice(["1", "1", "9", "17", "", "a", "A"])
    width, height = size(rng), size(rng)
    if kind == "9" and rng.random() < 0.3:
        width = -width
    return {
        "ID": ident,
        "Name": rng.choice(["Rectangle 1", "harvey ball", "Title", "", "Big HARVEY", "Oval 2", "Harv ey"]),
        "Top": coordinate(rng), "Left": coordinate(rng), "Width": width, "Height": height,
        "ShpType": kind,
        "HasFill": rng.random() < 0.5, "FillColor": rng.choice([0, 255, 16777215]),
        "HasTextFrame": rng.random() < 0.5, "HasText": rng.random() < 0.6,
        "AutoSize": rng.random() < 0.5, "WordWrap": rng.random() < 0.5,
        "MarginTop": rng.choice([0, 0, 0.0, 3.6, -1]), "MarginLeft": rng.choice([0, 0, 7.2, -1]),
        "ZOrder": rng.randint(1, 4), "HasLineBreaks": rng.random() < 0.4,
    }


def selection(rng):
    count = rng.choice([0, 1, 1, 2, 2, 3, 3, 4, 5])
    selected = [shape(rng, i + 1) for i in range(count)]
    others = [shape(rng, rng.randint(1, 8)) for _ in range(rng.choice([0, 1, 2, 3]))]
    # Row and column arrangements, so that distribution is reached often.
    if count >= 3 and rng.random() < 0.5:
        axis, extent = rng.choice([("Left", "Width"), ("Top", "Height")])
        at = 0.0
        for s in selected:
            s[axis] = at
            at += float(s[extent]) + rng.choice([10, 10, 10.05, 10.4])
    if others and selected and rng.random() < 0.5:
        # An other shape right on top of a selected one.
        twin = dict(rng.choice(selected))
        twin["ID"] = rng.choice([twin["ID"], 9])
        twin["ZOrder"] = rng.randint(1, 4)
        others.append(twin)
    return selected, others


def encode(shapes):
    return json.dumps(shapes, separators=(",", ":"), ensure_ascii=False)


def generate(number, rng):
    session = Session()
    lines = ["# Generated by assistant_reference.py: random selections against an independent",
             "# reading of the detector rules. Do not edit; re-run the script."]
    last = None
    for _ in range(CALLS_PER_FILE):
        roll = rng.random()
        if roll < 0.12 and last:
            lines.append("assistant '%s' '%s'" % last[:2])
            session.trigger(last[0], last[1], last[2], last[3])
        elif roll < 0.17:
            lines.append("slide-selected")
            session.trigger("[SlideSelected]", "", [], [])
        elif roll < 0.27:
            command = rng.choice(list(MISSED) + ["Bold", "Cut"])
            lines.append("missed " + command)
            session.miss(command)
        else:
            selected, others = selection(rng)
            last = (encode(selected), encode(others), selected, others)
            lines.append("assistant '%s' '%s'" % last[:2])
            session.trigger(last[0], last[1], selected, others)
        lines.append("show assistant")
        session.show()
    base = os.path.join(HERE, "assistant_generated_%d" % number)
    with open(base + ".scenario", "w", encoding="utf-8") as f:
        f.write("\n".join(lines) + "\n")
    with open(base + ".expected", "w", encoding="utf-8") as f:
        f.write("\n".join(session.out) + "\nexit: 0\n")


def main():
    rng = random.Random(20260311)
    for number in range(1, FILES + 1):
        generate(number, rng)


if __name__ == "__main__":
    main()
