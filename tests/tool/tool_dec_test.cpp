// oru dec: expressions at each width against Python's decimal module with
// the width's context, encodings, and bad expressions.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "tool_runner.h"

namespace {

TEST(ToolDec, ExpressionsAndFlags) {
  scratch_dir dir;
  struct {
    std::vector<std::string> args;
    const char* out;
  } const cases[] = {
      {{"dec", "1/3*3"}, "0.9999999999999999 [inexact]\n"},
      {{"dec", "-w", "128", "1/3*3"}, "0.9999999999999999999999999999999999 [inexact]\n"},
      {{"dec", "-w", "32", "-x", "1/3"}, "0.3333333 [inexact]\n0x2F32DCD5\n"},
      {{"dec", "--width=64", "--hex", "1.50"}, "1.50\n0x3180000000000096\n"},
      {{"dec", "(1 + 2) * -3"}, "-9\n"},
      {{"dec", "fma(2, 3, -1) + max(1, 2) - min(4, 5)"}, "3\n"},
      {{"dec", "sqrt(2)"}, "1.414213562373095 [inexact]\n"},
      {{"dec", "quantize(1.23456, 0.01)"}, "1.23 [inexact]\n"},
      {{"dec", "scaleb(1.5, 3) + remainder(10, 3)"}, "1501\n"},
      {{"dec", "round(2.5) + round(2.5, 1) + round(-2.5, 3)"}, "2\n"},
      {{"dec", "next_up(1)"}, "1.000000000000001\n"},
      {{"dec", "-w", "32", "next_down(1)"}, "0.9999999\n"},
      {{"dec", "-w", "32", "next_up(9.999999E96)"}, "Infinity [overflow inexact]\n"},
      {{"dec", "compare(1, 2)"}, "-1\n"},
      {{"dec", "compare(1, nan)"}, "NaN\n"},
      {{"dec", "class(-0)"}, "negativeZero\n"},
      {{"dec", "-w", "32", "class(1E-100)"}, "positiveSubnormal\n"},
      {{"dec", "--", "-1/0"}, "-Infinity [divide-by-zero]\n"},
      {{"dec", "0/0"}, "NaN [invalid]\n"},
      {{"dec", "1E-398 / 3"}, "0E-398 [underflow inexact]\n"},
      {{"dec", "Infinity - inf"}, "NaN [invalid]\n"},
      {{"dec", "-d", "31C0000000000001"},
       "class: positiveNormal\nsign: +\ncoefficient: 1\nexponent: 0\ncanonical: yes\nvalue: 1\n"},
      {{"dec", "-w", "64", "-d", "0x6C7386F26FC10000"},
       "class: positiveZero\nsign: +\ncoefficient: 10000000000000000\nexponent: 0\n"
       "canonical: no\nvalue: 0\n"},
      {{"dec", "-w", "128", "-d", "F8000000000000000000000000000000"},
       "class: negativeInfinity\nsign: -\ncanonical: yes\nvalue: -Infinity\n"},
  };
  for (const auto& c : cases) {
    const run_result r = run_oru(c.args, dir.path());
    EXPECT_EQ(r.status, 0) << c.args.back() << r.err;
    EXPECT_EQ(r.out, c.out) << c.args.back();
  }
}

TEST(ToolDec, BadExpressions) {
  scratch_dir dir;
  struct {
    const char* expr;
    const char* message;
  } const cases[] = {
      {"1 + * 2", "column 5: expected a number"}, {"foo(1)", "column 1: unknown function 'foo'"},
      {"(1", "column 3: expected ')'"},           {"1 2", "column 3: unexpected '2'"},
      {"sqrt(1, 2)", "column 7: expected ')'"},   {"fma(1, 2)", "fma needs 3 arguments"},
      {"", "column 1: unexpected end"},           {"1e", "column 2: unexpected 'e'"},
  };
  for (const auto& c : cases) {
    const run_result r = run_oru({"dec", c.expr}, dir.path());
    EXPECT_EQ(r.status, 2) << c.expr;
    EXPECT_EQ(r.out, "") << c.expr;
    EXPECT_NE(r.err.find(c.message), std::string::npos) << c.expr << ": " << r.err;
  }
  for (const std::vector<std::string>& args : std::vector<std::vector<std::string>>{
           {"dec", "-w", "16", "1"}, {"dec", "-d", "xyz"}, {"dec"}, {"dec", "1", "2"}}) {
    const run_result r = run_oru(args, dir.path());
    EXPECT_EQ(r.status, 2) << args.back();
    EXPECT_NE(r.err, "");
  }
}

}  // namespace
