// The catalog writer: parses GNU gettext .po files and writes this
// library's binary catalogs.  Not part of the library's interface: the
// `oru` tool and the tests compile it in and call it through the public
// character-set converter.
#ifndef ORU_L10N_ORU_CATALOG_WRITER_H
#define ORU_L10N_ORU_CATALOG_WRITER_H

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

// One entry of a .po file, escapes resolved.
struct oru_po_entry {
  bool hasContext = false;
  bool fuzzy = false;
  bool plural = false;
  std::string context;
  std::string msgid;
  std::string msgidPlural;
  std::vector<std::string> msgstr;  // msgstr, or msgstr[0], msgstr[1], ...
  int line = 0;                     // of the msgid
  int msgstrLine = 0;               // of the first msgstr

  // The key the entry is stored under: context, 0x04, msgid with a context.
  std::string key() const { return hasContext ? context + '\x04' + msgid : msgid; }
};

// Parses a whole .po text.  Obsolete (#~) entries are left out.  Returns
// false with error set to "FILE:LINE: what is wrong" on a syntax error, a
// bad escape or a duplicate msgid within one context.
bool oru_po_parse(const char* text, size_t length, const std::string& fileName,
                  std::vector<oru_po_entry>& entries, std::string& error);

// Writes a catalog of the given (key, translation) pairs: a power-of-two
// slot count at least twice the number of pairs, the entries after the
// slots in the given order, two closing zero bytes.  Keys must be unique.
std::string oru_catalog_build(const std::vector<std::pair<std::string, std::string>>& pairs);

struct oru_catalog_compile_options {
  std::string charset = "UTF-8";  // of the catalog's translations
  bool useFuzzy = false;
};

// Compiles a .po text to catalog bytes: translations are converted from the
// charset of the header's Content-Type to options.charset; fuzzy entries
// (unless useFuzzy) and untranslated ones are left out; a plural entry is
// stored under its msgid with msgstr[0].  The output depends only on the
// input.  Returns false with error "FILE:LINE: what is wrong".
bool oru_catalog_compile(const char* text, size_t length, const std::string& fileName,
                         const oru_catalog_compile_options& options, std::string& catalog,
                         std::string& error);

#endif  // ORU_L10N_ORU_CATALOG_WRITER_H
