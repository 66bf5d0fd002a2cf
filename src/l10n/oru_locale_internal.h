// Locale parameters as seen by the library's other modules.
#ifndef ORU_SRC_L10N_ORU_LOCALE_INTERNAL_H
#define ORU_SRC_L10N_ORU_LOCALE_INTERNAL_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace oru_l10n {

// Whether the application and system character sets differ: 0 known equal,
// 1 known different, -1 unknown (decide per call).  Written only by
// oruSetLocaleParam.
extern int8_t oruCSConversionNeeded;

// The override of a parameter (nullptr when never set or unset).
const char* oru_locale_override(uint32_t id);

// The system character set as derived from the system, ignoring the
// override; fromSystem skips the C library's locale.
std::string oru_derive_system_charset(bool fromSystem);

// --- Platform layer (oru_locale_posix.cpp) ---

// The C library's current name for its character-type category, or nullptr.
const char* oru_platform_runtime_locale();

// The user-default locale's two-letter language (lower case) and territory
// (upper case); false when the platform cannot tell.
bool oru_platform_user_language(std::string& out);
bool oru_platform_user_territory(std::string& out);
// The user-default locale's character set for narrow strings (ANSI) and for
// the console (OEM), as a code page number or a character-set name; false
// when unknown.
bool oru_platform_user_charset(std::string& out);
bool oru_platform_console_charset(std::string& out);

// --- Character-set names ---

// Turns a locale's codeset (a Windows code page number or a character-set
// name in any common spelling) into a registered name; false when unknown.
bool oru_resolve_codeset(const std::string& codeset, std::string& out);

}  // namespace oru_l10n

#endif  // ORU_SRC_L10N_ORU_LOCALE_INTERNAL_H
