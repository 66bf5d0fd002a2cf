// Built when no DWARF reader was found: symbols come from the loader's
// tables alone and source lines are not known.

#include "system/oru_module_internal.h"

namespace oru::module {

bool debug_lookup(const module_entry&, uintptr_t, debug_answer&) { return false; }

}  // namespace oru::module
