"""Mounts the test disk, for tests in Python."""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time
import urllib.parse

SKIPPED = 77
# Leaks are looked for elsewhere; here programs are started by the dozen.
ENVIRONMENT = {**os.environ, "ASAN_OPTIONS": os.environ.get("ASAN_OPTIONS", "") + ":detect_leaks=0"}


class Disk:
    """with Disk(program) as disk: shows disk.backing in disk.folder. Ends the process with 77 where mounting fails."""

    def __init__(self, program, *lines, fill=lambda backing: None):
        """Obeys the control lines from the beginning; fill may put something into the backing folder."""
        self.scratch = pathlib.Path(tempfile.mkdtemp(prefix="test_disk."))
        self.backing, self.folder, self.log_file = (self.scratch / name for name in ("backing", "mounted", "log"))
        self.backing.mkdir()
        self.folder.mkdir()
        self.control_file = self.folder / ".test-disk-control"
        self.command = [program, self.backing, self.folder, "--log", self.log_file]
        self.command += [word for line in lines for word in ("--set", line)]
        fill(self.backing)

    def __enter__(self):
        with open(self.scratch / "messages", "w") as messages:
            self.process = subprocess.Popen(self.command, stderr=messages, env=ENVIRONMENT)
        until = time.monotonic() + 20
        while not self.control_file.exists() and self.process.poll() is None and time.monotonic() < until:
            time.sleep(0.01)
        if not self.control_file.exists():
            said = (self.scratch / "messages").read_text()
            self.__exit__()
            print("the test disk was not mounted:", said)
            sys.exit(SKIPPED if self.process.returncode == SKIPPED else 1)
        return self

    def __exit__(self, *raised):
        self.process.terminate()
        try:
            self.process.wait(20)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
        if str(self.folder) in pathlib.Path("/proc/mounts").read_text():
            # It may be about to be unmounted already.
            subprocess.run(["fusermount3", "-u", "-z", self.folder], stderr=subprocess.DEVNULL)
        shutil.rmtree(self.scratch)

    def control(self, line):
        """The line is in force when this returns; one that is not understood raises OSError."""
        with open(self.control_file, "w") as control:
            control.write(line + "\n")

    def counts(self):
        """How often each operation was asked for, by its name."""
        return {name: int(count) for name, count in map(str.split, self.control_file.read_text().splitlines())}

    def log(self):
        """The changes and flushes so far, each as a list of bytes: a word and its fields."""
        lines = self.log_file.read_bytes().splitlines()
        return [[urllib.parse.unquote_to_bytes(field) for field in line.split(b" ")] for line in lines]
