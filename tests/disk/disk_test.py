#!/usr/bin/env python3
"""Tests the test disk.

usage: tests/disk/disk_test.py TEST_DISK

Exits with 77 where nothing can be mounted.
"""

import errno
import os
import pathlib
import shutil
import sys
import threading
import time
import unittest

from disk import Disk

PROGRAM = os.path.abspath(sys.argv.pop(1)) if len(sys.argv) > 1 else sys.exit(__doc__)


def is_mounted(folder):
    """Also where the disk behind it has died."""
    return str(folder) in pathlib.Path("/proc/mounts").read_text()


class DiskTest(unittest.TestCase):
    def setUp(self):
        self.disk = Disk(PROGRAM)
        self.enterContext(self.disk)
        self.file = self.disk.folder / "folder" / "file"
        self.file.parent.mkdir()
        self.file.write_text("text")

    def test_passes_through_what_programs_do(self):
        other = self.disk.folder / "other"
        os.link(self.file, other)
        os.symlink("other", self.disk.folder / "symbolic")
        os.chmod(other, 0o640)
        os.utime(other, (1000, 2000))
        os.rename(self.file.parent, self.disk.folder / "renamed")
        with open(self.disk.folder / "symbolic", "a") as file:
            file.write(" and more")
        renamed = self.disk.folder / "renamed" / "file"
        self.assertEqual(renamed.read_text(), "text and more")
        self.assertEqual((self.disk.backing / "renamed" / "file").read_text(), "text and more")
        os.truncate(renamed, 2)
        self.assertEqual(other.stat().st_mode & 0o777, 0o640)
        (self.disk.folder / "new").write_text("new")
        with open(other) as file:
            os.replace(self.disk.folder / "new", other)
            self.assertEqual((file.read(), other.read_text(), renamed.read_text()), ("te", "new", "te"))
        self.assertEqual(sorted(os.listdir(self.disk.folder)), ["other", "renamed", "symbolic"])
        renamed.unlink()
        for number in range(1000):
            (self.disk.folder / "renamed" / f"{number:0200}").touch()
        self.assertEqual(len(os.listdir(self.disk.folder / "renamed")), 1000)
        shutil.rmtree(self.disk.folder / "renamed")
        self.assertFalse((self.disk.backing / "renamed").exists())

    def test_counts_every_look_and_forgets_when_told(self):
        self.disk.control("reset")
        for _ in range(3):
            os.stat(self.file)
        os.listdir(self.file.parent)
        counts = self.disk.counts()
        # Each name on the way is looked up; an opened folder is asked for its attributes too.
        self.assertEqual((counts["lookup"], counts["getattr"], counts["opendir"]), (3 * 2 + 1, 3 + 1, 1))
        self.disk.control("reset")
        self.assertEqual(self.disk.counts(), {})

    def test_delays_side_by_side(self):
        seconds = 0.3
        self.disk.control(f"delay getattr {int(seconds * 1e6)}")
        looks = [threading.Thread(target=os.stat, args=[self.file]) for _ in range(32)]
        began = time.monotonic()
        for look in looks:
            look.start()
        for look in looks:
            look.join()
        self.assertGreaterEqual(time.monotonic() - began, seconds)
        # One after another they would take as long as all of them together.
        self.assertLess(time.monotonic() - began, len(looks) * seconds / 2)

    def test_fails_operations_by_name_and_path_as_often_as_told(self):
        self.disk.control("fault getattr */fil? EACCES\nfault fsync * EIO 1\nfault rename */new ENOSPC\n")
        with self.assertRaises(PermissionError):
            os.stat(self.file)
        os.stat(self.file.parent)
        with self.assertRaises(OSError) as full:
            os.rename(self.file, self.disk.folder / "new")
        self.assertEqual(full.exception.errno, errno.ENOSPC)
        file = os.open(self.file, os.O_RDWR)
        with self.assertRaises(OSError) as broken:
            os.fsync(file)
        self.assertEqual(broken.exception.errno, errno.EIO)
        os.fsync(file)
        os.close(file)
        self.disk.control("clear")
        os.stat(self.file)

    def test_refuses_control_lines_that_say_nothing(self):
        for line in ("delay stat 5", "delay read soon", "fault read *", "fault read * EWRONG", "times coarse 0",
                     "times late 3", "ignore write", "hello"):
            with self.subTest(line), self.assertRaises(OSError):
                self.disk.control(line)

    def test_shows_times_coarse_and_shifted(self):
        os.utime(self.file, ns=(1_000_000_001, 1_003_500_000_000))
        self.disk.control("times coarse 2")
        self.assertEqual(self.file.stat().st_mtime_ns, 1002 * 10**9)
        self.disk.control("clear\ntimes shifted -3600")
        self.assertEqual(self.file.stat().st_mtime_ns, 1_003_500_000_000 - 3600 * 10**9)

    def test_logs_changes_and_flushes_in_order(self):
        before = len(self.disk.log())
        with open(self.file, "r+b", buffering=0) as file:
            inode = b"%d" % os.fstat(file.fileno()).st_ino
            file.seek(3)
            file.write(b"\x00 %\n")
            os.fdatasync(file.fileno())
            os.fchmod(file.fileno(), 0o600)
            self.disk.control("ignore fsync")
            os.fsync(file.fileno())
        os.rename(self.file, self.disk.folder / "a name")
        folder = os.open(self.disk.folder, os.O_RDONLY)
        os.fsync(folder)
        os.close(folder)
        self.disk.control("mark told success")
        root = b"%d" % self.disk.backing.stat().st_ino
        self.assertEqual(self.disk.log()[before:], [
            [b"write", inode, b"3", b"\x00 %\n"], [b"fsync", inode], [b"chmod", inode, b"384"],
            [b"rename", b"/folder/file", b"/a name"], [b"fsyncdir", root], [b"mark", b"told success"]])

    def test_leaves_nothing_mounted_however_it_ends(self):
        with Disk(PROGRAM) as disk:
            self.assertTrue(is_mounted(disk.folder))
            disk.process.terminate()
            self.assertEqual(disk.process.wait(), 0)
            self.assertFalse(is_mounted(disk.folder))
        with Disk(PROGRAM) as disk:
            disk.process.kill()
        self.assertFalse(is_mounted(disk.folder) or disk.scratch.exists())


if __name__ == "__main__":
    with Disk(PROGRAM):
        pass
    unittest.main()
