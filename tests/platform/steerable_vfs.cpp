#include "tests/platform/steerable_vfs.h"

#include <memory>

namespace quillmar {

// SQLite allocates this object with the real file behind it.
struct SteerableVfs::File : sqlite3_file {
  SteerableVfs* owner = nullptr;

  sqlite3_file* real() { return reinterpret_cast<sqlite3_file*>(this + 1); }
  const sqlite3_io_methods& methods() { return *real()->pMethods; }
  static File& of(sqlite3_file* file) { return *static_cast<File*>(file); }
};

struct SteerableVfs::Methods {
  static int close(sqlite3_file* file) { return File::of(file).methods().xClose(File::of(file).real()); }
  static int read(sqlite3_file* file, void* to, int size, sqlite3_int64 at) {
    return File::of(file).methods().xRead(File::of(file).real(), to, size, at);
  }
  static int write(sqlite3_file* file, const void* from, int size, sqlite3_int64 at) {
    File& self = File::of(file);
    const bool fails = ++self.owner->writes_ == self.owner->failing_;
    return fails || self.owner->full_ ? SQLITE_FULL : self.methods().xWrite(self.real(), from, size, at);
  }
  static int truncate(sqlite3_file* file, sqlite3_int64 size) {
    return File::of(file).methods().xTruncate(File::of(file).real(), size);
  }
  static int sync(sqlite3_file* file, int flags) {
    File& self = File::of(file);
    ++self.owner->syncs_;
    return self.methods().xSync(self.real(), flags);
  }
  static int fileSize(sqlite3_file* file, sqlite3_int64* size) {
    return File::of(file).methods().xFileSize(File::of(file).real(), size);
  }
  static int lock(sqlite3_file* file, int level) {
    return File::of(file).methods().xLock(File::of(file).real(), level);
  }
  static int unlock(sqlite3_file* file, int level) {
    return File::of(file).methods().xUnlock(File::of(file).real(), level);
  }
  static int checkReservedLock(sqlite3_file* file, int* out) {
    return File::of(file).methods().xCheckReservedLock(File::of(file).real(), out);
  }
  static int fileControl(sqlite3_file* file, int operation, void* argument) {
    return File::of(file).methods().xFileControl(File::of(file).real(), operation, argument);
  }
  static int sectorSize(sqlite3_file* file) {
    return File::of(file).methods().xSectorSize(File::of(file).real());
  }
  static int deviceCharacteristics(sqlite3_file* file) {
    return File::of(file).methods().xDeviceCharacteristics(File::of(file).real());
  }
  static int shmMap(sqlite3_file* file, int page, int size, int extend, void volatile** out) {
    File& self = File::of(file);
    return self.owner->full_ ? SQLITE_IOERR_SHMSIZE
                             : self.methods().xShmMap(self.real(), page, size, extend, out);
  }
  static int shmLock(sqlite3_file* file, int offset, int count, int flags) {
    return File::of(file).methods().xShmLock(File::of(file).real(), offset, count, flags);
  }
  static void shmBarrier(sqlite3_file* file) { File::of(file).methods().xShmBarrier(File::of(file).real()); }
  static int shmUnmap(sqlite3_file* file, int remove) {
    return File::of(file).methods().xShmUnmap(File::of(file).real(), remove);
  }
  static int fetch(sqlite3_file*, sqlite3_int64, int, void** out) {
    *out = nullptr;
    return SQLITE_OK;
  }
  static int unfetch(sqlite3_file*, sqlite3_int64, void*) { return SQLITE_OK; }

  static int open(sqlite3_vfs* vfs, const char* name, sqlite3_file* memory, int flags, int* outFlags) {
    static const sqlite3_io_methods table = {3,
                                             close,
                                             read,
                                             write,
                                             truncate,
                                             sync,
                                             fileSize,
                                             lock,
                                             unlock,
                                             checkReservedLock,
                                             fileControl,
                                             sectorSize,
                                             deviceCharacteristics,
                                             shmMap,
                                             shmLock,
                                             shmBarrier,
                                             shmUnmap,
                                             fetch,
                                             unfetch};
    auto* owner = static_cast<SteerableVfs*>(vfs->pAppData);
    File* file = std::construct_at(static_cast<File*>(memory));
    file->owner = owner;
    sqlite3_vfs* real = sqlite3_vfs_find("unix");
    const int result = real->xOpen(real, name, file->real(), flags, outFlags);
    file->pMethods = result == SQLITE_OK ? &table : nullptr;
    return result;
  }
};

SteerableVfs::SteerableVfs() {
  const sqlite3_vfs* real = sqlite3_vfs_find("unix");
  vfs_ = *real;
  vfs_.pNext = nullptr;
  vfs_.zName = "steerable";
  vfs_.pAppData = this;
  vfs_.szOsFile = static_cast<int>(sizeof(File)) + real->szOsFile;
  vfs_.xOpen = Methods::open;
  sqlite3_vfs_register(&vfs_, 1);
}

SteerableVfs::~SteerableVfs() { sqlite3_vfs_unregister(&vfs_); }

}  // namespace quillmar
