// C++ names in source form through the C++ ABI's demangler.

#include "system/oru_module_internal.h"

#include <cxxabi.h>

#include <cstdlib>
#include <new>

namespace oru::module {

std::string demangle(const std::string& name) {
  // Only names of the Itanium ABI's form; a C name such as "_Zebra" that
  // happens to demangle is rare enough, but plain C names are left alone.
  if (name.size() < 3 || name.compare(0, 2, "_Z") != 0) return name;
  int status = 0;
  char* text = abi::__cxa_demangle(name.c_str(), nullptr, nullptr, &status);
  if (status == -1) throw std::bad_alloc();
  if (text == nullptr) return name;
  std::string result;
  try {
    result = text;
  } catch (...) {
    std::free(text);
    throw;
  }
  std::free(text);
  return result;
}

}  // namespace oru::module
