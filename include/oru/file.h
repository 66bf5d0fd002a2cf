/**
 * @file
 * oru/file.h - files, directories and paths.
 *
 * Paths are narrow strings in the system code page.  Every function returns
 * an oruResult; system failures are translated into the common result codes
 * (see oru/core.h), so the same failure gives the same code on every platform.
 *
 * Separators and roots.  Both '\' and '/' are read as separators everywhere.
 * Where the library builds a path itself (joining, temporary names) it writes
 * the platform's separator: '\' on Windows, '/' on POSIX systems.  The
 * Windows forms keep their meaning on every platform in the text functions:
 * "X:" followed by a separator is a drive root and two equal leading
 * separators start a UNC root ("\\server\share\").  On POSIX systems a path
 * that begins with '/' (and is not such a UNC form) is absolute as well, with
 * that '/' as its root; this applies to oruIsAbsolutePath, to the root used by
 * oruGetAbsolutePath and oruGetCanonicalPath, and to the volume looked up for
 * the allocation unit.  A lone leading '\' is not absolute anywhere.
 *
 * Output buffers.  Every function that writes a path takes the buffer and its
 * size in bytes and gives ORU_E_BUFFER_TOO_SMALL when the result and its
 * terminating zero do not fit; a partly written result may then remain in the
 * buffer.  oruAppendToPath, oruGetBasename and oruGetDirname accept an output
 * buffer that is (or overlaps) one of their inputs.  Null path or buffer
 * arguments give ORU_E_INVALID_ARG unless stated otherwise.
 */
#ifndef ORU_FILE_H
#define ORU_FILE_H

#include "oru/core.h"
#include "oru/time.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Files.
 */

/** An open file: the system's handle.  On POSIX systems it is the file
 * descriptor number converted to a pointer, so (oruFile)(intptr_t)fd wraps a
 * descriptor the caller already has (a pipe end, say); on Windows it is the
 * HANDLE itself.  Owned by the library until oruClose. */
typedef void* oruFile;

/** @{ */
/** Open flags: one or both access bits, then how to treat an existing file. */
#define ORU_OPEN_READ 1    /**< open for reading */
#define ORU_OPEN_WRITE 2   /**< open for writing */
#define ORU_OPEN_CREATE 16 /**< create the file if it does not exist */
#define ORU_OPEN_EXCL 32   /**< with ORU_OPEN_CREATE: fail if it exists */
#define ORU_OPEN_TRUNC 64  /**< truncate an existing file */
/** @} */

/** @{ */
/** Seek origins; any other value is invalid. */
#define ORU_SEEK_SET 1 /**< from the start of the file */
#define ORU_SEEK_CUR 2 /**< from the current position */
#define ORU_SEEK_END 3 /**< from the end of the file */
/** @} */

/** @{ */
/** Lock flags. */
#define ORU_LOCK_ALL 1       /**< the whole file: offset and length are ignored */
#define ORU_LOCK_EXCLUSIVE 2 /**< exclusive rather than shared */
#define ORU_LOCK_NONBLOCK 4  /**< fail at once with ORU_E_AGAIN instead of waiting */
/** @} */

/** Opens or creates a file.  flags & 3 selects the access (0 gives
 * ORU_E_INVALID_ARG).  With ORU_OPEN_CREATE and ORU_OPEN_EXCL the file must
 * not exist (ORU_E_EXISTS); otherwise ORU_OPEN_CREATE creates a missing file
 * and ORU_OPEN_TRUNC empties an existing one (ORU_OPEN_TRUNC without
 * ORU_OPEN_CREATE needs write access, else ORU_E_INVALID_ARG);
 * ORU_OPEN_EXCL alone is ignored.  Files are shared: other handles may read,
 * write and remove the file meanwhile.  A directory gives
 * ORU_E_ACCESS_DENIED, a missing file ORU_E_NOT_FOUND (on Windows
 * ORU_E_PATH_NOT_FOUND when a directory on the way is missing); other system
 * failures their translation.  The handle is not inherited by programs the
 * process starts. */
ORU_API oruResult oruOpenFile(const char* path, int flags, oruFile* file);

/** Closes a handle.  The system's failure is translated (ORU_E_HANDLE for a
 * handle that is not open). */
ORU_API oruResult oruClose(oruFile file);

/** Reads up to count bytes at the file position into buffer and stores the
 * number read in *bytesRead (required): 0 at the end of the file, and also
 * when the other end of a pipe has been closed.  Reads from a regular file
 * return fewer bytes than asked for only at its end; a pipe or terminal gives
 * what is available.  A count of 2^32 or more gives ORU_E_INVALID_ARG before
 * the system is asked; so do a null bytesRead and a null buffer with a
 * non-zero count.  On failure *bytesRead is not written. */
ORU_API oruResult oruRead(oruFile file, void* buffer, size_t count, size_t* bytesRead);

/** Writes count bytes at the file position: all of them, or the call fails.
 * The number written is stored in *bytesWritten when it is not null.  Count
 * and null-buffer rules as oruRead.  A handle opened without write access
 * gives ORU_E_HANDLE on POSIX systems, ORU_E_ACCESS_DENIED on Windows.  (On
 * POSIX systems writing to a pipe whose reader has gone raises SIGPIPE unless
 * the process ignores it; then the result is ORU_E_BROKEN_PIPE.) */
ORU_API oruResult oruWrite(oruFile file, const void* buffer, size_t count, size_t* bytesWritten);

/** Moves the file position by offset from origin (ORU_SEEK_SET, _CUR, _END;
 * anything else gives ORU_E_INVALID_ARG) and stores the new position in
 * *position when it is not null.  A position before the start of the file
 * gives ORU_E_INVALID_ARG. */
ORU_API oruResult oruSeek(oruFile file, int origin, int64_t offset, uint64_t* position);

/** @{ */
/** Reads or writes at the given offset, otherwise as oruRead and oruWrite
 * (oruSeekAndRead requires bytesRead; on a pipe the offset is ignored).  The
 * file position afterwards is not specified across platforms: seek before
 * mixing positional and sequential calls.  An offset of 2^63 or more gives
 * ORU_E_INVALID_ARG. */
ORU_API oruResult oruSeekAndRead(oruFile file, uint64_t offset, void* buffer, size_t count,
                                 size_t* bytesRead);
ORU_API oruResult oruSeekAndWrite(oruFile file, uint64_t offset, const void* buffer, size_t count,
                                  size_t* bytesWritten);
/** @} */

/** Locks length bytes from offset (the whole file with ORU_LOCK_ALL), shared
 * or with ORU_LOCK_EXCLUSIVE exclusive.  Locks belong to the handle: a second
 * handle of the same file, in this process or another, conflicts with them;
 * they are advisory (reading and writing are not prevented) and go away when
 * the handle is closed.  A conflicting lock makes the call wait, or with
 * ORU_LOCK_NONBLOCK fail with ORU_E_AGAIN.  On POSIX systems an exclusive
 * lock needs a handle open for writing and a shared one a handle open for
 * reading (ORU_E_HANDLE otherwise).  A length of 0 locks nothing and
 * succeeds; a range reaching beyond 2^63 extends to the end of all possible
 * offsets.  Other failures are translated. */
ORU_API oruResult oruLockFile(oruFile file, int flags, uint64_t offset, uint64_t length);
/** Releases a lock taken with the same range rules; the exclusive and
 * non-blocking bits are ignored.  On Windows the range must be one that was
 * locked, exactly (unlocking part of a lock, or several locks at once,
 * fails); on POSIX systems any range may be released. */
ORU_API oruResult oruUnlockFile(oruFile file, int flags, uint64_t offset, uint64_t length);

/** @{ */
/** File information; mask groups. */
#define ORU_FINFO_BASIC 15    /**< type, size, atime and mtime, always together */
#define ORU_FINFO_BLKSIZE 16  /**< the allocation unit of the volume */
#define ORU_FINFO_RESERVED 32 /**< accepted, never filled */
/** @} */

#define ORU_FILETYPE_DIRECTORY 1 /**< oruFileInfo::type of a directory */
#define ORU_FILETYPE_OTHER 3     /**< oruFileInfo::type of anything else */

/** What oruGetFileInfo reports about a file. */
typedef struct oruFileInfo {
  uint32_t mask;    /**< in: the groups asked for; out: the groups filled */
  uint32_t type;    /**< ORU_FILETYPE_DIRECTORY or ORU_FILETYPE_OTHER */
  uint64_t size;    /**< bytes */
  oruTimeVal atime; /**< last access */
  oruTimeVal mtime; /**< last modification */
  uint32_t blksize; /**< allocation unit of the volume in bytes */
} oruFileInfo;

/** Fills the groups info->mask asks for.  A mask above 63 gives
 * ORU_E_INVALID_ARG; ORU_FINFO_RESERVED is accepted and never filled.  The
 * mask is reset first and each group's bits are set once it is filled; on a
 * failure the mask says what was filled before it.  Symbolic links are
 * followed.  The allocation unit is that of the volume holding the path when
 * it is absolute, and of the current directory's volume when it is not.  On
 * Windows the volume query is given an absolute path whole (only a UNC root
 * without its closing separator gets one), so the path must name a directory:
 * a file gives ORU_E_INVALID_ARG. */
ORU_API oruResult oruGetFileInfo(const char* path, oruFileInfo* info);

/** Sets the last access and modification times of a file or directory; a
 * null time is left as it is.  Times are kept to the microsecond where the
 * file system allows. */
ORU_API oruResult oruSetFileTime(const char* path, const oruTimeVal* accessTime,
                                 const oruTimeVal* modificationTime);

/** Sets both times of a file to now, creating it (empty) when flags contain
 * ORU_OPEN_CREATE.  The file is opened for writing: a directory fails
 * (ORU_E_IS_DIRECTORY on POSIX systems; Windows refuses to open it,
 * ORU_E_ACCESS_DENIED), as does a file the caller may not write. */
ORU_API oruResult oruTouchFile(const char* path, int flags);

/** Renames a file.  A directory gives ORU_E_IS_DIRECTORY; an existing target
 * is never replaced (ORU_E_EXISTS), and the check and the rename are one
 * step.  A target on another volume gives ORU_E_CROSS_DEVICE on POSIX
 * systems; Windows moves the file there by copying it. */
ORU_API oruResult oruMoveFile(const char* oldPath, const char* newPath);

/** Removes a file; a directory gives ORU_E_IS_DIRECTORY. */
ORU_API oruResult oruRemoveFile(const char* path);

/** @{ */
/** Creates a directory, or removes an empty one; failures translated.  A
 * directory that is not empty gives ORU_E_DIR_NOT_EMPTY on every platform.
 * Removing a file that is no directory gives ORU_E_PATH_NOT_FOUND on POSIX
 * systems and ORU_E_INVALID_ARG (an invalid directory name) on Windows. */
ORU_API oruResult oruCreateDirectory(const char* path);
ORU_API oruResult oruRemoveDirectory(const char* path);
/** @} */

/*
 * Paths.
 */

/** 1 if the path begins with two equal separators, with an ASCII letter, a
 * colon and a separator, or (POSIX systems) with '/'; else 0 (also for
 * null). */
ORU_API int oruIsAbsolutePath(const char* path);

/** base, then the platform separator unless base is empty or ends in a
 * separator, then name (appended even when it is absolute itself). */
ORU_API oruResult oruAppendToPath(const char* base, const char* name, char* out, size_t size);

/** The text after the last separator ("" when the path ends in one), or the
 * whole path when it has none. */
ORU_API oruResult oruGetBasename(const char* path, char* out, size_t size);

/** The path without its last component and the separators before it: "."
 * for a bare name, "X:" for "X:name", a root keeps its separator (<tt>C:\\a</tt>
 * gives <tt>C:\\</tt>, <tt>\\a</tt> gives <tt>\\</tt>), and a UNC prefix is kept whole
 * (`"\\server\share\dir\file"` gives `"\\server\share\dir"`,
 * `"\\server\share"` itself). */
ORU_API oruResult oruGetDirname(const char* path, char* out, size_t size);

/** The absolute form of a path, lexically: a path that is not absolute is
 * joined to the current directory (so "C:x" and "\x" are taken as names
 * under it), then the text after the root is cleaned up left to right: runs
 * of separators become one (the first as written, no conversion); at the
 * start of a component "." and a separator are dropped, a "." before any
 * other character or the end is dropped alone ("a\.b" gives "a\b"), ".."
 * and a separator remove the last component (never the root), and a ".."
 * before anything else drops both dots without going up.  No root:
 * ORU_E_INVALID_ARG; no memory: ORU_E_OUT_OF_MEMORY. */
ORU_API oruResult oruGetAbsolutePath(const char* path, char* out, size_t size);

/** The canonical path of an existing file or directory, with links resolved.
 * On Windows: the system's final path of the file without its
 * <tt>\\\\?\\</tt> prefix (<tt>\\\\?\\UNC\\</tt> becomes
 * <tt>\\\\</tt>), so with long names in their true case; where the system
 * has no final-path query, the full path with the drive letter in upper case
 * and each name as the directory lists it (a UNC path then only lexically,
 * as oruGetAbsolutePath).  size of 2^32 or more gives ORU_E_INVALID_ARG; a
 * missing path its translated error. */
ORU_API oruResult oruGetCanonicalPath(const char* path, char* out, size_t size);

/** The current directory; on Windows with short (8.3) names expanded to
 * their long form.  size of 2^32 or more gives ORU_E_INVALID_ARG. */
ORU_API oruResult oruGetCurrentDirectory(char* out, size_t size);

/** @{ */
/** Creates a new, empty temporary directory or file and writes its name:
 * directory, a separator (unless the directory is empty or ends in one),
 * prefix, 8 lower-case hexadecimal digits and suffix.  directory, prefix and
 * suffix may be null: the directory then comes from the environment variable
 * TMPDIR or else is the system's temporary directory (on Windows the one
 * GetTempPath names, in long form), prefix and suffix are empty.  The digits
 * come from a counter per function that starts at the process id shifted left
 * by 16 and moves on after every name drawn; a name that exists already is
 * skipped.  On POSIX systems the directory is made with mode 0700 and the
 * file with mode 0600.  ORU_E_BUFFER_TOO_SMALL before anything is created
 * when the name cannot fit; other failures translated. */
ORU_API oruResult oruGetTempDirName(const char* directory, const char* prefix, const char* suffix,
                                    char* out, size_t size);
ORU_API oruResult oruGetTempFileName(const char* directory, const char* prefix, const char* suffix,
                                     char* out, size_t size);
/** @} */

/*
 * Directories.
 */

/** An open directory listing, owned by the library until oruCloseDir. */
typedef struct oruDirRecord* oruDir;

/** Opens a directory for reading its names.  A missing path or one that is
 * not a directory gives the translated system error (POSIX systems:
 * ORU_E_NOT_FOUND, ORU_E_PATH_NOT_FOUND; Windows: ORU_E_PATH_NOT_FOUND,
 * ORU_E_INVALID_ARG); no memory: ORU_E_OUT_OF_MEMORY. */
ORU_API oruResult oruOpenDir(const char* path, oruDir* dir);

/** The next name, in the system's order, without "." and "..".  Returns
 * ORU_OK with the name, or the success value 1 at the end of the listing
 * with name set to "" (and again on every later call): a caller that only
 * tests ORU_FAILED must test for 1 as well.  A name that does not fit gives
 * ORU_E_BUFFER_TOO_SMALL and is lost (the next call goes on with the next
 * name); at the end a size of 0 gives ORU_E_BUFFER_TOO_SMALL.  A null dir, or
 * a null name with a non-zero size, gives ORU_E_INVALID_ARG. */
ORU_API oruResult oruReadDir(oruDir dir, char* name, size_t size);

/** Closes the listing and frees it, also when the system reports a failure
 * (then translated).  Null gives ORU_E_INVALID_ARG. */
ORU_API oruResult oruCloseDir(oruDir dir);

#ifdef __cplusplus
}
#endif

#endif /* ORU_FILE_H */
