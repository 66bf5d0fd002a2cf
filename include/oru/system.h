/**
 * @file
 * oru/system.h - facts about the machine, the account and the running
 * program, and a short-option parser (getopt).
 *
 * Every buffer-filling function writes a NUL-terminated string and answers
 * ORU_E_BUFFER_TOO_SMALL when the string's length is equal to or greater
 * than `size` (the terminator must fit): a text of size - 1 characters fits,
 * one of size characters does not.  A null buffer gives ORU_E_INVALID_ARG.
 * All functions may be called from any thread, except getopt.
 */
#ifndef ORU_SYSTEM_H
#define ORU_SYSTEM_H

#include "oru/core.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @{ */
/** The values of oruGetSystemType: the family the library was built for. */
#define ORU_SYSTEM_TYPE_POSIX 1   /**< Linux and other POSIX systems */
#define ORU_SYSTEM_TYPE_WINDOWS 2 /**< Windows */
/** @} */

/** The computer's name, lower-cased byte by byte.  On POSIX systems this is
 * the node name that uname() reports, with ASCII letters lower-cased (so the
 * answer does not depend on the locale); on Windows the name GetComputerNameA
 * reports, lower-cased with the C runtime's tolower (the same in the default
 * "C" locale).  A size that does not fit in 32 bits gives
 * ORU_E_INVALID_ARG; a failing system call its translated error. */
ORU_API oruResult oruGetHostname(char* buf, size_t size);

/** The domain of the account the process runs as (its effective user), not a
 * network name.  Windows answers the domain the account database names for
 * the user (LookupAccountNameA): the computer's name, as the system spells
 * it, for a local account.
 * POSIX systems answer:
 *   - for an account name written "user@domain" (directory services such as
 *     SSSD with fully-qualified names), the text after the last '@';
 *   - for "DOMAIN\user" (winbind), the text before the first '\';
 *   - for a local account (one listed in /etc/passwd), the host name exactly
 *     as oruGetHostname gives it;
 *   - for any other account (from NIS, LDAP or another directory service),
 *     the system's NIS domain name (uname's domainname) when one is set.
 * ORU_E_DOMAINNAME when none of these gives a name (a directory account on a
 * system without a domain name), ORU_E_UNKNOWN_USER when the account
 * database has no entry for the effective user id, otherwise a failing
 * system call's translated error. */
ORU_API oruResult oruGetDomainname(char* buf, size_t size);

/** The processor architecture of the process as a name: "i386", "mips",
 * "alpha" or "ppc" (32-bit PowerPC), and "unknown" for every other
 * architecture, x86-64 and AArch64 included.  The name describes the
 * architecture this build of the library runs as (a 32-bit x86 build on a
 * 64-bit processor answers "i386"); on Windows it is the one GetSystemInfo
 * reports to the process. */
ORU_API oruResult oruGetArchitecture(char* buf, size_t size);

/** The name of the system family this build targets: "Windows" for Windows
 * builds, "Linux" on Linux, "Darwin" on macOS, "FreeBSD", "NetBSD",
 * "OpenBSD" on those, and "Unix" on any other POSIX system.  The buffer rule
 * holds: "Linux" needs a size of at least 6. */
ORU_API oruResult oruGetSystemName(char* buf, size_t size);

/** ORU_SYSTEM_TYPE_WINDOWS (2) on Windows builds, ORU_SYSTEM_TYPE_POSIX (1)
 * on every other build. */
ORU_API int oruGetSystemType(void);

/** The base name of the running executable, taken from the system's own
 * record of it (/proc/self/exe on Linux; where /proc is not mounted, the
 * path the program was started with as the loader recorded it).  Computed
 * once and never changing afterwards; "<unknown>" when the system cannot
 * tell.  The text is owned by the library and never freed.  On Linux the
 * record names the file after symbolic links are resolved, so a program
 * started through a link reports the name of the file it runs from.  On
 * Windows the record is the module file name of the executable, with its
 * extension (".exe") and spelled as the program was started (a program
 * started by its short 8.3 name may report that name). */
ORU_API const char* oruGetProgramName(void);

/** The full path of the running executable (from the same record, which on
 * POSIX systems is already absolute and free of links; on Windows with short
 * names expanded to their long form), computed once; null when the system
 * cannot tell (then it is asked again on the next call).  Owned by the
 * library and never freed. */
ORU_API const char* oruGetProgramPath(void);

/** Whether the process runs in a remote desktop session: on Windows 1 when
 * the system has terminal services (see oruIsWindowsTerminalServer) and
 * GetSystemMetrics(SM_REMOTESESSION) is non-zero.  On POSIX systems *out is
 * always 0.  ORU_E_INVALID_ARG for a null out; on Windows a failing version
 * query its translated error. */
ORU_API oruResult oruIsWTSRemoteSession(int* out);

/** Whether the system is a Windows terminal server: the terminal-services bit
 * of the product suite that GetVersionExA reports.  On POSIX systems *out is
 * always 0.  ORU_E_INVALID_ARG for a null out; on Windows a failing version
 * query its translated error. */
ORU_API oruResult oruIsWindowsTerminalServer(int* out);

/*
 * Command-line options.
 *
 * The library exports getopt, optarg, optind, opterr and optopt under these
 * plain names, with the semantics of the classic BSD getopt: options are
 * scanned left to right and the scan stops at the first operand, at "--"
 * (which is skipped) or at a lone "-" (which stays); arguments are NEVER
 * permuted.  An optstring beginning with ':' makes the parser silent and
 * report a missing argument with ':'.  Otherwise, while opterr is non-zero,
 * errors are printed on standard error as
 *   "NAME: illegal option -- C" and "NAME: option requires an argument -- C"
 * where NAME is oruGetProgramName().
 *
 * Which getopt a program gets: every symbol of the library carries the
 * library's own symbol version, so only references that were bound to the
 * library when a program or library was linked reach this getopt.  A
 * program linked directly with the library (liboru before the C library on
 * the link line, as usual) gets this one; a program that links only the C
 * library keeps the C library's getopt (with its argument permutation) even
 * when the library is loaded into the process as an indirect dependency or
 * with dlopen.  (glibc's <unistd.h> in strict POSIX mode, without
 * _GNU_SOURCE or the defaults, renames getopt to its own POSIX variant; a
 * program compiled so calls the C library's getopt either way.)
 *
 * Not thread-safe: the state is process-wide and unguarded.  There is no
 * reset; setting optind to 1 starts a new scan reliably only after the
 * previous scan has returned -1.
 */

/** Returns the next option character; '?' for an unknown option or a
 * missing argument; ':' for a missing argument when optstring begins with
 * ':'; -1 when the options end.  A character followed by ':' in optstring
 * takes an argument.  Option bytes are reported unsigned (0..255).  A null
 * argv or optstring, or optind outside 0..argc, ends the scan (-1). */
#if defined(__cplusplus) && defined(__GLIBC__)
/** The same declaration as the C library's, so both can be included. */
ORU_API int getopt(int argc, char* const argv[], const char* optstring) noexcept;
#else
ORU_API int getopt(int argc, char* const argv[], const char* optstring);
#endif
/** The argument of the option just returned, or null (points into argv). */
ORU_API extern char* optarg;
/** The index of the next element of argv to scan; initially 1. */
ORU_API extern int optind;
/** Non-zero (the initial 1): print error messages. */
ORU_API extern int opterr;
/** The option character last examined. */
ORU_API extern int optopt;

#ifdef __cplusplus
}
#endif

#endif /* ORU_SYSTEM_H */
