// oru hash against independent oracles: md5sum(1) for MD5 and for the
// output and check formats, zlib's crc32 and liblzma's lzma_crc64, the
// published check values of the CRC-16 models, and the library's one-shot
// MurmurHash64 on the whole file.  Inputs are larger than the tool's read
// chunk, so the streamed result is compared with the whole-buffer one.
#include <gtest/gtest.h>
#include <lzma.h>
#include <zlib.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cinttypes>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "oru/hash.h"
#include "tool_runner.h"

namespace {

std::string hex(uint64_t v, int digits) {
  char text[24];
  std::snprintf(text, sizeof text, "%0*" PRIx64, digits, v);
  return text;
}

std::string random_text(size_t n, uint32_t seed) {
  std::mt19937 gen(seed);
  std::string s(n, '\0');
  for (char& c : s) c = static_cast<char>(gen());
  return s;
}

// Files of several sizes: empty, the check string, and two larger than the
// tool's 128 KiB read chunk (one not a multiple of it).
class ToolHash : public ::testing::Test {
 protected:
  void SetUp() override {
    files_ = {{"empty", ""},
              {"check", "123456789"},
              {"big", random_text(1300 * 1000 + 7, 1)},
              {"chunks", random_text(4 * 128 * 1024, 2)}};
    for (const auto& f : files_) dir_.write(f.first, f.second);
  }
  std::vector<std::string> names() const {
    std::vector<std::string> n;
    for (const auto& f : files_) n.push_back(f.first);
    return n;
  }
  run_result hash(std::vector<std::string> args, const std::string& input = "") {
    args.insert(args.begin(), "hash");
    return run_oru(args, dir_.path(), input);
  }

  scratch_dir dir_;
  std::vector<std::pair<std::string, std::string>> files_;
};

TEST_F(ToolHash, Md5MatchesMd5sumExactly) {
  std::vector<std::string> args = names();
  const run_result expected = run_program("md5sum", args, dir_.path());
  ASSERT_EQ(expected.status, 0);
  const run_result by_default = hash(args);
  EXPECT_EQ(by_default.status, 0);
  EXPECT_EQ(by_default.out, expected.out);
  EXPECT_EQ(by_default.err, "");
  args.insert(args.begin(), {"-a", "md5"});
  EXPECT_EQ(hash(args).out, expected.out);
  // Standard input: no operand, or "-".
  const std::string& big = files_[2].second;
  const run_result stdin_md5 = run_program("md5sum", {}, dir_.path(), big);
  EXPECT_EQ(hash({}, big).out, stdin_md5.out);
  EXPECT_EQ(hash({"-"}, big).out, stdin_md5.out);
}

TEST_F(ToolHash, ChecksumsMatchIndependentImplementations) {
  for (const char* algo : {"crc32", "crc64", "murmur64"}) {
    std::string expected;
    for (const auto& f : files_) {
      const auto* p = reinterpret_cast<const unsigned char*>(f.second.data());
      std::string value;
      if (std::string(algo) == "crc32") {
        value = hex(crc32(0, p, static_cast<uInt>(f.second.size())), 8);
      } else if (std::string(algo) == "crc64") {
        value = hex(lzma_crc64(p, f.second.size(), 0), 16);
      } else {
        value = hex(oruMurmurHash64(p, f.second.size(), 0), 16);
      }
      expected += value + "  " + f.first + "\n";
    }
    std::vector<std::string> args = names();
    args.insert(args.begin(), std::string("--algorithm=") + algo);
    const run_result r = hash(args);
    EXPECT_EQ(r.status, 0) << algo;
    EXPECT_EQ(r.out, expected) << algo;
  }
  // The published check values of "123456789" for every model.
  struct {
    const char* algo;
    const char* value;
  } const checks[] = {{"crc16", "bb3d"},
                      {"crc16-ccitt", "29b1"},
                      {"crc16-xmodem", "31c3"},
                      {"crc32", "cbf43926"},
                      {"crc64", "995dc9bbdf1939fa"},
                      {"murmur64", "7072f374c5bd9e6b"},
                      {"md5", "25f9e794323b453885f5181f1b624d0b"}};
  for (const auto& c : checks) {
    EXPECT_EQ(hash({"-a", c.algo, "check"}).out, std::string(c.value) + "  check\n") << c.algo;
    EXPECT_EQ(hash({"-a", c.algo}, "123456789").out, std::string(c.value) + "  -\n") << c.algo;
  }
  // The CRC-16 models streamed over the big file equal the one-shot CRC.
  const std::string& big = files_[2].second;
  EXPECT_EQ(hash({"-a", "crc16", "big"}).out,
            hex(oruComputeCRC(ORU_CRC16_ARC, big.data(), big.size()), 4) + "  big\n");
  EXPECT_EQ(hash({"-a", "crc16-ccitt", "big"}).out,
            hex(oruComputeCRC(ORU_CRC16_CCITT_FALSE, big.data(), big.size()), 4) + "  big\n");
}

TEST_F(ToolHash, BadInputs) {
  ::mkdir((dir_.path() + "/adir").c_str(), 0700);
  const run_result r = hash({"check", "missing", "adir", "empty"});
  EXPECT_EQ(r.status, 1);
  // The readable files are still listed on standard output, the failures
  // are on standard error only.
  EXPECT_EQ(r.out,
            "25f9e794323b453885f5181f1b624d0b  check\nd41d8cd98f00b204e9800998ecf8427e  empty\n");
  EXPECT_EQ(r.err,
            "oru: hash: cannot read 'missing': File or directory not found\n"
            "oru: hash: cannot read 'adir': Is a directory\n");
  const run_result unknown = hash({"-a", "sha1", "check"});
  EXPECT_EQ(unknown.status, 2);
  EXPECT_EQ(unknown.out, "");
  EXPECT_NE(unknown.err.find("unknown algorithm 'sha1'"), std::string::npos);
  EXPECT_EQ(hash({"-c", "list", "check"}).status, 2);
  EXPECT_EQ(hash({"-a"}).status, 2);
}

TEST_F(ToolHash, CheckListsLikeMd5sum) {
  // A list written by md5sum(1) is accepted by oru, and the other way round.
  std::vector<std::string> files = names();
  dir_.write("md5sum.list", run_program("md5sum", files, dir_.path()).out);
  files.insert(files.begin(), {"-o", "oru.list"});
  ASSERT_EQ(hash(files).status, 0);
  EXPECT_EQ(dir_.read("oru.list"), dir_.read("md5sum.list"));
  const std::string all_ok = "empty: OK\ncheck: OK\nbig: OK\nchunks: OK\n";
  const run_result ok = hash({"-c", "md5sum.list"});
  EXPECT_EQ(ok.status, 0);
  EXPECT_EQ(ok.out, all_ok);
  EXPECT_EQ(ok.err, "");
  EXPECT_EQ(run_program("md5sum", {"-c", "oru.list"}, dir_.path()).out, all_ok);
  EXPECT_EQ(hash({"--check=-"}, dir_.read("oru.list")).out, all_ok);

  // Tamper with one file (one byte of the big one) and remove another.
  std::string big = files_[2].second;
  big[700000] ^= 1;
  dir_.write("big", big);
  ::unlink((dir_.path() + "/empty").c_str());
  const run_result tampered = hash({"-c", "oru.list"});
  EXPECT_EQ(tampered.status, 1);
  EXPECT_EQ(tampered.out, "empty: FAILED open or read\ncheck: OK\nbig: FAILED\nchunks: OK\n");
  EXPECT_EQ(tampered.out, run_program("md5sum", {"-c", "oru.list"}, dir_.path()).out);
  EXPECT_NE(tampered.err.find("oru: hash: cannot read 'empty': File or directory not found\n"),
            std::string::npos);
  EXPECT_NE(tampered.err.find("WARNING: 1 computed checksum did NOT match"), std::string::npos);

  // Other algorithms check lists of their own width; upper-case hex and
  // md5sum's binary marker are accepted; malformed lines are counted.
  // An overlong line (a binary file as list) is skipped, not kept whole.
  dir_.write("crc.list", "CBF43926 *check\nnot a line\n0123  check\n" +
                             std::string(200 * 1024, 'a') + "\ncbf43926  check\r\n" +
                             std::string("cbf43926  check\0x\n", 18));
  const run_result crc = hash({"-a", "crc32", "-c", "crc.list"});
  EXPECT_EQ(crc.status, 0);
  EXPECT_EQ(crc.out, "check: OK\ncheck: OK\n");
  EXPECT_NE(crc.err.find("WARNING: 4 lines are improperly formatted"), std::string::npos);
  // A list without a single usable line, and a missing list, are failures.
  dir_.write("junk.list", "junk\n");
  EXPECT_EQ(hash({"-c", "junk.list"}).status, 1);
  const run_result no_list = hash({"-c", "nolist"});
  EXPECT_EQ(no_list.status, 1);
  EXPECT_EQ(no_list.out, "");
  EXPECT_EQ(no_list.err, "oru: hash: cannot read 'nolist': File or directory not found\n");
}

TEST_F(ToolHash, EscapedNamesAsMd5sumWritesThem) {
  const std::string odd = "back\\slash\nnew line";
  dir_.write(odd, "x");
  const run_result expected = run_program("md5sum", {odd}, dir_.path());
  ASSERT_EQ(expected.out[0], '\\');
  EXPECT_EQ(hash({odd}).out, expected.out);
  dir_.write("odd.list", expected.out);
  EXPECT_EQ(hash({"-c", "odd.list"}).out,
            run_program("md5sum", {"-c", "odd.list"}, dir_.path()).out);
}

}  // namespace
