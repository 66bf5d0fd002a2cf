// oru catalog compile, dump and lookup, driven as a subprocess.
#include <gtest/gtest.h>

#include <string>

#include "tool_runner.h"

namespace {

const char kPo[] =
    "msgid \"\"\nmsgstr \"Content-Type: text/plain; charset=ISO-8859-1\\n\"\n\n"
    "msgid \"Open\"\nmsgstr \"\xD6"
    "ffnen\"\n\n"
    "msgctxt \"menu\"\nmsgid \"Quit\"\nmsgstr \"Beenden\"\n\n"
    "#, fuzzy\nmsgid \"Maybe\"\nmsgstr \"Vielleicht\"\n";

TEST(ToolCatalog, CompileDumpLookup) {
  scratch_dir dir;
  dir.write("de.po", kPo);
  run_result r =
      run_oru({"catalog", "compile", "-o", "de/de.UTF-8/LC_MESSAGES/app.mo", "de.po"}, dir.path());
  // The output directory must exist: the tool does not create it.
  EXPECT_EQ(r.status, 1);
  r = run_oru({"catalog", "compile", "--output=app.mo", "de.po"}, dir.path());
  ASSERT_EQ(r.status, 0) << r.err;
  r = run_oru({"catalog", "dump", "app.mo"}, dir.path());
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_NE(r.out.find("Open\t\xC3\x96"
                       "ffnen\n"),
            std::string::npos)
      << r.out;
  EXPECT_NE(r.out.find("menu\\004Quit\tBeenden\n"), std::string::npos) << r.out;
  EXPECT_NE(r.out.find("\tContent-Type: text/plain; charset=UTF-8\\n\n"), std::string::npos);
  EXPECT_EQ(r.out.find("Maybe"), std::string::npos);

  ASSERT_EQ(
      run_oru({"catalog", "compile", "-f", "-c", "windows-1252", "-o", "w.mo", "de.po"}, dir.path())
          .status,
      0);
  r = run_oru({"catalog", "dump", "w.mo"}, dir.path());
  EXPECT_NE(r.out.find("Open\t\xD6"
                       "ffnen\n"),
            std::string::npos)
      << r.out;
  EXPECT_NE(r.out.find("Maybe\tVielleicht\n"), std::string::npos) << r.out;

  // lookup: locale directory LOCALE.<application set>, here UTF-8.
  std::string tree = dir.path() + "/tree/fr.UTF-8/LC_MESSAGES";
  ASSERT_EQ(run_program("mkdir", {"-p", tree}, dir.path()).status, 0);
  ASSERT_EQ(run_oru({"catalog", "compile", "-o", tree + "/app.mo", "de.po"}, dir.path()).status, 0);
  r = run_program("env",
                  {"LC_ALL=fr_FR.UTF-8", std::string(ORU_TOOL_PATH), "catalog", "lookup", "-b",
                   "tree", "-d", "app", "-l", "fr", "Open", "menu\x04Quit", "Nope"},
                  dir.path());
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out,
            "\xC3\x96"
            "ffnen\nBeenden\nNope\n");
  r = run_program("env",
                  {"LC_ALL=fr_FR.UTF-8", std::string(ORU_TOOL_PATH), "catalog", "lookup", "-b",
                   "tree", "-d", "app", "-l", "fr", "-C", "LC_TIME", "Open"},
                  dir.path());
  EXPECT_EQ(r.out, "Open\n");
}

TEST(ToolCatalog, FailuresAndUsage) {
  scratch_dir dir;
  dir.write("bad.po", "msgid \"a\"\nmsgstr \"b\"\n\nmsgid \"a\"\nmsgstr \"c\"\n");
  run_result r = run_oru({"catalog", "compile", "-o", "out.mo", "bad.po"}, dir.path());
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.err.find("bad.po:4: duplicate message definition"), std::string::npos) << r.err;
  EXPECT_FALSE(dir.exists("out.mo"));

  dir.write("short.mo", "NWMO");
  r = run_oru({"catalog", "dump", "short.mo"}, dir.path());
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.err.find("short.mo: rejected: shorter than 36 bytes"), std::string::npos) << r.err;
  std::string v2(40, '\0');
  v2.replace(0, 4, "NWMO");
  v2[5] = 2;
  v2[11] = 40;
  dir.write("v2.mo", v2);
  r = run_oru({"catalog", "dump", "v2.mo"}, dir.path());
  EXPECT_NE(r.err.find("rejected: unsupported format version"), std::string::npos) << r.err;

  EXPECT_EQ(run_oru({"catalog"}, dir.path()).status, 2);
  EXPECT_EQ(run_oru({"catalog", "frobnicate"}, dir.path()).status, 2);
  EXPECT_EQ(run_oru({"catalog", "compile", "bad.po"}, dir.path()).status, 2);
  EXPECT_EQ(run_oru({"catalog", "lookup", "x"}, dir.path()).status, 2);
  EXPECT_EQ(
      run_oru({"catalog", "lookup", "-b", "d", "-d", "x", "-C", "zz", "m"}, dir.path()).status, 2);
  r = run_oru({"catalog", "--help"}, dir.path());
  EXPECT_EQ(r.status, 0);
  EXPECT_NE(r.out.find("oru catalog compile"), std::string::npos);
}

}  // namespace
