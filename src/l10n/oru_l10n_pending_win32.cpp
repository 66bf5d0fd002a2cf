// Stand-ins for the localisation platform parts on Windows until their
// backend lands: the system tells nothing, so the defaults apply.

#include "l10n/oru_catalog_platform.h"
#include "l10n/oru_locale_internal.h"

const char* oru_catalog_path_separator() { return "\\"; }

namespace oru_l10n {

const char* oru_platform_runtime_locale() { return nullptr; }
bool oru_platform_user_language(std::string&) { return false; }
bool oru_platform_user_territory(std::string&) { return false; }
bool oru_platform_user_charset(std::string&) { return false; }
bool oru_platform_console_charset(std::string&) { return false; }

}  // namespace oru_l10n
