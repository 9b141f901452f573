#pragma once

// Stands in for the system header of the same name: statfs() is declared elsewhere on Linux.

#include_next <sys/mount.h>
#include <sys/vfs.h>
