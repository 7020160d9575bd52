#!/usr/bin/env python3
"""The fault-injection driver's judgements, on made-up runs."""

import collections
import hashlib
import json
import os
import sys
import unittest

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import run  # noqa: E402

META = "Users/velmora/Library/Application Support/Microsoft/Velmora/User/SlideLibrary/SlideLibrary_Metadata.json"
THUMB = "Users/velmora/Library/Application Support/Microsoft/Velmora/User/TemplateLibrary/Thumbnails/tpl-0001.png"
PNG = b"\x89PNG\r\n\x1a\n" + b"body" + b"\x00\x00\x00\x00IEND\xaeB`\x82"


def sha(data):
    return hashlib.sha1(data).hexdigest()


def records(*names):
    return json.dumps([{"FullSlideName": name, "Tags": []} for name in names]).encode()


def journal(*lines):
    return run.Journal.parse(["journal: " + line for line in lines])


class Sandbox:
    """End states of a run as the driver sees them."""

    def __init__(self, **files):
        self.bytes = {run_path(key): value for key, value in files.items()}

    def hashes(self):
        return {path: sha(data) for path, data in self.bytes.items()}

    def read(self, path):
        return self.bytes[path]


def run_path(key):
    return {"meta": META, "thumb": THUMB}[key]


def judge(baseline, faulted, fault_free_journal=None, own_journal=None, stopped=False, point="files.write",
          detail=""):
    return run.judge_sandbox(baseline.hashes(), faulted.hashes(), fault_free_journal or journal(),
                             own_journal or journal(), faulted.read, baseline.read, stopped, point, detail)


class SelectionTest(unittest.TestCase):
    def test_every_call_up_to_the_limit_then_an_even_stride_with_both_ends(self):
        self.assertEqual(run.select_calls(0, 8), [])
        self.assertEqual(run.select_calls(5, 8), [1, 2, 3, 4, 5])
        self.assertEqual(run.select_calls(5, 0), [1, 2, 3, 4, 5])
        calls = run.select_calls(274, 8)
        self.assertEqual(len(calls), 8)
        self.assertEqual((calls[0], calls[-1]), (1, 274))
        gaps = {b - a for a, b in zip(calls, calls[1:])}
        self.assertLessEqual(max(gaps) - min(gaps), 1)
        self.assertEqual(run.select_calls(9, 1), [1])


class TranscriptTest(unittest.TestCase):
    def test_new_log_lines_count_repeats_and_ignore_order_and_markers(self):
        base = ["log: a", "log: b", "log: b", "show: x"]
        faulted = ["log: b", "log: fault: files.read #1 /p", "log: a", "log: b", "log: b", "log: c", "show: y"]
        self.assertEqual(run.new_log_lines(base, faulted), ["log: b", "log: c"])
        self.assertEqual(run.new_log_lines(base, ["log: b", "log: a"]), [])

    def test_markers_give_the_detail_and_pair_late_blocks(self):
        lines = ["log: fault: dispatch.main #7", "log: fault: dispatch.main #7 held back",
                 "log: fault: dispatch.main #7 runs late", "log: fault: files.read #1 /a b/c.png"]
        self.assertEqual(run.markers(lines, "dispatch.main"), ("", 1, 1))
        self.assertEqual(run.markers(lines, "files.read"), ("/a b/c.png", 0, 0))
        self.assertEqual(run.markers(lines, "files.write"), (None, 0, 0))
        self.assertEqual(run.markers(lines[:2], "dispatch.main"), ("", 1, 0))

    def test_exit_judgement(self):
        self.assertEqual(run.judge_exit(0, "", 0, False, 60), (None, False))
        self.assertEqual(run.judge_exit(2, "velmora-host: x.scenario:12: no open pane\n", 0, False, 60), (None, True))
        self.assertEqual(run.judge_exit(2, "", 2, False, 60), (None, False))
        self.assertIn("exit 2", run.judge_exit(2, "something else\n", 0, False, 60)[0])
        self.assertIn("signal 11", run.judge_exit(-11, "", 0, False, 60)[0])
        self.assertIn("no end", run.judge_exit(-9, "", 0, True, 60)[0])
        report = "==1==ERROR: AddressSanitizer: heap-use-after-free on address 0x1\n"
        self.assertIn("heap-use-after-free", run.judge_exit(0, report, 0, False, 60)[0])
        self.assertIn("runtime error", run.judge_exit(0, "a.cpp:3:5: runtime error: signed overflow\n", 0, False, 60)[0])

    def test_silent_paths_match_point_detail_and_target(self):
        self.assertTrue(run.silent_reason("dispatch.global", "", "any.scenario"))
        self.assertTrue(run.silent_reason("files.read", "/Library/x/PowerPoint/Icons/Send.png", "t"))
        self.assertIsNone(run.silent_reason("files.write", "/Library/x/PowerPoint/Icons/Send.png", "t"))
        self.assertIsNone(run.silent_reason("http.truncated", "GET http://127.0.0.1:8/cdn/manifest.json", "templates_sync.scenario"))
        self.assertTrue(run.silent_reason("http.truncated", "GET http://127.0.0.1:8/cdn/manifest.json",
                                          "templates_manifest_half.scenario"))


class WholenessTest(unittest.TestCase):
    def test_kinds(self):
        self.assertTrue(run.whole("a.png", PNG)[0])
        self.assertFalse(run.whole("a.png", PNG[: len(PNG) // 2])[0])
        self.assertTrue(run.whole("a.json", b"[1, 2]")[0])
        self.assertFalse(run.whole("a.json", b"[1, 2")[0])
        self.assertFalse(run.whole("a.svg", b"<svg><path/>")[0])
        self.assertTrue(run.whole("a.pptx", b"anything")[0])


class SandboxTest(unittest.TestCase):
    def test_an_earlier_state_of_the_fault_free_run_is_fine(self):
        old, new = records("A", "B"), records("A")
        states = journal(f"write {run.fnv(old)} {run.fnv(new)} /{META}")
        self.assertEqual(judge(Sandbox(meta=new), Sandbox(meta=old), states), ([], []))

    def test_a_cut_metadata_file_is_flagged(self):
        old, new = records("A", "B"), records("A")
        states = journal(f"write {run.fnv(old)} {run.fnv(new)} /{META}")
        cut = old[: len(old) // 2]
        problems, _ = judge(Sandbox(meta=new), Sandbox(meta=cut), states,
                            journal(f"write {run.fnv(old)} {run.fnv(cut)} /{META}"))
        self.assertEqual(len(problems), 1)
        self.assertIn("not whole JSON", problems[0])

    def test_a_later_edit_on_an_earlier_state_passes_unless_it_loses_a_record(self):
        base = records("A", "B", "C")
        other = json.dumps([{"FullSlideName": n, "Tags": ["t"]} for n in "ABC"]).encode()
        mine = journal(f"atomicWrite x {run.fnv(other)} /{META}")
        self.assertEqual(judge(Sandbox(meta=base), Sandbox(meta=other), own_journal=mine), ([], []))
        fewer = records("A", "C")
        problems, _ = judge(Sandbox(meta=base), Sandbox(meta=fewer),
                            own_journal=journal(f"write x {run.fnv(fewer)} /{META}"))
        self.assertIn("loses B", problems[0])
        # A file nobody wrote in this run cannot be explained by an edit.
        self.assertTrue(judge(Sandbox(meta=base), Sandbox(meta=other))[0])

    def test_a_failed_reload_explains_a_delete_that_drops_a_record(self):
        base, fewer = records("A", "B"), records("A")
        problems, notes = judge(Sandbox(meta=base), Sandbox(meta=fewer),
                                own_journal=journal(f"write x {run.fnv(fewer)} /{META}"), point="files.read",
                                detail="/" + META)
        self.assertEqual(problems, [])
        self.assertIn("reload", notes[0])

    def test_caches_and_http_faults(self):
        other = PNG.replace(b"body", b"other")
        # Another whole download of the same name, written by the library in this run.
        mine = journal(f"atomicWrite - {run.fnv(other)} /{THUMB}")
        self.assertEqual(judge(Sandbox(thumb=PNG), Sandbox(thumb=other), own_journal=mine, point="dispatch.main"),
                         ([], []))
        # Half a PNG is no download the library could make, unless the request was cut.
        half = PNG[:10]
        mine = journal(f"atomicWrite - {run.fnv(half)} /{THUMB}")
        self.assertTrue(judge(Sandbox(thumb=PNG), Sandbox(thumb=half), own_journal=mine, point="dispatch.main")[0])
        problems, notes = judge(Sandbox(thumb=PNG), Sandbox(thumb=half), own_journal=mine, point="http.truncated",
                                detail="GET http://127.0.0.1:8/cdn/thumbs/tpl-0001.png")
        self.assertEqual(problems, [])
        self.assertIn("not a whole PNG", notes[0])
        # An icon is named by the request's provider and id; another icon's request explains nothing.
        icon = "Users/velmora/Library/Application Support/Microsoft/Velmora/User/Icons/lineart-bold-star.svg"
        cut = b"<svg><path d='M0"
        base, faulted = {icon: sha(b"<svg/>")}, {icon: sha(cut)}
        mine = journal(f"atomicWrite - {run.fnv(cut)} /{icon}")
        for request, explained in (("provider=lineart&iconId=bold-star", True), ("provider=lineart&iconId=4100", False)):
            problems, notes = run.judge_sandbox(base, faulted, journal(), mine, lambda _: cut, lambda _: b"", False,
                                                "http.truncated", "GET http://127.0.0.1:8/api/v2/icons/asset?" + request)
            self.assertEqual((problems == [], len(notes)), (explained, int(explained)), request)

    def test_a_stopped_run_may_lack_files_and_keep_the_simulators_earlier_ones(self):
        base = Sandbox(meta=records("A"), thumb=PNG)
        earlier = Sandbox(meta=records("A", "B", "C"))
        self.assertEqual(judge(base, earlier, stopped=True), ([], []))
        problems, _ = judge(base, earlier, stopped=False)
        self.assertEqual(len(problems), 2)  # the thumbnail missing and the metadata changed

    def test_removed_folders_allow_absence_below_them(self):
        states = journal("remove - - /Users/velmora/Library/Application Support/Microsoft/Velmora/User/TemplateLibrary")
        self.assertTrue(states.allows(THUMB, "-"))
        self.assertFalse(states.allows(THUMB, "abc"))
        self.assertEqual(journal("failed - - files.read #3").failures, {("files.read", 3)})


if __name__ == "__main__":
    unittest.main()
