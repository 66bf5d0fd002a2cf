"""Answers decimal questions with Python's decimal module, one per line.

Input lines: "WIDTH OP ARG"; output: the result text and the raised flags
(letters o u x i for overflow, underflow, inexact, invalid).
  parse   ARG is decimal text, rounded half-even into the width
  int     ARG is decimal text; the nearest integer, ties to even
"""
import decimal
import sys

WIDTHS = {32: (7, -95, 96), 64: (16, -383, 384), 128: (34, -6143, 6144)}


def flags(ctx):
    out = ""
    for sig, letter in ((decimal.Overflow, "o"), (decimal.Underflow, "u"),
                        (decimal.Inexact, "x"), (decimal.InvalidOperation, "i")):
        if ctx.flags[sig]:
            out += letter
    return out or "-"


def main():
    for line in sys.stdin:
        width, op, arg = line.split()
        prec, emin, emax = WIDTHS[int(width)]
        ctx = decimal.Context(prec=prec, Emin=emin, Emax=emax, clamp=1,
                              rounding=decimal.ROUND_HALF_EVEN, traps=[])
        if op == "parse":
            r = ctx.create_decimal(arg)
            print(str(r), flags(ctx))
        elif op == "int":
            r = decimal.Decimal(arg).to_integral_value(rounding=decimal.ROUND_HALF_EVEN)
            print(format(r, "f"), "-")
        else:
            print("? -")


main()
