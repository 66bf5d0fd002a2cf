/**
 * @file
 * oru/module.h - dynamic shared objects, version attributes, backtraces and
 * the list of loaded modules.
 *
 * Loading.  oruDsoLoad maps a shared object (a DLL on Windows, an ELF shared
 * object elsewhere) into the process and gives a handle owned by the library
 * until oruDsoUnload.  Every load is counted: loading the same path twice
 * gives two distinct handles, and the object stays mapped until both are
 * unloaded.  A handle is checked before use, so a handle that was already
 * unloaded, a null handle or a made-up value gives ORU_E_INVALID_ARG rather
 * than a crash; handles are never reused.
 *
 * Failures of the loader give ORU_E_DSO_LOAD, ORU_E_DSO_UNLOAD or
 * ORU_E_SYMBOL.  Why the loader failed is kept per thread:
 * oruDsoGetErrorText returns the text of the calling thread's most recent
 * failure of oruDsoLoad, oruDsoGetSymbol or oruDsoUnload - the loader's own
 * message (dlerror's on POSIX systems, the system message on Windows), or
 * the library's own words for a bad argument.
 *
 * Version attributes.  On Windows they come from the version resource of a
 * file.  ELF files have no version resource; there the same query answers
 * from what an ELF system does record:
 *
 *   ORU_VERSION_FILE_VERSION       the version in the name of the real file
 *                                  (after following symbolic links): what
 *                                  follows ".so." in it, "1.2.3" for
 *                                  "libx.so.1.2.3";
 *   ORU_VERSION_PRODUCT_VERSION    the interface version: what follows ".so."
 *                                  in the DT_SONAME, "1" for "libx.so.1";
 *   ORU_VERSION_INTERNAL_NAME      the DT_SONAME itself;
 *   ORU_VERSION_ORIGINAL_FILENAME  the last component of the real file name;
 *   ORU_VERSION_COMPANY_NAME, ORU_VERSION_FILE_DESCRIPTION and
 *   ORU_VERSION_PRODUCT_NAME       have no counterpart: ORU_E_NOT_FOUND.
 *
 * An attribute the file does not carry gives ORU_E_NOT_FOUND on every
 * system, so callers handle the ELF answers and a DLL without the attribute
 * with the same code.
 *
 * Backtraces.  oruCaptureBacktrace stores the calling thread's call sites
 * and allocates nothing, takes no lock of the library and may be used on a
 * fatal-error path.  oruSymbolizeAddress turns one address into module,
 * symbol, and - when the module has debug information and the library was
 * built with a DWARF reader (Windows: the debug-help library) - source file
 * and line.
 *
 * Every function may be called from any thread.
 */
#ifndef ORU_MODULE_H
#define ORU_MODULE_H

#include "oru/core.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Loading and symbols.
 */

/** A loaded shared object.  Opaque; owned by the library until oruDsoUnload. */
typedef struct oruDsoObject* oruDso;

/** Loads the shared object at path and stores a new handle in *dso.  The
 * path is given to the system's loader as it stands: a name without a
 * separator is searched for the way the loader searches (on POSIX systems
 * the library path; give "./name" for the current directory).  Symbols of the
 * object are resolved at load and are not made available to objects loaded
 * later.  A null path or dso gives ORU_E_INVALID_ARG; a missing file, a file
 * that is not a loadable object for this process, or an unresolved
 * dependency gives ORU_E_DSO_LOAD, with the loader's reason in
 * oruDsoGetErrorText.  On failure *dso is set to null (when dso is not
 * null). */
ORU_API oruResult oruDsoLoad(const char* path, oruDso* dso);

/** Looks the exported symbol name (a function or data object) up in the
 * object of dso and stores its address in *address.  A null, unloaded or
 * unknown dso, a null name or a null address gives ORU_E_INVALID_ARG; a name
 * the object does not export gives ORU_E_SYMBOL with the loader's reason in
 * oruDsoGetErrorText.  On failure *address is set to null (when address is
 * not null). */
ORU_API oruResult oruDsoGetSymbol(oruDso dso, const char* name, void** address);

/** Releases the handle.  The object leaves the process when no other handle
 * (nor the system, for its own dependencies) holds it; addresses obtained
 * through the handle must not be used afterwards.  A null, already unloaded
 * or unknown handle gives ORU_E_INVALID_ARG.  When the system fails to
 * unload the object the result is ORU_E_DSO_UNLOAD with the reason in
 * oruDsoGetErrorText; the handle is released even then. */
ORU_API oruResult oruDsoUnload(oruDso dso);

/** Writes the file of the object of dso into buffer (size bytes including
 * the terminating zero): the path under which the loader mapped it - for a
 * name the loader searched for, where it was found.  ORU_E_INVALID_ARG for
 * an unloaded or unknown dso, a null buffer or a size of 0;
 * ORU_E_BUFFER_TOO_SMALL when the path and its zero do not fit (the buffer
 * is then an empty string). */
ORU_API oruResult oruDsoGetPath(oruDso dso, char* buffer, size_t size);

/** The reason of the calling thread's most recent failure of oruDsoLoad,
 * oruDsoGetSymbol or oruDsoUnload; "" when the thread has had none (or
 * when memory to keep the text was exhausted).  Never null.  The text lives in per-thread storage
 * of the library: it stays valid until the next call of one of these functions on the same thread
 * (or the end of the thread), and is not to be freed. */
ORU_API const char* oruDsoGetErrorText(void);

/*
 * Version attributes (see the top of this file for what they mean on ELF
 * systems).
 */

#define ORU_VERSION_FILE_VERSION 1      /**< FileVersion */
#define ORU_VERSION_PRODUCT_VERSION 2   /**< ProductVersion */
#define ORU_VERSION_COMPANY_NAME 3      /**< CompanyName */
#define ORU_VERSION_FILE_DESCRIPTION 4  /**< FileDescription */
#define ORU_VERSION_PRODUCT_NAME 5      /**< ProductName */
#define ORU_VERSION_INTERNAL_NAME 6     /**< InternalName */
#define ORU_VERSION_ORIGINAL_FILENAME 7 /**< OriginalFilename */

/** Writes the string attribute (one of ORU_VERSION_*) of the file at path
 * into buffer (size bytes including the terminating zero).  ORU_E_INVALID_ARG
 * for a null path or buffer, a size of 0 or an unknown attribute;
 * ORU_E_BUFFER_TOO_SMALL when the text and its zero do not fit (the buffer is
 * then left an empty string); ORU_E_NOT_FOUND when the file does not carry
 * the attribute; ORU_E_EXEC_FORMAT when the file is not an executable or
 * shared object of a format the system uses; a file that cannot be opened or
 * read gives the translated system failure (ORU_E_NOT_FOUND for a missing
 * file). */
ORU_API oruResult oruGetFileVersionString(const char* path, int attribute, char* buffer,
                                          size_t size);

/** The numeric file and product versions: major, minor, build, revision. */
typedef struct oruVersionNumbers {
  uint16_t fileVersion[4];    /**< the file's version */
  uint16_t productVersion[4]; /**< the version of the product it belongs to */
} oruVersionNumbers;

/** Reads the fixed version numbers of the file at path.  On Windows they are
 * the fixed file information of the version resource.  On ELF systems
 * fileVersion holds the first four numbers of ORU_VERSION_FILE_VERSION and
 * productVersion those of ORU_VERSION_PRODUCT_VERSION ("1.2" gives 1, 2, 0,
 * 0); a version absent from the SONAME leaves productVersion all zero; a
 * file name with no version gives ORU_E_NOT_FOUND, and so does a version
 * with a part that is not a decimal number of at most 65535.  Null
 * arguments give ORU_E_INVALID_ARG; other failures as
 * oruGetFileVersionString.  *numbers is written only on success. */
ORU_API oruResult oruGetFileVersionNumbers(const char* path, oruVersionNumbers* numbers);

/*
 * Backtraces.
 */

/** Stores up to capacity call sites of the calling thread in addresses,
 * innermost first, and their number in *count.  The first entry is the call
 * of oruCaptureBacktrace itself in its caller, unless skip names a number of
 * innermost entries to leave out (skip 1 starts at the caller's caller).
 * Each entry is an address inside a call instruction (a return address less
 * one), so that symbolizing it names the line of the call.  Stops at the
 * outermost frame the unwinder finds.  Allocates nothing.  Null count, or
 * null addresses with a non-zero capacity, gives ORU_E_INVALID_ARG; a stack
 * deeper than capacity gives ORU_S_OUTPUT_FULL with capacity entries stored. */
ORU_API oruResult oruCaptureBacktrace(unsigned skip, void** addresses, size_t capacity,
                                      size_t* count);

/** What is known about one code address.  The strings live in the same
 * allocation as the structure. */
typedef struct oruSymbolInfo {
  const void* address;    /**< the address asked about */
  const char* modulePath; /**< the file of the module holding it; never null */
  const void* moduleBase; /**< the lowest address the module is mapped at */
  const char* symbolName; /**< the symbol covering it, C++ names demangled;
                             null when no symbol is known */
  size_t symbolOffset;    /**< address less the start of that symbol; 0 when
                             symbolName is null */
  const char* sourceFile; /**< the source file of the address, or null
                             without debug information */
  unsigned line;          /**< its line, or 0 when sourceFile is null */
} oruSymbolInfo;

/** Symbolizes address into one block allocated with oruMalloc and stored in
 * *info; the caller releases it with oruFree.  ORU_E_INVALID_ARG for a null
 * info; ORU_E_NOT_FOUND when no module of the process holds address (null
 * included); ORU_E_OUT_OF_MEMORY.  *info is null on failure. */
ORU_API oruResult oruSymbolizeAddress(const void* address, oruSymbolInfo** info);

/*
 * Modules.
 */

/** One module of the process. */
typedef struct oruModuleInfo {
  const char* path; /**< its file; for the main program the executable's path */
  const void* base; /**< the lowest address it is mapped at */
  size_t size;      /**< bytes from base to the end of its highest segment */
} oruModuleInfo;

/** Lists every module loaded in the process - the main program first, then
 * the shared objects in load order - as an array of *count entries in one
 * block allocated with oruMalloc (the paths live in the same block), stored
 * in *modules; the caller releases it with oruFree.  Modules the system
 * maps without a file (such as the Linux vDSO) are listed under the name the
 * system gives them.  ORU_E_INVALID_ARG for null arguments,
 * ORU_E_OUT_OF_MEMORY; on failure *modules is null and *count 0. */
ORU_API oruResult oruGetModuleList(oruModuleInfo** modules, size_t* count);

#ifdef __cplusplus
}
#endif

#endif /* ORU_MODULE_H */
