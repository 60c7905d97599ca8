// SPDX-License-Identifier: Apache-2.0
// Preloaded into a program (LD_PRELOAD), makes its calls for files below one folder fail, or ends
// the program there:
//   FULL_DISK_FOLDER  the folder; calls for files elsewhere are left alone and not counted
//   FULL_DISK_CALL    the number of the call that fails, from 1; 0: none
//   FULL_DISK_HOW     once | on (this one and all later ones that need room) | kill (SIGKILL)
//   FULL_DISK_ERROR   an errno in place of ENOSPC
//   FULL_DISK_LOG     a file that gets a line for each call, when it is made
// Calls are counted that create, write, bring to the disk, rename or close. Buffered writing of C
// is seen at its own calls, since the C library does not make the ones below through its table;
// what a failed fclose held is lost, as it is on a full disk.
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <signal.h>
#include <stdarg.h>
#include <stdatomic.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdio_ext.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

enum { kOnce, kOn, kKill };

static char folder[PATH_MAX];
static size_t folder_length;
static long failing_call;
static int how;
static int error_number;
static int log_descriptor = -1;
static atomic_long calls;

__attribute__((constructor)) static void begin(void) {
  const char* place = getenv("FULL_DISK_FOLDER");
  if (place == NULL || realpath(place, folder) == NULL) return;
  folder_length = strlen(folder);
  const char* number = getenv("FULL_DISK_CALL");
  failing_call = number != NULL ? atol(number) : 0;
  const char* kind = getenv("FULL_DISK_HOW");
  if (kind != NULL && strcmp(kind, "on") == 0) how = kOn;
  if (kind != NULL && strcmp(kind, "kill") == 0) how = kKill;
  const char* error = getenv("FULL_DISK_ERROR");
  error_number = error != NULL ? atoi(error) : ENOSPC;
  const char* log = getenv("FULL_DISK_LOG");
  if (log != NULL) {
    log_descriptor =
        (int)syscall(SYS_openat, AT_FDCWD, log, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
  }
}

static void* next_of(const char* name) {
  void* found = dlsym(RTLD_NEXT, name);
  if (found == NULL) abort();
  return found;
}

// Function pointers of ISO C do not come from dlsym's.
#define NEXT(type, name)                              \
  static type* next;                                  \
  if (next == NULL) {                                 \
    void* found = next_of(name);                      \
    memcpy((void*)&next, (void*)&found, sizeof next); \
  }

static bool is_below(const char* path) {
  return folder_length > 0 && strncmp(path, folder, folder_length) == 0 &&
         (path[folder_length] == '/' || path[folder_length] == '\0');
}

static bool path_of(int descriptor, char* path) {
  char name[64];
  snprintf(name, sizeof name, "/proc/self/fd/%d", descriptor);
  const ssize_t length = readlink(name, path, PATH_MAX - 1);
  path[length > 0 ? length : 0] = '\0';
  return length > 0;
}

/// A path may not exist yet; that of its folder does.
static bool absolute(int at, const char* path, char* result) {
  char whole[2 * PATH_MAX];
  char base[PATH_MAX] = "";
  if (path[0] != '/') {
    if (at == AT_FDCWD ? getcwd(base, sizeof base) == NULL : !path_of(at, base)) return false;
    snprintf(whole, sizeof whole, "%s/%s", base, path);
  } else {
    snprintf(whole, sizeof whole, "%s", path);
  }
  char* slash = strrchr(whole, '/');
  const char* name = slash + 1;
  char resolved[PATH_MAX];
  *slash = '\0';
  if (realpath(whole[0] != '\0' ? whole : "/", resolved) == NULL) return false;
  if (strlen(resolved) + strlen(name) + 2 > PATH_MAX) return false;
  strcpy(result, resolved);
  strcat(result, "/");
  strcat(result, name);
  return true;
}

/// Counts the call. Whether it has to fail, errno then says why.
static bool fails(const char* what, const char* path, bool needs_room) {
  const long number = atomic_fetch_add(&calls, 1) + 1;
  if (log_descriptor >= 0) {
    char line[PATH_MAX + 64];
    const int length = snprintf(line, sizeof line, "%s %s\n", what, path);
    if (length > 0) syscall(SYS_write, log_descriptor, line, (size_t)length);
  }
  if (failing_call == 0 || number < failing_call) return false;
  if (number > failing_call && (how != kOn || !needs_room)) return false;
  if (how == kKill) raise(SIGKILL);
  errno = error_number;
  return true;
}

static bool descriptor_fails(const char* what, int descriptor, bool needs_room) {
  const int before = errno;
  char path[PATH_MAX];
  const bool failing = folder_length > 0 && path_of(descriptor, path) && is_below(path) &&
                       fails(what, path, needs_room);
  if (!failing) errno = before;
  return failing;
}

static bool path_fails(const char* what, int at, const char* path, bool needs_room) {
  const int before = errno;
  char whole[PATH_MAX];
  const bool failing = folder_length > 0 && absolute(at, path, whole) && is_below(whole) &&
                       fails(what, whole, needs_room);
  if (!failing) errno = before;
  return failing;
}

// Files by descriptor.

typedef ssize_t write_type(int, const void*, size_t);
ssize_t write(int descriptor, const void* bytes, size_t size) {
  NEXT(write_type, "write")
  return descriptor_fails("write", descriptor, true) ? -1 : next(descriptor, bytes, size);
}

typedef ssize_t pwrite_type(int, const void*, size_t, off_t);
ssize_t pwrite(int descriptor, const void* bytes, size_t size, off_t offset) {
  NEXT(pwrite_type, "pwrite")
  return descriptor_fails("pwrite", descriptor, true) ? -1 : next(descriptor, bytes, size, offset);
}
ssize_t pwrite64(int descriptor, const void* bytes, size_t size, off_t offset) {
  return pwrite(descriptor, bytes, size, offset);
}

typedef ssize_t writev_type(int, const struct iovec*, int);
ssize_t writev(int descriptor, const struct iovec* parts, int count) {
  NEXT(writev_type, "writev")
  return descriptor_fails("writev", descriptor, true) ? -1 : next(descriptor, parts, count);
}

typedef int ftruncate_type(int, off_t);
int ftruncate(int descriptor, off_t size) {
  NEXT(ftruncate_type, "ftruncate")
  return descriptor_fails("ftruncate", descriptor, size > 0) ? -1 : next(descriptor, size);
}
int ftruncate64(int descriptor, off_t size) { return ftruncate(descriptor, size); }

typedef int descriptor_type(int);
int fsync(int descriptor) {
  NEXT(descriptor_type, "fsync")
  return descriptor_fails("fsync", descriptor, true) ? -1 : next(descriptor);
}
int fdatasync(int descriptor) {
  NEXT(descriptor_type, "fdatasync")
  return descriptor_fails("fdatasync", descriptor, true) ? -1 : next(descriptor);
}
int syncfs(int descriptor) {
  NEXT(descriptor_type, "syncfs")
  return descriptor_fails("syncfs", descriptor, true) ? -1 : next(descriptor);
}
/// The descriptor is gone in any case, and only one that could be written has anything to say.
int close(int descriptor) {
  NEXT(descriptor_type, "close")
  const int before = errno;
  const int flags = folder_length > 0 ? fcntl(descriptor, F_GETFL) : -1;
  errno = before;
  const bool failing =
      flags >= 0 && (flags & O_ACCMODE) != O_RDONLY && descriptor_fails("close", descriptor, false);
  const int result = next(descriptor);
  if (!failing) return result;
  errno = error_number;
  return -1;
}

// Names.

static bool creates(int flags) { return (flags & O_CREAT) != 0; }

#define MODE_OF(flags)                     \
  mode_t mode = 0;                         \
  if (creates(flags)) {                    \
    va_list more;                          \
    va_start(more, flags);                 \
    mode = (mode_t)va_arg(more, unsigned); \
    va_end(more);                          \
  }

typedef int open_type(const char*, int, ...);
typedef int openat_type(int, const char*, int, ...);
static int open_anyhow(int at, const char* path, int flags, mode_t mode) {
  NEXT(openat_type, "openat")
  if (creates(flags) && path_fails("open", at, path, true)) return -1;
  return next(at, path, flags, mode);
}
int open(const char* path, int flags, ...) {
  MODE_OF(flags)
  return open_anyhow(AT_FDCWD, path, flags, mode);
}
int open64(const char* path, int flags, ...) {
  MODE_OF(flags)
  return open_anyhow(AT_FDCWD, path, flags, mode);
}
int openat(int at, const char* path, int flags, ...) {
  MODE_OF(flags)
  return open_anyhow(at, path, flags, mode);
}
int openat64(int at, const char* path, int flags, ...) {
  MODE_OF(flags)
  return open_anyhow(at, path, flags, mode);
}

typedef int mkdir_type(const char*, mode_t);
int mkdir(const char* path, mode_t mode) {
  NEXT(mkdir_type, "mkdir")
  // One that is there already is no question of room.
  struct stat there;
  if (stat(path, &there) == 0) return next(path, mode);
  return path_fails("mkdir", AT_FDCWD, path, true) ? -1 : next(path, mode);
}

typedef int rename_type(const char*, const char*);
int rename(const char* from, const char* to) {
  NEXT(rename_type, "rename")
  return path_fails("rename", AT_FDCWD, to, true) ? -1 : next(from, to);
}

typedef int renameat2_type(int, const char*, int, const char*, unsigned);
int renameat2(int from_at, const char* from, int to_at, const char* to, unsigned flags) {
  NEXT(renameat2_type, "renameat2")
  if (path_fails("renameat2", to_at, to, true)) return -1;
  return next(from_at, from, to_at, to, flags);
}

// Removal never fails here: it needs no room. It is a moment to be killed at.

typedef int path_type(const char*);
int unlink(const char* path) {
  NEXT(path_type, "unlink")
  if (how == kKill) path_fails("unlink", AT_FDCWD, path, false);
  return next(path);
}
typedef int unlinkat_type(int, const char*, int);
int unlinkat(int at, const char* path, int flags) {
  NEXT(unlinkat_type, "unlinkat")
  if (how == kKill) path_fails("unlinkat", at, path, false);
  return next(at, path, flags);
}

// Files of C.

typedef FILE* fopen_type(const char*, const char*);
static FILE* open_file(const char* path, const char* mode) {
  NEXT(fopen_type, "fopen")
  const bool writes = strpbrk(mode, "wa+") != NULL;
  return writes && path_fails("fopen", AT_FDCWD, path, true) ? NULL : next(path, mode);
}
FILE* fopen(const char* path, const char* mode) { return open_file(path, mode); }
FILE* fopen64(const char* path, const char* mode) { return open_file(path, mode); }

typedef size_t fwrite_type(const void*, size_t, size_t, FILE*);
size_t fwrite(const void* bytes, size_t size, size_t count, FILE* file) {
  NEXT(fwrite_type, "fwrite")
  if (!descriptor_fails("fwrite", fileno(file), true)) return next(bytes, size, count, file);
  file->_flags |= _IO_ERR_SEEN;  // Writers that try again until ferror() would never end.
  return 0;
}

typedef int file_type(FILE*);
int fflush(FILE* file) {
  NEXT(file_type, "fflush")
  if (file == NULL || !descriptor_fails("fflush", fileno(file), true)) return next(file);
  file->_flags |= _IO_ERR_SEEN;
  return EOF;
}
int fclose(FILE* file) {
  NEXT(file_type, "fclose")
  const bool failing = __fpending(file) > 0 && descriptor_fails("fclose", fileno(file), true);
  if (failing) __fpurge(file);
  const int result = next(file);
  if (!failing) return result;
  errno = error_number;
  return EOF;
}
