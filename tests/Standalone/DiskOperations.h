// The operations by which a program changes the disk, so that a test can let each of them go wrong.
#pragma once

namespace vorlent {

enum class DiskTrouble {
  Death,         // the process is killed in place of the operation
  FullOnce,      // the operation finds no space
  FullFromHere,  // so do all behind it, until the trouble ends
};

// Lets operation number `operation` from here on, counted from 0, go wrong. Operations are the system calls
// of the whole process that write, make, rename, remove or sync files; a removal finds space always.
void BeginDiskTrouble(long operation, DiskTrouble trouble);

// Ends it, and tells whether the operation was reached.
bool EndDiskTrouble();

}  // namespace vorlent
