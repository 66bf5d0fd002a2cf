// The .po compiler on random and mutated .po texts, with a rotating target
// character set and fuzzy flag.  A text that compiles must give a catalog
// the loader's validation accepts, in which every compiled entry is found
// under its key (with its very translation when nothing is converted).
//
// Input: one options byte, then the .po text.
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "fuzz_check.h"
#include "oru_catalog_format.h"
#include "oru_catalog_writer.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  static const char* const kCharsets[] = {"UTF-8",  "ISO-8859-1", "windows-1252", "Shift_JIS",
                                          "EUC-JP", "UTF-8",      "UTF-8",        "KOI8-R"};
  oru_catalog_compile_options options;
  options.charset = kCharsets[data[0] & 7];
  options.useFuzzy = (data[0] & 8) != 0;
  const char* text = reinterpret_cast<const char*>(data + 1);
  const size_t length = size - 1;

  std::vector<oru_po_entry> entries;
  std::string error;
  const bool parsed = oru_po_parse(text, length, "fuzz.po", entries, error);
  FUZZ_CHECK(parsed == error.empty());

  std::string catalog, compileError;
  const bool compiled =
      oru_catalog_compile(text, length, "fuzz.po", options, catalog, compileError);
  FUZZ_CHECK(compiled == compileError.empty());
  if (!parsed) FUZZ_CHECK(!compiled);
  if (!compiled) {
    FUZZ_CHECK(compileError.compare(0, 7, "fuzz.po") == 0);
    return 0;
  }

  // The catalog is valid and holds every compiled entry.
  std::vector<uint32_t> aligned(catalog.size() / 4 + 1);
  auto* image = reinterpret_cast<unsigned char*>(aligned.data());
  std::memcpy(image, catalog.data(), catalog.size());
  FUZZ_CHECK(oru_catalog_validate(image, catalog.size()) == nullptr);
  // Nothing is converted when both sides are UTF-8 (no header charset).
  bool header = false;
  for (const oru_po_entry& e : entries) header |= !e.hasContext && e.msgid.empty();
  const bool sameBytes = !header && options.charset == std::string("UTF-8");
  for (const oru_po_entry& e : entries) {
    FUZZ_CHECK(!e.msgstr.empty());
    const std::string key = e.key();
    const std::string& translation = e.msgstr.front();
    if (translation.empty() || key.empty() || key.find('\0') != std::string::npos) continue;
    if (e.fuzzy && !options.useFuzzy) continue;
    const char* found = oru_catalog_find(image, key.c_str());
    FUZZ_CHECK(found != nullptr);
    if (sameBytes && translation.find('\0') == std::string::npos) {
      FUZZ_CHECK(translation == found);
    }
  }
  // Compiling is deterministic.
  std::string again;
  FUZZ_CHECK(oru_catalog_compile(text, length, "fuzz.po", options, again, compileError));
  FUZZ_CHECK(again == catalog);
  return 0;
}
