#!/usr/bin/env python3
"""Runs lrd on a disk where each operation is a round trip: how many it makes, and what many at once change: nothing.

usage: tests/disk/slow_disk_test.py TEST_DISK LRD

Exits with 77 where nothing can be mounted.
"""

import os
import pathlib
import random
import shutil
import subprocess
import sys
import time
import unittest

from disk import ENVIRONMENT, Disk
from objects import CONFIGURATION, Objects

LRD = os.path.abspath(sys.argv.pop(2)) if len(sys.argv) > 2 else sys.exit(__doc__)
DISK = os.path.abspath(sys.argv.pop(1))
OBJECTS = 300
# Where they are gone through many times.
FEWER = 100
# Operations for each object at most, by the job: a walk to a folder and what it takes once is spread over them.
LOOKS = {"getattr": 1, "lookup": 2, "open": 1, "read": 1}
MOST = {
    # There is no record folder yet, so that it is looked for each time.
    "recognize new": {"getattr": 1, "lookup": 3},
    "record new": {"getattr": 3, "lookup": 7, "create": 1, "write": 1, "fsync": 1, "rename": 1},
    "record same": {"getattr": 3, "lookup": 4, "open": 1, "read": 1},
    "recognize": LOOKS,
    # It explains, and so looks at the times of records too.
    "status": {**LOOKS, "getattr": 2},
    "check": {"lookup": 1, "open": 1, "read": 1},
}


class SlowDiskTest(unittest.TestCase):
    def setUp(self):
        self.disk = Disk(DISK)
        self.enterContext(self.disk)
        self.make_requests(OBJECTS)

    def make_requests(self, count):
        self.objects = Objects(self.disk.folder, count)
        self.objects.make_files(self.disk.backing)
        for name, text in (("config.xml", CONFIGURATION), ("answer.xml", self.objects.response()),
                           ("request.xml", self.objects.request())):
            (self.disk.scratch / name).write_text(text)

    def command(self, job, *options):
        verb = job.split()[0]
        arguments = {
            "record": ["answer.xml", "--config", "config.xml"],
            "recognize": ["request.xml", "--config", "config.xml"],
            "status": [self.disk.folder, "--config", "config.xml", "--explain"],
            "check": [self.disk.folder],
            "show": [self.objects.record(number) for number in range(self.objects.count)],
        }[verb]
        return [LRD, *options, verb, *arguments]

    def run_job(self, job, *options):
        command = self.command(job, *options)
        return subprocess.run(command, cwd=self.disk.scratch, capture_output=True, env=ENVIRONMENT, timeout=100)

    def records(self):
        return {str(file): file.read_bytes() for file in self.disk.backing.rglob("*.xml")}

    def remove_records(self):
        for folder in self.disk.backing.rglob(".KORVANTHEMIX"):
            shutil.rmtree(folder)

    def test_each_job_makes_no_more_round_trips_than_it_needs(self):
        for job, most in MOST.items():
            self.disk.control("reset")
            self.assertEqual(self.run_job(job, "--jobs", "1").stderr, b"", job)
            counts = self.disk.counts()
            for operation, count in counts.items():
                self.assertLessEqual(count, most.get(operation, 0) * OBJECTS + 0.15 * OBJECTS, (job, operation, counts))

    def test_what_is_absent_needs_no_look_once_the_folder_was_listed(self):
        self.run_job("record new")
        for number in range(50, 250):
            (self.disk.backing / self.objects.folder(number) / ".KORVANTHEMIX" / f"p{number}.prt.xml").unlink()
        self.disk.control("delay * 100")
        expected = self.run_job("recognize", "--jobs", "1").stdout
        self.disk.control("reset")
        self.assertEqual(self.run_job("recognize", "--jobs", "8").stdout, expected)
        self.assertLess(self.disk.counts()["lookup"], 2 * OBJECTS - 40)

    def test_many_at_once_change_nothing_but_the_time(self):
        chance = random.Random(7)
        self.make_requests(FEWER)
        self.run_job("record new")
        for number in chance.sample(range(FEWER), 40):
            record = pathlib.Path(self.disk.backing, self.objects.folder(number), ".KORVANTHEMIX", f"p{number}.prt.xml")
            chance.choice([record.unlink, lambda: record.write_text("<damaged"),
                           lambda: os.utime(self.disk.backing / self.objects.folder(number) / f"p{number}.prt.1", (1, 1)),
                           lambda: os.remove(self.disk.backing / self.objects.folder(number) / f"p{number}.prt.1")])()
        before = self.records()
        self.disk.control("delay * 100")
        self.disk.control("fault getattr */p77.prt.1 EACCES")
        self.disk.control("fault rename */p88.prt.xml EACCES")
        for job in ("status", "check", "show", "recognize", "record"):
            outcomes = []
            for jobs in ([], ["--jobs", "1"], ["--jobs", "8"], ["--jobs", "32"]):
                self.remove_records()
                for name, content in before.items():
                    pathlib.Path(name).parent.mkdir(exist_ok=True)
                    pathlib.Path(name).write_bytes(content)
                    os.utime(name, (1, 1))
                trace = self.disk.scratch / "trace"
                ran = self.run_job(job, *jobs, "--trace", str(trace))
                ran.args = None
                outcomes.append((vars(ran), trace.read_bytes(), self.records()))
                self.assertEqual(outcomes[-1], outcomes[0], (job, jobs))

    def test_a_server_that_goes_away_is_told_and_holds_nobody_up(self):
        self.run_job("record new")
        before = self.records()
        for job in ("recognize", "record same", "status"):
            self.disk.control("delay * 2000")
            process = subprocess.Popen(self.command(job, "--jobs", "8"), cwd=self.disk.scratch, env=ENVIRONMENT,
                                       stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
            time.sleep(0.1)
            self.disk.control("fault * * ENOTCONN")
            said = process.communicate(timeout=20)[0]
            self.disk.control("clear")
            self.assertEqual(process.returncode, 1, (job, said))
            self.assertIn(f"{self.disk.folder}/f0/", said)
            self.assertEqual(self.records(), before, job)


if __name__ == "__main__":
    unittest.main()
