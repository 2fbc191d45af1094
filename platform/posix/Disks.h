#pragma once

#include <sys/types.h>

/// Whether all who can change the files of this disk do so through this system's kernel. Only then does a lock that one
/// of them takes hold for the others, and only then does the kernel's own word on the whole disk count.
bool IsOfThisSystem(int file);

/// Whether the disk is an ext file system that keeps a journal on itself.
bool HasExtJournal(dev_t disk);
