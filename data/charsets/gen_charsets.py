#!/usr/bin/env python3
"""Generates the character-set registry and the codec-name table.

Reads the IANA character-sets registry in CSV form and writes
src/text/oru_charset_tables.cpp.  Standard library only.

    python3 data/charsets/gen_charsets.py [CSV] [OUTPUT]

CSV defaults to ../shared/data/iana/character-sets.csv relative to the
repository root, OUTPUT to src/text/oru_charset_tables.cpp; "-" writes to
standard output.
"""

import csv
import functools
import hashlib
import os
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
DEFAULT_CSV = os.path.join(ROOT, "..", "shared", "data", "iana", "character-sets.csv")
DEFAULT_OUT = os.path.join(ROOT, "src", "text", "oru_charset_tables.cpp")

# Registered after the edition the library follows.
LATER_SETS = {2108, 2109, 2260}

# Sets whose names in the library's edition differ from the CSV's.
PRIMARY_OVERRIDE = {3: "ANSI_X3.4-1968"}
ALIAS_OVERRIDE = {106: [], 1000: ["UCS-2", "csUnicode"], 1001: ["UCS-4", "csUCS4"]}

# The library's own numbers for sets without an IANA number.
OWN_SETS = [(9001, "UCS-2BE"), (9002, "UCS-2LE"), (9003, "UCS-4BE"), (9004, "UCS-4LE")]

# Preferred MIME names that differ from the primary name, complete.
MIME_TABLE = [
    (3, "US-ASCII"), (4, "ISO-8859-1"), (5, "ISO-8859-2"), (6, "ISO-8859-3"),
    (7, "ISO-8859-4"), (8, "ISO-8859-5"), (9, "ISO-8859-6"), (10, "ISO-8859-7"),
    (11, "ISO-8859-8"), (12, "ISO-8859-9"), (13, "ISO-8859-10"), (17, "Shift_JIS"),
    (18, "EUC-JP"), (37, "ISO-2022-KR"), (38, "EUC-KR"), (39, "ISO-2022-JP"),
    (40, "ISO-2022-JP-2"), (81, "ISO-8859-6-E"), (82, "ISO-8859-6-I"), (84, "ISO-8859-8-E"),
    (85, "ISO-8859-8-I"), (2025, "GB2312"), (2026, "Big5"), (2084, "KOI8-R"),
]


def expand(first, last, fmt):
    return [fmt % n for n in range(first, last + 1)]


# The iconv names of the convertible sets, in MIBenum order.  Most are the
# set's MIME (else primary) name in upper case; EXCEPTIONS lists the others.
ICONV_NAMES = (
    ["US-ASCII"] + expand(1, 10, "ISO-8859-%d") +
    ["SHIFT_JIS", "EUC-JP", "BS_4730", "SEN_850200_C", "IT", "ES", "DIN_66003", "NS_4551-1",
     "NF_Z_62-010", "NATS-SEFI", "NATS-DANO", "SEN_850200_B", "ISO-2022-KR", "UHC",
     "ISO-2022-JP", "ISO-2022-JP-2", "JIS_C6220-1969-RO", "PT", "GREEK7-OLD", "LATIN-GREEK",
     "NF_Z_62-010_(1973)", "LATIN-GREEK-1", "ISO_5427", "INIS", "INIS-8", "INIS-CYRILLIC",
     "ISO_5427:1981", "ISO_5428:1980", "GB_1988-80", "GB_2312-80", "NS_4551-2", "PT2", "ES2",
     "MSZ_7795.3", "GREEK7", "ASM_449", "ISO-IR-90", "JIS_C6229-1984-B", "ISO_2033-1983",
     "ANSI_X3.110-1983", "T.61-8BIT", "ECMA-CYRILLIC", "CSA_Z243.4-1985-1",
     "CSA_Z243.4-1985-2", "CSN_369103", "JUS_I.B1.002", "IEC_P27-1", "GREEK-CCITT",
     "NC_NC00-10:81", "GOST_19768-74", "ISO_10367-BOX", "DS_2089", "KSC5636", "ISO-2022-CN",
     "ISO-2022-CN-EXT", "UTF-8", "ISO-8859-13", "ISO-8859-14", "ISO-8859-15", "ISO-8859-16",
     "GBK", "GB18030", "ISO_11548-1", "RK1048", "UCS-2", "UCS-4", "UTF-7", "UTF-16BE",
     "UTF-16LE", "UTF-16", "UTF-32", "UTF-32BE", "UTF-32LE", "HP-ROMAN8", "DEC-MCS", "IBM850",
     "IBM852", "IBM437", "IBM862", "CP932", "GB2312", "BIG5", "MACINTOSH", "IBM037", "IBM038",
     "IBM273", "IBM274", "IBM275", "IBM277", "IBM278", "IBM280", "IBM281", "IBM284", "IBM285",
     "IBM290", "IBM297", "IBM420", "IBM423", "IBM424", "IBM500", "IBM851", "IBM855", "IBM857",
     "IBM860", "IBM861", "IBM863", "IBM864", "IBM865", "IBM868", "IBM869", "IBM870", "IBM871",
     "IBM880", "IBM891", "IBM903", "IBM904", "IBM905", "IBM918", "IBM1026", "EBCDIC-AT-DE",
     "EBCDIC-AT-DE-A", "EBCDIC-CA-FR", "EBCDIC-DK-NO", "EBCDIC-DK-NO-A", "EBCDIC-FI-SE",
     "EBCDIC-FI-SE-A", "EBCDIC-FR", "EBCDIC-IT", "EBCDIC-PT", "EBCDIC-ES", "EBCDIC-ES-A",
     "EBCDIC-ES-S", "EBCDIC-UK", "EBCDIC-US", "VISCII", "KOI8-R", "IBM866", "IBM775", "KOI8-U"]
    + expand(1140, 1149, "IBM%d") +
    ["BIG5-HKSCS", "IBM1047", "PT154", "TSCII"] + expand(1250, 1258, "WINDOWS-%d") +
    ["TIS-620", "UCS-2BE", "UCS-2LE", "UCS-4BE", "UCS-4LE"])

EXCEPTIONS = {38: "UHC", 65: "ASM_449", 118: "ISO_11548-1", 119: "RK1048", 1000: "UCS-2",
              1001: "UCS-4", 2024: "CP932", 2103: "PT154"}
EXCEPTIONS.update({2091 + i: "IBM%d" % (1140 + i) for i in range(10)})

ICONV_ROWS = 178


def name_compare(key, name):
    """The lookup's comparison: ASCII case-insensitive, a prefix first."""
    k, n = key.encode("ascii") + b"\0", name.encode("ascii") + b"\0"
    low = lambda c: c + 32 if 65 <= c <= 90 else c
    i = 0
    if k[0] == 0:
        return k[0] - n[0]
    while True:
        if n[i] == 0:
            return k[i] - n[i]
        a, b = low(k[i]), low(n[i])
        if a != b:
            return a - b
        i += 1
        if k[i] == 0:
            return k[i] - n[i]


def bsearch(rows, key):
    lo, hi, steps = 0, len(rows), 0
    while lo < hi:
        mid = (lo + hi) // 2
        steps += 1
        c = name_compare(key, rows[mid][0])
        if c == 0:
            return rows[mid][1], steps
        if c < 0:
            hi = mid
        else:
            lo = mid + 1
    return -1, steps


def read_registry(path):
    sets = {}  # mib -> (primary, [aliases])
    with open(path, encoding="utf-8", newline="") as f:
        for row in csv.DictReader(f):
            mib = int(row["MIBenum"])
            if mib in LATER_SETS:
                continue
            primary = PRIMARY_OVERRIDE.get(mib, row["Name"].strip())
            aliases = [row["Name"].strip()] + [a.strip() for a in row["Aliases"].split("\n")]
            # Only names: no blanks (the registry's remarks have them), no empties.
            aliases = [a for a in aliases if a and " " not in a]
            if mib in ALIAS_OVERRIDE:
                aliases = list(ALIAS_OVERRIDE[mib])
            seen, kept = {primary.lower()}, []
            for a in aliases:
                if a.lower() not in seen:
                    seen.add(a.lower())
                    kept.append(a)
            assert mib not in sets, mib
            sets[mib] = (primary, kept)
    for mib, name in OWN_SETS:
        sets[mib] = (name, [])
    return sets


def build(path):
    sets = read_registry(path)
    names = [(n, mib) for mib, (p, al) in sets.items() for n in [p] + al]
    names.sort(key=functools.cmp_to_key(lambda a, b: name_compare(a[0], b[0])))
    for i in range(1, len(names)):
        assert name_compare(names[i - 1][0], names[i][0]) < 0, (names[i - 1], names[i])
    for n, mib in names:
        found, steps = bsearch(names, n)
        assert found == mib and steps <= 10, (n, mib, found, steps)
    mibs = sorted((mib, p) for mib, (p, _) in sets.items())
    for mib, mime in MIME_TABLE:
        assert mib in sets, (mib, mime)

    mime_of = dict(MIME_TABLE)
    assert len(ICONV_NAMES) == ICONV_ROWS, len(ICONV_NAMES)
    by_upper = {}
    for mib, (p, _) in sets.items():
        if mib not in EXCEPTIONS:
            by_upper.setdefault(mime_of.get(mib, p).upper(), []).append(mib)
    iconv = []
    for name in ICONV_NAMES:
        cands = [m for m, n in EXCEPTIONS.items() if n == name] or by_upper.get(name, [])
        assert len(cands) == 1, (name, cands)
        iconv.append((cands[0], name))
    assert [m for m, _ in iconv] == sorted({m for m, _ in iconv}), "iconv rows out of order"
    assert len(iconv) - len(EXCEPTIONS) == 160
    return sets, names, mibs, iconv


def c_string(s):
    return '"' + s.replace("\\", "\\\\").replace('"', '\\"') + '"'


def emit(out, sets, names, mibs, iconv, edition):
    w = out.write
    w("// Generated by data/charsets/gen_charsets.py from the IANA character-sets\n")
    w("// registry (%s).\n" % edition)
    w("// Do not edit: change the generator and rerun it.\n\n")
    w('#include "text/oru_charset_tables.h"\n\n// clang-format off\nnamespace oru_charset {\n\n')
    w("// Every primary name and alias, sorted for oru_charset_name_compare.\n")
    w("const oruCSNameRow oruCSNameTable[] = {\n")
    for n, mib in names:
        w("    {%s, %d},\n" % (c_string(n), mib))
    w("};\nconst size_t oruCSNameTableSize = %d;\n\n" % len(names))
    w("// Primary names by MIBenum.\nconst oruCSMIBRow oruCSMIBTable[] = {\n")
    for mib, p in mibs:
        w("    {%d, %s},\n" % (mib, c_string(p)))
    w("};\nconst size_t oruCSMIBTableSize = %d;\n\n" % len(mibs))
    w("// Preferred MIME names that differ from the primary name.\n")
    w("const oruCSMIBRow oruCSMIMETable[] = {\n")
    for mib, n in MIME_TABLE:
        w("    {%d, %s},\n" % (mib, c_string(n)))
    w("};\nconst size_t oruCSMIMETableSize = %d;\n\n" % len(MIME_TABLE))
    w("// The iconv name of every convertible set, then a terminating row.\n")
    w("const oruCSMIBRow oruIconvNameTable[] = {\n")
    for mib, n in iconv:
        w("    {%d, %s},\n" % (mib, c_string(n)))
    w("    {0, nullptr},\n};\nconst size_t oruIconvNameTableSize = %d;\n\n" % len(iconv))
    w("}  // namespace oru_charset\n// clang-format on\n")


def main(argv):
    src = argv[1] if len(argv) > 1 else DEFAULT_CSV
    dst = argv[2] if len(argv) > 2 else DEFAULT_OUT
    sets, names, mibs, iconv = build(src)
    with open(src, "rb") as f:
        digest = hashlib.sha256(f.read()).hexdigest()[:16]
    edition = "CSV sha256 %s..., without MIBenum 2108, 2109, 2260" % digest
    if dst == "-":
        emit(sys.stdout, sets, names, mibs, iconv, edition)
    else:
        with open(dst, "w", encoding="ascii", newline="\n") as f:
            emit(f, sets, names, mibs, iconv, edition)
    print("%d sets, %d names, %d MIME rows, %d iconv rows" %
          (len(mibs), len(names), len(MIME_TABLE), len(iconv)), file=sys.stderr)
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
