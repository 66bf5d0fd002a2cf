"""Answers decimal questions with Python's decimal module, one per line.

Input lines: "WIDTH OP ARG"; output: the result text and the raised flags
(letters o u x i for overflow, underflow, inexact, invalid).
  parse   ARG is decimal text, rounded half-even into the width
  int     ARG is decimal text; the nearest integer, ties to even
  fromdouble  ARG is the bits of a double in hex, rounded into the width
  todouble    ARG is decimal text; the bits of the nearest double, in hex
  tofloat     ARG is decimal text; the bits of the nearest float, in hex
  fmt     ARG is "CODE MODE TEXT": format(Decimal(TEXT), CODE) with MODE one
          of the library's rounding directions (0 half-even .. 4 down)
"""
import decimal
import fractions
import struct
import sys

MODES = [decimal.ROUND_HALF_EVEN, decimal.ROUND_HALF_UP, decimal.ROUND_CEILING,
         decimal.ROUND_FLOOR, decimal.ROUND_DOWN]
WIDTHS = {32: (7, -95, 96), 64: (16, -383, 384), 128: (34, -6143, 6144)}


def flags(ctx):
    out = ""
    for sig, letter in ((decimal.Overflow, "o"), (decimal.Underflow, "u"),
                        (decimal.Inexact, "x"), (decimal.InvalidOperation, "i")):
        if ctx.flags[sig]:
            out += letter
    return out or "-"


def nearest_float32(text):
    """Bits of the float nearest the decimal text, ties to even."""
    d = decimal.Decimal(text)
    sign = 0x80000000 if d.is_signed() else 0
    v = abs(fractions.Fraction(d))
    if v == 0:
        return sign
    e = v.numerator.bit_length() - v.denominator.bit_length()
    while fractions.Fraction(2) ** e > v:
        e -= 1
    while fractions.Fraction(2) ** (e + 1) <= v:
        e += 1
    lsb = max(e - 23, -149)
    q = v / fractions.Fraction(2) ** lsb
    m = q.numerator // q.denominator
    rest = q - m
    if rest > fractions.Fraction(1, 2) or (rest == fractions.Fraction(1, 2) and m & 1):
        m += 1
    if m >> 24:
        m >>= 1
        lsb += 1
    if m and lsb + m.bit_length() - 1 > 127:
        return sign | 0x7F800000
    if m < 1 << 23:
        return sign | m
    return sign | ((lsb + 150) << 23) | (m & 0x7FFFFF)


def main():
    for line in sys.stdin:
        width, op, arg = line.split(None, 2)
        arg = arg.strip()
        prec, emin, emax = WIDTHS[int(width)]
        ctx = decimal.Context(prec=prec, Emin=emin, Emax=emax, clamp=1,
                              rounding=decimal.ROUND_HALF_EVEN, traps=[])
        if op == "parse":
            r = ctx.create_decimal(arg)
            print(str(r), flags(ctx))
        elif op == "int":
            r = decimal.Decimal(arg).to_integral_value(rounding=decimal.ROUND_HALF_EVEN)
            print(format(r, "f"), "-")
        elif op == "fmt":
            code, mode, text = arg.split()
            ctx.rounding = MODES[int(mode)]
            decimal.setcontext(ctx)
            print(format(decimal.Decimal(text), code))
        elif op == "fromdouble":
            r = ctx.create_decimal_from_float(
                struct.unpack("<d", struct.pack("<Q", int(arg, 16)))[0])
            print(str(r), flags(ctx))
        elif op == "todouble":
            r = float(decimal.Decimal(arg))
            exact = r not in (float("inf"), float("-inf")) and \
                decimal.Decimal(r) == decimal.Decimal(arg)
            bits = struct.unpack("<Q", struct.pack("<d", r))[0]
            print("%016x" % bits, "-" if exact else "x")
        elif op == "tofloat":
            print("%08x" % nearest_float32(arg), "-")
        else:
            print("? -")


main()
