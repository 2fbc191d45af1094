#!/usr/bin/env python3
"""Measures lrd on a folder where every operation takes a while, as on a file server.

usage: benchmarks/slow_disk.py TEST_DISK LRD [--before LRD] [--objects N] [--recorded N] [--delays US,US,...] [--runs N]
                               [--folder FOLDER]

Each row: how long a job takes, medians, and its ratio to the same with --jobs 1, and to --before where that is given.
Where they are installed, beside rsync -n -a and git status over the same files, which are up to date there. --folder: a
mounted folder of one's own instead of the test disk; then there are no delays.
"""

import argparse
import os
import pathlib
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

sys.path.append(str(pathlib.Path(__file__).resolve().parent.parent / "tests" / "disk"))
from disk import Disk  # noqa: E402
from objects import CONFIGURATION, Objects  # noqa: E402


class Folder:
    """A folder that somebody else has mounted."""

    def __init__(self, folder):
        self.folder = self.backing = pathlib.Path(tempfile.mkdtemp(prefix="slow_disk.", dir=folder))

    def __enter__(self):
        return self

    def __exit__(self, *raised):
        shutil.rmtree(self.folder)

    def control(self, line):
        pass


class Measurement:
    def __init__(self, disk, scratch, options):
        self.disk, self.scratch, self.options = disk, scratch, options
        self.objects = Objects(disk.folder, options.objects)
        self.some = Objects(disk.folder, min(options.recorded, options.objects))
        self.objects.make_files(disk.backing)
        for name, text in (("config.xml", CONFIGURATION), ("request.xml", self.objects.request()),
                           ("answer.xml", self.objects.response()), ("some.xml", self.some.response())):
            (scratch / name).write_text(text)

    def lrd(self, program, *arguments):
        return [*program, *arguments, "--config", self.scratch / "config.xml"]

    def remove_records(self):
        for folder in self.disk.backing.rglob(".KORVANTHEMIX"):
            shutil.rmtree(folder)

    def seconds(self, command, prepare=lambda: None, folder=None):
        """Preparing is not slowed down."""
        prepare()
        self.disk.control(f"delay * {self.delay}")
        begin = time.perf_counter()
        subprocess.run(command, check=True, stdout=subprocess.DEVNULL, cwd=folder)
        took = time.perf_counter() - begin
        self.disk.control("clear")
        return took

    def rows(self, delay):
        self.delay = delay
        programs = {"one after another": [self.options.lrd, "--jobs", "1"], "found out": [self.options.lrd]}
        if self.options.before:
            programs = {"before": [self.options.before], **programs}
        first, last = programs["one after another"], programs["found out"]
        record = self.lrd(last, "record", self.scratch / "answer.xml")

        def all_recorded():
            self.remove_records()
            subprocess.run(record, check=True, stdout=subprocess.DEVNULL)

        jobs = {
            "recognize": ["recognize", self.scratch / "request.xml", "-o", os.devnull],
            "status": ["status", self.disk.folder],
            "record new": ["record", self.scratch / "some.xml"],
            "record unchanged": ["record", self.scratch / "some.xml"],
        }
        all_recorded()
        tools = self.tools()
        for job, arguments in jobs.items():
            prepare = self.remove_records if job == "record new" else lambda: None
            commands = {name: self.lrd(program, *arguments) for name, program in programs.items()}
            yield from self.row(job, commands, prepare, tools if job == "recognize" else {})

    def row(self, job, commands, prepare, tools):
        times = {name: [] for name in (*commands, *tools)}
        for _ in range(self.options.runs):
            for name, command in commands.items():
                times[name].append(self.seconds(command, prepare))
            for name, (command, folder) in tools.items():
                times[name].append(self.seconds(command, folder=folder))
        medians = {name: statistics.median(values) for name, values in times.items()}
        ahead = medians["found out"]
        for name, median in medians.items():
            yield job, name, median, ahead / median

    def tools(self):
        tools = {}
        folder, copy = self.disk.folder, self.scratch / "copy"
        if shutil.which("rsync"):
            subprocess.run(["rsync", "-a", f"{folder}/", copy], check=True)
            tools["rsync -n -a"] = (["rsync", "-n", "-a", f"{copy}/", f"{folder}/"], None)
        if shutil.which("git"):
            store = ["git", f"--git-dir={self.scratch / 'git'}", f"--work-tree={folder}"]
            for arguments in (["init", "-q"], ["config", "core.preloadIndex", "true"], ["add", "-A"]):
                subprocess.run([*store, *arguments], check=True, stderr=subprocess.DEVNULL)
            # What was added within this second would be read again.
            time.sleep(1.1)
            subprocess.run([*store, "status", "--short"], check=True, stdout=subprocess.DEVNULL)
            tools["git status"] = ([*store, "status", "--short"], folder)
        return tools


def main():
    form = argparse.RawDescriptionHelpFormatter
    parser = argparse.ArgumentParser(usage=argparse.SUPPRESS, description=__doc__, formatter_class=form)
    parser.add_argument("disk")
    parser.add_argument("lrd", type=os.path.abspath)
    parser.add_argument("--before", type=os.path.abspath)
    parser.add_argument("--objects", type=int, default=2000)
    parser.add_argument("--recorded", type=int, default=1000)
    parser.add_argument("--delays", default="200,500,2000")
    parser.add_argument("--runs", type=int, default=3)
    parser.add_argument("--folder")
    options = parser.parse_args()
    with tempfile.TemporaryDirectory() as scratch:
        with Folder(options.folder) if options.folder else Disk(os.path.abspath(options.disk)) as disk:
            measurement = Measurement(disk, pathlib.Path(scratch), options)
            print(f"{'disk':14} {'job':17} {'how':18} {'seconds':>8} {'ours to it':>11}")
            for delay in (0,) if options.folder else map(int, options.delays.split(",")):
                name = options.folder or f"{delay / 1000:g} ms"
                for job, how, seconds, ratio in measurement.rows(delay):
                    print(f"{name:14.14} {job:17} {how:18} {seconds:8.3f} {'1/' + format(1 / ratio, '.1f'):>11}", flush=True)


if __name__ == "__main__":
    main()
