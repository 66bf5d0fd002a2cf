/**
 * @file
 * oru/core.h - result codes, error translation, initialisation and memory.
 *
 * Every fallible oru function returns an oruResult: a 32-bit value with the
 * bit layout of a Windows HRESULT.  Bit 31 set means failure; bits 16-28 hold
 * the facility and bits 0-15 the code within it.
 *
 *   facility 0       generic codes (0x800001xx, 0x8000400x, 0x8000FFFF)
 *   facility 7       a Win32 error number:  0x80070000 | number
 *   facility 0x1622  an errno value:        0x96220000 | errno
 *   facility 0x1623  the library's own codes
 */
#ifndef ORU_CORE_H
#define ORU_CORE_H

#include <stddef.h>
#include <stdint.h>

/** @def ORU_API
 * ORU_API marks the exported interface; everything else stays hidden. */
#if defined(_WIN32)
#if defined(ORU_BUILDING_LIBRARY)
#define ORU_API __declspec(dllexport)
#else
#define ORU_API __declspec(dllimport)
#endif
#elif defined(__GNUC__)
#define ORU_API __attribute__((visibility("default")))
#else
#define ORU_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** The result of a fallible function: negative for a failure. */
typedef int32_t oruResult;

/** Nonzero if r is a success code (bit 31 clear). */
#define ORU_SUCCEEDED(r) ((oruResult)(r) >= 0)
/** Nonzero if r is a failure code (bit 31 set). */
#define ORU_FAILED(r) ((oruResult)(r) < 0)

/** @{ */
/** The facility and code fields of a result. */
#define ORU_RESULT_FACILITY(r) ((((uint32_t)(r)) >> 16) & 0x1FFFu)
#define ORU_RESULT_CODE(r) (((uint32_t)(r)) & 0xFFFFu)
/** @} */

#define ORU_FACILITY_WIN32 0x0007u /**< Win32 error numbers */
#define ORU_FACILITY_POSIX 0x1622u /**< errno values */
#define ORU_FACILITY_ORU 0x1623u   /**< the library's own codes */

/** Success. */
#define ORU_OK ((oruResult)0x00000000)
/** Success, but the output space is exhausted: call again with more room. */
#define ORU_S_OUTPUT_FULL ((oruResult)0x00000001)

#define ORU_E_INVALID_STATE \
  ((oruResult)0x80000100u) /**< Operation not performed due to invalid state */
#define ORU_E_NOT_SUPPORTED ((oruResult)0x80000101u)   /**< Operation not supported */
#define ORU_E_READ_ONLY ((oruResult)0x80000102u)       /**< Read only attribute */
#define ORU_E_NULL_POINTER ((oruResult)0x80000103u)    /**< Invalid NULL pointer */
#define ORU_E_NOT_IMPLEMENTED ((oruResult)0x80004001u) /**< Not implemented */
#define ORU_E_NO_INTERFACE ((oruResult)0x80004002u)    /**< No such interface supported */
#define ORU_E_POINTER ((oruResult)0x80004003u)         /**< Invalid pointer */
#define ORU_E_ABORT ((oruResult)0x80004004u)           /**< Operation aborted */
#define ORU_E_FAIL ((oruResult)0x80004005u)            /**< Unspecified error */
#define ORU_E_UNEXPECTED ((oruResult)0x8000FFFFu)      /**< Unexpected failure */
#define ORU_E_ACCESS_DENIED ((oruResult)0x80070005u)   /**< Access is denied */
#define ORU_E_HANDLE ((oruResult)0x80070006u)          /**< The handle is invalid */
#define ORU_E_OUT_OF_MEMORY                                                                \
  ((oruResult)0x8007000Eu) /**< Not enough memory resources are available to complete this \
                              operation */
#define ORU_E_INVALID_ARG ((oruResult)0x80070057u)      /**< The parameter is incorrect */
#define ORU_E_BUSY ((oruResult)0x96230001u)             /**< Device or resource busy */
#define ORU_E_NAME_TOO_LONG ((oruResult)0x96230002u)    /**< Filename too long */
#define ORU_E_NOT_FOUND ((oruResult)0x96230003u)        /**< File or directory not found */
#define ORU_E_PATH_NOT_FOUND ((oruResult)0x96230004u)   /**< Path not found */
#define ORU_E_IS_DIRECTORY ((oruResult)0x96230005u)     /**< Is a directory */
#define ORU_E_READ_ONLY_FS ((oruResult)0x96230006u)     /**< Read-only file system or media */
#define ORU_E_NO_SUCH_PROCESS ((oruResult)0x96230007u)  /**< No such thread or process */
#define ORU_E_AGAIN ((oruResult)0x96230008u)            /**< Resource temporarily unavailable */
#define ORU_E_NO_SPACE ((oruResult)0x96230009u)         /**< No space left on device */
#define ORU_E_QUOTA ((oruResult)0x9623000Au)            /**< Disc quota exceeded */
#define ORU_E_EXISTS ((oruResult)0x9623000Bu)           /**< File or directory exists */
#define ORU_E_NAME_EXISTS ((oruResult)0x9623000Cu)      /**< Name exists */
#define ORU_E_NAME_NOT_FOUND ((oruResult)0x9623000Du)   /**< Name not found */
#define ORU_E_CORRUPTED ((oruResult)0x9623000Eu)        /**< File corrupted */
#define ORU_E_BUFFER_TOO_SMALL ((oruResult)0x9623000Fu) /**< Buffer too small */
#define ORU_E_NOT_EMPTY ((oruResult)0x96230010u)        /**< Not empty */
#define ORU_E_UNKNOWN_USER ((oruResult)0x96230011u)     /**< Unknown user */
#define ORU_E_HOSTNAME ((oruResult)0x96230012u)         /**< Can't get hostname */
#define ORU_E_DOMAINNAME ((oruResult)0x96230013u)       /**< Can't get domainname */
#define ORU_E_ARCHITECTURE ((oruResult)0x96230014u)     /**< Can't get architecture */
#define ORU_E_SYSTEM_NAME ((oruResult)0x96230015u)      /**< Can't get operating system name */
#define ORU_E_DSO_LOAD ((oruResult)0x96230016u)         /**< Can't load dynamic shared object */
#define ORU_E_DSO_UNLOAD ((oruResult)0x96230017u)       /**< Can't unload dynamic shared object */
#define ORU_E_SYMBOL ((oruResult)0x96230018u)           /**< Symbol lookup error */
#define ORU_E_TOO_MANY_FILES ((oruResult)0x96230019u)   /**< Too many open files */
#define ORU_E_EXEC_FORMAT ((oruResult)0x9623001Au)      /**< Exec format error */
#define ORU_E_CROSS_DEVICE ((oruResult)0x9623001Bu)     /**< Not the same device */
#define ORU_E_NO_DEVICE ((oruResult)0x9623001Cu)        /**< No such device */
#define ORU_E_BROKEN_PIPE ((oruResult)0x9623001Du)      /**< Broken pipe */
#define ORU_E_NO_CHILD ((oruResult)0x9623001Eu)         /**< No child processes */
#define ORU_E_LOCK_FAILED ((oruResult)0x9623001Fu)      /**< Record lock failed */
#define ORU_E_NO_LOCKS ((oruResult)0x96230020u)         /**< No record locks available */
#define ORU_E_IO ((oruResult)0x96230021u)               /**< I/O error */
#define ORU_E_NOT_READY ((oruResult)0x96230022u)        /**< Device not ready */
#define ORU_E_DIR_NOT_EMPTY ((oruResult)0x96230023u)    /**< Directory not empty */
#define ORU_E_BAD_ADDRESS ((oruResult)0x96230024u)      /**< Invalid memory address */
#define ORU_E_TIMEDOUT ((oruResult)0x96230025u)         /**< Connection timed out */
#define ORU_E_ILLEGAL_SEQUENCE ((oruResult)0x96230026u) /**< Illegal byte sequence */
#define ORU_E_NOT_REGULAR_FILE ((oruResult)0x96230027u) /**< Not a regular file */
#define ORU_E_RANGE ((oruResult)0x96230028u)            /**< Result out of range */
#define ORU_E_NOT_DIRECTORY ((oruResult)0x96230029u)    /**< Is not a directory */
#define ORU_E_ARG_OUT_OF_RANGE ((oruResult)0x9623002Cu) /**< Argument out of range */

/** Does nothing and returns ORU_OK.  The library initialises every facility
 * on first use; this call only gives callers a formal start-up point.
 *
 * Fatal errors.  When the operating system fails the library in a way no
 * call can report (a lock, event or thread-local slot of the thread module
 * cannot be created, the reaper thread cannot start), the library shows
 * "<context>: <system message>" under the caption "Fatal YDA error" and ends
 * the process with exit code 1.
 *  - Windows: a message box (MessageBoxA), unless the environment variable
 *    ORU_FATAL_STDERR is set (to anything) or the process has no interactive
 *    desktop (its window station is not visible: a service, a session
 *    without a desktop); then the line
 *    "Fatal YDA error: <context>: <system message>\n" goes to standard error
 *    instead.  Test runs set ORU_FATAL_STDERR, so that nothing waits for a
 *    click.
 *  - POSIX: that line always goes to standard error. */
ORU_API oruResult oruInitialize(void);

/** The version of the library, "MAJOR.MINOR.PATCH" (for example "0.1.0").
 * A constant string owned by the library; never null, never to be freed. */
ORU_API const char* oruGetVersion(void);

/** @{ */
/** Memory.  Everything the library hands to a caller is allocated here and is
 * released with oruFree.  Exhaustion is reported only by a null result. */
ORU_API void* oruMalloc(size_t size);
ORU_API void* oruCalloc(size_t count, size_t size);
/** @} */
/** A non-null pointer with size 0 frees the block and returns null; otherwise
 * realloc(pointer, size). */
ORU_API void* oruRealloc(void* pointer, size_t size);
/** Releases memory the library handed out; a null pointer is ignored. */
ORU_API void oruFree(void* pointer);
/** Copies a text (not null) into fresh memory; null when out of memory. */
ORU_API char* oruStrDup(const char* text);

/** The text of a result code, for people.  Valid at least until the calling
 * thread calls oruStrError again; not to be freed.  Null only when memory for
 * a formatted text is exhausted.
 *  - the library's own codes: their constant texts ("Device or resource
 *    busy");
 *  - Win32-facility codes (0x8007xxxx, among them ORU_E_INVALID_ARG,
 *    ORU_E_ACCESS_DENIED, ORU_E_OUT_OF_MEMORY and ORU_E_HANDLE): the system's
 *    message, as FormatMessageA gives it (on Windows in the system's
 *    language), trailing "\r\n" included ("The parameter is incorrect.\r\n"
 *    on an English Windows).  Where the system has no such messages, the
 *    library carries the English texts of every number that
 *    _oru_map_win32_error translates, so the same code prints the same text
 *    as on an English Windows; other numbers give "error 0x8007xxxx";
 *  - errno-facility codes (0x9622xxxx): strerror's text;
 *  - any other failure code: "error %#08x"; success codes, ORU_OK included:
 *    "unknown result code %#08x". */
ORU_API const char* oruStrError(oruResult code);

/*
 * For companion modules rather than applications; the translators are also
 * the supported way for an application to turn an errno value (or a Win32
 * error number) of its own into a result code, e.g. to report a failed
 * fopen through the same texts as the library's failures.
 */

/** @{ */
/** The same operations as oruMalloc, oruCalloc and oruFree. */
ORU_API void* _oru_malloc_tagged(size_t size);
ORU_API void* _oru_calloc_tagged(size_t count, size_t size);
ORU_API void _oru_free_tagged(void* pointer);
/** @} */
/** Plain realloc(pointer, size): unlike oruRealloc, size 0 is not special. */
ORU_API void* _oru_realloc_tagged(void* pointer, size_t size);

/** errno value -> result: 0 is ORU_OK, known values their code, anything else
 * 0x96220000 | err. */
ORU_API oruResult _oru_map_posix_error(int err);
/** Win32 error number -> result: 0 is ORU_OK, known numbers their code,
 * anything else 0x80070000 | err. */
ORU_API oruResult _oru_map_win32_error(uint32_t err);
/** The translation of the calling thread's last system error.  On Windows that
 * is GetLastError() through _oru_map_win32_error.  POSIX has no last Win32
 * error: there it is the translation of errno through _oru_map_posix_error. */
ORU_API oruResult _oru_map_last_win32_error(void);

#ifdef __cplusplus
}
#endif

#endif /* ORU_CORE_H */
