#pragma once

#include <sqlite3.h>

#include <atomic>

namespace quillmar {

// While it exists, the file system of every database that SQLite opens. Counts what reaches the disk and can
// refuse it.
class SteerableVfs {
 public:
  SteerableVfs();
  SteerableVfs(const SteerableVfs&) = delete;
  SteerableVfs& operator=(const SteerableVfs&) = delete;
  ~SteerableVfs();

  int syncs() const { return syncs_; }
  int writes() const { return writes_; }
  // Writes fail with SQLITE_FULL and shared memory can't grow.
  void setFull(bool full) { full_ = full; }
  // One write fails, the next but this many.
  void failAfter(int writes) { failing_ = writes_ + writes + 1; }

 private:
  struct File;
  struct Methods;

  sqlite3_vfs vfs_{};
  std::atomic<int> syncs_ = 0;
  std::atomic<int> writes_ = 0;
  std::atomic<bool> full_ = false;
  std::atomic<int> failing_ = 0;  // the number of the write
};

}  // namespace quillmar
