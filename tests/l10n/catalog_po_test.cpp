// The .po compiler: every syntax form and every error, the conversion of
// translations, and round trips.  GNU gettext's msgfmt and Python's gettext
// module are the oracle: both compile the same .po files and must answer
// every msgid alike.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>

#include "catalog_test_support.h"
#include "l10n/oru_catalog_format.h"
#include "oru/l10n.h"

namespace {

bool compile(const std::string& po, std::string& catalog, std::string& error,
             const oru_catalog_compile_options& options = {}) {
  return oru_catalog_compile(po.data(), po.size(), "t.po", options, catalog, error);
}

// Looks keys up in compiled bytes (copied to aligned memory).
class image {
 public:
  explicit image(const std::string& bytes) : data_(bytes.size() / 4 + 1) {
    std::memcpy(data_.data(), bytes.data(), bytes.size());
    valid_ = oru_catalog_validate(bytes_(), bytes.size()) == nullptr;
  }
  bool valid() const { return valid_; }
  // The translation, or "<none>".
  std::string operator[](const std::string& key) {
    const char* t = oru_catalog_find(bytes_(), key.c_str());
    return t == nullptr ? "<none>" : t;
  }

 private:
  unsigned char* bytes_() { return reinterpret_cast<unsigned char*>(data_.data()); }
  std::vector<uint32_t> data_;
  bool valid_ = false;
};

const char kHeader[] =
    "msgid \"\"\nmsgstr \"\"\n\"Content-Type: text/plain; charset=UTF-8\\n\"\n"
    "\"Plural-Forms: nplurals=2; plural=(n != 1);\\n\"\n\n";

TEST(CatalogPo, EverySyntaxForm) {
  std::string po = std::string("# translator comment\n#. extracted\n#: src/a.c:10\n") + kHeader +
                   "#, c-format\n"
                   "msgid \"Plain\"\nmsgstr \"Schlicht\"\n\n"
                   "#| msgid \"Old\"\n"
                   "msgid \"\"\n\"Multi\"\n  \"line\"\nmsgstr \"Mehr\" \n\"zeilig\"\n"
                   "msgctxt \"menu\"\nmsgid \"Open\"\nmsgstr \"\\303\\226ffnen\"\n"
                   "msgid \"Open\"\nmsgstr \"Auf\"\n"
                   "msgid \"%d file\"\nmsgid_plural \"%d files\"\n"
                   "msgstr[0] \"%d Datei\"\nmsgstr[1] \"%d Dateien\"\n"
                   "msgid \"esc\"\nmsgstr \"\\n\\t\\\"\\\\\\101\\x42\\x4a\\a\\b\\f\\v\\r\\'\\?\"\n"
                   "#, fuzzy, c-format\nmsgid \"Fuzzy\"\nmsgstr \"Unscharf\"\n"
                   "msgid \"Untranslated\"\nmsgstr \"\"\n"
                   "#~ msgid \"Gone\"\n#~ msgstr \"Weg\"\n"
                   "#~ msgid \"Gone2\"\n#~ msgstr \"\"\n#~ \"Weg2\"\n";
  std::string bytes, error;
  ASSERT_TRUE(compile(po, bytes, error)) << error;
  image c(bytes);
  ASSERT_TRUE(c.valid());
  EXPECT_EQ(c["Plain"], "Schlicht");
  EXPECT_EQ(c["Multiline"], "Mehrzeilig");
  EXPECT_EQ(c["menu\x04Open"],
            "\xC3\x96"
            "ffnen");  // octal escapes are bytes
  EXPECT_EQ(c["Open"], "Auf");
  EXPECT_EQ(c["%d file"], "%d Datei");
  EXPECT_EQ(c["esc"], "\n\t\"\\AB\x4a\a\b\f\v\r'?");
  EXPECT_EQ(c["Fuzzy"], "<none>");
  EXPECT_EQ(c["Untranslated"], "<none>");
  EXPECT_EQ(c["Gone"], "<none>");
  EXPECT_EQ(c["Gone2"], "<none>");
  EXPECT_NE(c[""].find("charset=UTF-8"), std::string::npos);
  // Eight entries: a power-of-two table at least twice as large.
  EXPECT_EQ(get_be32(bytes, 12), 16u);
  EXPECT_EQ(bytes.substr(bytes.size() - 2), std::string(2, '\0'));

  oru_catalog_compile_options fuzzy;
  fuzzy.useFuzzy = true;
  std::string again;
  ASSERT_TRUE(compile(po, again, error, fuzzy)) << error;
  EXPECT_EQ(image(again)["Fuzzy"], "Unscharf");
  std::string same;
  ASSERT_TRUE(compile(po, same, error));
  EXPECT_EQ(same, bytes);  // reproducible
}

TEST(CatalogPo, Errors) {
  struct bad {
    const char* po;
    const char* error;
  } const cases[] = {
      {"msgid \"a\"\nmsgstr \"b\"\nmsgid \"a\"\nmsgstr \"c\"\n", "t.po:3: duplicate"},
      {"msgctxt \"x\"\nmsgid \"a\"\nmsgstr \"b\"\nmsgctxt \"x\"\nmsgid \"a\"\nmsgstr \"c\"\n",
       "t.po:5: duplicate"},
      {"msgid \"a\"\nmsgstr \"\\q\"\n", "t.po:2: invalid escape"},
      {"msgid \"a\\x\"\nmsgstr \"\"\n", "t.po:1: invalid escape"},
      {"msgid \"a\"\nmsgstr \"\\x100\"\n", "t.po:2: hex escape"},
      {"msgid \"a\nmsgstr \"b\"\n", "t.po:1: unterminated"},
      {"msgid \"a\"\n", "t.po:2: entry without msgstr"},
      {"msgid \"a\" junk\nmsgstr \"\"\n", "t.po:1: unexpected text"},
      {"msgid a\nmsgstr \"\"\n", "t.po:1: expected a quoted string"},
      {"msgstr \"b\"\n", "t.po:1: msgstr without a msgid"},
      {"msgid \"a\"\nmsgid_plural \"as\"\nmsgstr \"b\"\n", "t.po:3: plural entry needs"},
      {"msgid \"a\"\nmsgstr[0] \"b\"\n", "t.po:2: msgstr[N] without msgid_plural"},
      {"msgid \"a\"\nmsgid_plural \"as\"\nmsgstr[1] \"b\"\n", "t.po:3: plural forms"},
      {"\"orphan\"\n", "t.po:1: string without a keyword"},
      {"msgid \"a\"\nmsgstr \"b\"\nmsgfoo \"c\"\n", "t.po:3: unknown keyword msgfoo"},
      {"msgid \"a\"\nmsgstr \"\\xff\"\n", "t.po:2: translation cannot be converted"},
      {"msgid \"\"\nmsgstr \"Content-Type: text/plain; charset=NO-SUCH\\n\"\n",
       "t.po:2: unknown charset"},
      {"msgid \"a\"\nmsgstr \"\\777\"\n", "t.po:2: octal escape out of range"},
      {"msgid \"a\"\nmsgstr \"\\x\"\n", "t.po:2: invalid escape sequence \\x without digits"},
      {"msgid \"a\\", "t.po:1: unterminated string"},
      {"msgid_plural \"x\"\n", "t.po:1: msgid_plural without a msgid"},
      {"msgid \"a\"\nmsgid_plural \"b\"\nmsgstr[x] \"c\"\n",
       "t.po:3: bad plural index in msgstr[x]"},
      {"msgid \"a\"\nmsgid_plural \"b\"\nmsgstr[12345] \"c\"\n", "t.po:3: bad plural index"},
      {"msgid \"a\"\nmsgid_plural \"b\"\nmsgstr[0] \"c\"\nmsgstr[2] \"d\"\n",
       "t.po:4: plural forms not numbered"},
      {"msgid \"a\"\nmsgstr \"b\"\nmsgstr \"c\"\n", "t.po:3: msgstr without a msgid"},
      {"#~ \"orphan\"\n", "t.po:1: string without a keyword"},
      {"msgid \"a\"\nmsgstr \"b\"\n#~ msgid \"c\"\n\"d\"\n", "t.po:4: string without a keyword"},
      {"= \"x\"\n", "t.po:1: syntax error"},
  };
  for (const bad& c : cases) {
    std::string bytes, error;
    EXPECT_FALSE(compile(c.po, bytes, error)) << c.po;
    EXPECT_EQ(error.rfind(c.error, 0), 0u) << c.po << "\n -> " << error;
  }
}

TEST(CatalogPo, ObsoleteEntriesCommentsAndMarks) {
  // A byte-order mark, comments of every kind, flags around "fuzzy" and
  // obsolete entries (continued over several lines): only the live,
  // translated entries remain.
  std::string po = std::string("\xEF\xBB\xBF") + kHeader +
                   "# translator\n#. extracted\n#: ref.c:1\n#| msgid \"old\"\n"
                   "#, c-format,  fuzzy , no-wrap\nmsgid \"fz\"\nmsgstr \"F\"\n\n"
                   "#, c-format\nmsgid \"live\"\nmsgstr \"L\\x41\\101\\a\\b\\f\\v\\r\\?\\'\"\n\n"
                   "#~ msgid \"gone\"\n#~ msgstr \"G\"\n#~ \"more\"\n#~| msgid \"x\"\n"
                   "msgid \"after\"\nmsgstr \"A\"\n";
  std::string bytes, error;
  ASSERT_TRUE(compile(po, bytes, error)) << error;
  image catalog(bytes);
  ASSERT_TRUE(catalog.valid());
  EXPECT_EQ(catalog["live"], "LAA\a\b\f\v\r?'");
  EXPECT_EQ(catalog["after"], "A");
  EXPECT_EQ(catalog["gone"], "<none>");
  EXPECT_EQ(catalog["fz"], "<none>");  // fuzzy translations are left out, as msgfmt does
}

TEST(CatalogPo, CharsetConversion) {
  // Latin-1 source; UTF-8 and windows-1252 targets; a character that
  // windows-1252 lacks fails with the line of its msgstr.
  std::string po =
      "msgid \"\"\nmsgstr \"Content-Type: text/plain; charset=ISO-8859-1\\n\"\n\n"
      "msgid \"Open\"\nmsgstr \"\xD6"
      "ffnen\"\n";
  std::string bytes, error;
  ASSERT_TRUE(compile(po, bytes, error)) << error;
  EXPECT_EQ(image(bytes)["Open"],
            "\xC3\x96"
            "ffnen");
  EXPECT_NE(image(bytes)[""].find("charset=UTF-8"), std::string::npos);
  oru_catalog_compile_options cp1252;
  cp1252.charset = "windows-1252";
  ASSERT_TRUE(compile(po, bytes, error, cp1252)) << error;
  EXPECT_EQ(image(bytes)["Open"],
            "\xD6"
            "ffnen");

  std::string utf8 = std::string(kHeader) + "msgid \"a\"\nmsgstr \"\xE2\x82\xAC\"\n" +
                     "msgid \"b\"\nmsgstr \"\xD0\x96\"\n";
  ASSERT_FALSE(compile(utf8, bytes, error, cp1252));
  EXPECT_EQ(error, "t.po:9: translation cannot be converted from UTF-8 to windows-1252");
  std::string cp =
      "msgid \"\"\nmsgstr \"Content-Type: text/plain; charset=CP1251\\n\"\n"
      "msgid \"a\"\nmsgstr \"\xC6\"\n";
  ASSERT_TRUE(compile(cp, bytes, error)) << error;
  EXPECT_EQ(image(bytes)["a"], "\xD0\x96");
}

// A .po file of a few thousand entries with contexts, plurals, escapes,
// fuzzy and untranslated entries.
std::string generated_po(int count) {
  std::ostringstream po;
  po << kHeader;
  for (int i = 0; i < count; ++i) {
    if (i % 11 == 0) po << "#, fuzzy\n";
    if (i % 7 == 0) po << "msgctxt \"ctx" << i % 5 << "\"\n";
    po << "msgid \"Message " << i << " \\\"q\\\"\\t\"\n";
    if (i % 13 == 0) {
      po << "msgid_plural \"Messages " << i << "\"\nmsgstr[0] \"Nachricht " << i
         << " \xC3\xA4\"\nmsgstr[1] \"Nachrichten " << i << "\"\n";
    } else if (i % 17 == 0) {
      po << "msgstr \"\"\n";
    } else {
      po << "msgstr \"\"\n\"\\tÜbersetzung \"\n\"" << i << "\"\n";
    }
    po << "\n";
  }
  return po.str();
}

TEST(CatalogPo, RoundTripThroughTheLibrary) {
  std::string po = generated_po(3000);
  std::vector<oru_po_entry> entries;
  std::string bytes, error;
  ASSERT_TRUE(oru_po_parse(po.data(), po.size(), "g.po", entries, error)) << error;
  ASSERT_TRUE(compile(po, bytes, error)) << error;
  catalog_dir dir;
  dir.put("rt.UTF-8", "roundtrip", bytes);
  ASSERT_NE(oruBindTextDomain("roundtrip", dir.path().c_str()), nullptr);
  ASSERT_EQ(oruSetLocaleParam(ORU_LP_APP_CHARSET, "UTF-8"), ORU_OK);
  int translated = 0;
  for (const oru_po_entry& e : entries) {
    std::string key = e.key();
    const char* got = oruDGetTextLC("roundtrip", "rt", key.c_str());
    bool kept = !e.msgstr[0].empty() && (!e.fuzzy || key.empty());
    EXPECT_EQ(std::string(got), kept ? e.msgstr[0] : key) << key;
    EXPECT_EQ(got == key.c_str(), !kept) << key;
    translated += kept;
  }
  EXPECT_GT(translated, 2000);
}

// Runs a command and returns its standard output.
std::string run(const std::string& command) {
  std::string out;
  if (FILE* p = popen(command.c_str(), "r")) {
    char buf[4096];
    size_t n;
    while ((n = fread(buf, 1, sizeof buf, p)) > 0) out.append(buf, n);
    if (pclose(p) != 0) out += "\n<exit status non-zero>";
  }
  return out;
}

std::string hex(const std::string& s) {
  static const char digits[] = "0123456789abcdef";
  std::string h;
  for (unsigned char c : s) {
    h += digits[c >> 4];
    h += digits[c & 15];
  }
  return h;
}

// For each key of the .po file, Python looks the key up in msgfmt's
// catalog and compares with this library's translation (or "<none>"); it
// prints "agree N" or the first disagreements.
const char kPythonOracle[] = R"(
import gettext, sys
mo, keys, charset = sys.argv[1], sys.argv[2], sys.argv[3]
t = gettext.GNUTranslations(open(mo, 'rb'))
bad, n, ours = [], 0, set()
for line in open(keys):
    k, v = line.rstrip('\n').split('\t')
    key = bytes.fromhex(k).decode(charset)
    ours.add(key)
    want = None if v == '-' else bytes.fromhex(v).decode('utf-8')
    got = t._catalog.get(key, t._catalog.get((key, 0)))
    if key == '':
        continue
    n += 1
    if got != want:
        bad.append(repr((key, got, want)))
gnu = set(k if isinstance(k, str) else k[0] for k in t._catalog)
bad += ['only in msgfmt: ' + repr(k) for k in gnu - ours]
print('agree %d' % n if not bad else '\n'.join(bad[:5]))
)";

void compare_with_msgfmt(const std::string& poPath, const std::string& charset) {
  if (run("command -v msgfmt").empty()) GTEST_SKIP() << "msgfmt (GNU gettext) is not installed";
  if (run("command -v python3").empty()) GTEST_SKIP() << "python3 is not installed";
  std::ifstream in(poPath, std::ios::binary);
  std::string po((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  std::vector<oru_po_entry> entries;
  std::string bytes, error;
  ASSERT_TRUE(oru_po_parse(po.data(), po.size(), poPath, entries, error)) << error;
  ASSERT_TRUE(compile(po, bytes, error)) << error;
  image ours(bytes);
  catalog_dir dir;
  std::ofstream keys(dir.path() + "/keys");
  for (const oru_po_entry& e : entries) {
    std::string t = ours[e.key()];
    keys << hex(e.key()) << '\t' << (t == "<none>" ? "-" : hex(t)) << '\n';
  }
  keys.close();
  std::ofstream(dir.path() + "/oracle.py") << kPythonOracle;
  std::string mo = dir.path() + "/gnu.mo";
  // Python's gettext reads only UTF-8 (or ASCII) headers: msgconv first.
  ASSERT_EQ(run("msgconv -t UTF-8 '" + poPath + "' | msgfmt -o '" + mo + "' - 2>&1").substr(0, 300),
            "");
  std::string verdict = run("python3 '" + dir.path() + "/oracle.py' '" + mo + "' '" + dir.path() +
                            "/keys' " + charset);
  EXPECT_EQ(verdict.rfind("agree ", 0), 0u) << poPath << ":\n" << verdict.substr(0, 600);
}

TEST(CatalogPo, AgreesWithMsgfmtOnAGeneratedFile) {
  catalog_dir dir;
  std::string path = dir.path() + "/generated.po";
  std::ofstream(path, std::ios::binary) << generated_po(3000);
  compare_with_msgfmt(path, "utf-8");
}

TEST(CatalogPo, AgreesWithMsgfmtOnRealFiles) {
  // The sample files live beside the repository, in ../shared/data/po.
  std::string base = std::string(ORU_SOURCE_DIR) + "/../shared/data/po/";
  if (!std::filesystem::exists(base + "ORIGIN.md")) base.clear();
  if (base.empty()) GTEST_SKIP() << "sample .po files (../shared/data/po) are absent";
  for (const auto& [file, charset] :
       std::vector<std::pair<std::string, std::string>>{{"glib-de.po", "utf-8"},
                                                        {"vim-fr.po", "utf-8"},
                                                        {"vim-ja.euc-jp.po", "euc-jp"},
                                                        {"vim-ru.cp1251.po", "cp1251"}}) {
    SCOPED_TRACE(file);
    compare_with_msgfmt(base + file, charset);
  }
}

}  // namespace
