#!/usr/bin/env python3
"""Writes the seed corpora of the fuzz targets into fuzz/corpus/<target>/.

Deterministic (fixed random seeds, standard library only): running it again
gives the same files.  Each seed is laid out the way its target reads its
input (see the comment at the top of each fuzz_*.cpp); parameters that the
targets take from the end of the input with FuzzedDataProvider get a few
trailing bytes.

    python3 fuzz/make_corpora.py          # rewrites fuzz/corpus/
"""
import os
import random
import shutil
import struct

HERE = os.path.dirname(os.path.abspath(__file__))
OUT = os.path.join(HERE, "corpus")

TEXTS = [
    "", "a", "Hello, world", "Stra\u00dfe", "\u0130stanbul \u0131i", "\u03a3\u03bf\u03c6\u03af\u03b1\u03c2",
    "e\u0301", "\u00e9", "A\u030a\u0323", "\uac00\ud7a3\u1100\u1161\u11a8", "\ufb01\ufb03", "\u1e9b\u0323",
    "\u0344\u0f73\u0f75", "\ufdfa", "\u2126\u212b", "\U0001d15e\U0001d160", "\U0001f600 smile",
    "\u0049\u0307 \u00cc li\u0307", "\u3042\u30a2\u4e00\u9fa5", "\u05d0\u05b8\u0591",
    "\u00df\u0149\u01f0\u0390", "x\u0345\u0313\u0301", "\u212a\u017f\u1e9e", "\ud55c\uad6d\uc5b4",
]


def utf8(s):
    return s.encode("utf-8", "surrogatepass")


def write(target, seeds):
    d = os.path.join(OUT, target)
    os.makedirs(d, exist_ok=True)
    for i, data in enumerate(seeds):
        with open(os.path.join(d, "seed-%03d" % i), "wb") as f:
            f.write(data)


def text_seeds(rng, trailing):
    """Valid UTF-8 texts, their UTF-16LE forms, and some broken bytes."""
    seeds = []
    for t in TEXTS:
        seeds.append(utf8(t) + bytes(rng.randrange(256) for _ in range(trailing)))
    for t in TEXTS[::3]:
        seeds.append(t.encode("utf-16-le") + bytes(rng.randrange(256) for _ in range(trailing)))
    broken = [b"\xc0\xaf", b"\xe0\x80\x80", b"\xed\xa0\x80", b"\xf4\x90\x80\x80", b"\xef\xbf\xbe",
              b"\xef\xb7\x90", b"a\x80b\xbf", b"\xf8\x88\x80\x80\x80", b"\xe2\x82", b"\xff\xfe",
              b"\x00\xd8\x00\xdc", b"\x00\xdc\x00\xd8", b"abc\x00def"]
    for b in broken:
        seeds.append(b + bytes(rng.randrange(256) for _ in range(trailing)))
    return seeds


def catalog(pairs):
    """A catalog image as oru_catalog_build writes it."""
    slots = 0
    if pairs:
        slots = 1
        while slots < 2 * len(pairs):
            slots <<= 1
    size = 32 + 4 * slots + sum(len(k) + len(v) + 2 for k, v in pairs) + 2
    size = max(size, 36)
    table = [0] * slots
    body = b""
    at = 32 + 4 * slots
    for k, v in pairs:
        h = 0
        for ch in k:
            h = (h * 31 + ch) & 0xFFFFFFFF
        i = h & (slots - 1)
        while table[i]:
            i = (i + 1) & (slots - 1)
        table[i] = at
        body += k + b"\0" + v + b"\0"
        at += len(k) + len(v) + 2
    image = struct.pack(">IHHII16x", 0x4E574D4F, 0, 0, size, slots)
    image += b"".join(struct.pack(">I", t) for t in table) + body
    return image + b"\0" * (size - len(image))


def catalog_seeds(rng):
    seeds = []
    words = [b"Hello", b"World", b"File", b"Open", b"Save as...", b"%d files", b"ctx\x04Open",
             utf8("Gr\u00fc\u00dfe"), b"", b"Quit", b"Cancel", b"OK"]
    for n in range(0, 12):
        pairs = []
        for k in rng.sample(words[:-3] + words[-3:], n):
            if k and k not in [p[0] for p in pairs]:
                pairs.append((k, k.upper() if rng.random() < 0.8 else b""))
        pairs.sort()
        image = catalog(pairs)
        seeds.append(bytes([0]) + image)
        seeds.append(bytes([1]) + image)
    base = catalog([(b"Hello", b"Hallo"), (b"World", b"Welt")])
    # Broken headers: magic, version, size field, slot count, slot offsets,
    # missing trailing zeros, truncation.
    broken = [
        b"MONW" + base[4:], base[:4] + b"\0\2" + base[6:],
        base[:8] + struct.pack(">I", len(base) + 1) + base[12:],
        base[:12] + struct.pack(">I", 3) + base[16:], base[:12] + struct.pack(">I", 1 << 20) + base[16:],
        base[:32] + struct.pack(">I", len(base) - 1) + base[36:], base[:-1] + b"x", base[:35],
        base[:32] + struct.pack(">I", len(base) - 2) + base[36:],
    ]
    for b in broken:
        seeds.append(bytes([0]) + b)
    return seeds


PO_HEADER = ('msgid ""\nmsgstr ""\n"Content-Type: text/plain; charset=%s\\n"\n'
             '"Plural-Forms: nplurals=2; plural=(n != 1);\\n"\n\n')


def po_seeds(rng):
    entries = [
        'msgid "Hello"\nmsgstr "Hallo"\n',
        '#, fuzzy\nmsgid "World"\nmsgstr "Welt"\n',
        'msgctxt "menu"\nmsgid "Open"\nmsgstr "\\u00d6ffnen"\n',
        'msgid "One file"\nmsgid_plural "%d files"\nmsgstr[0] "Eine Datei"\nmsgstr[1] "%d Dateien"\n',
        'msgid "Tab\\there"\nmsgstr "Tab\\t\\"hier\\"\\n"\n',
        'msgid ""\n"multi"\n"line"\nmsgstr ""\n"mehr"\n"zeilig"\n',
        '#~ msgid "Old"\n#~ msgstr "Alt"\n',
        '# comment\n#: file.c:12\nmsgid "Empty"\nmsgstr ""\n',
        'msgid "Octal \\101\\x42"\nmsgstr "\\303\\251"\n',
        'msgid "Gr\u00fc\u00dfe"\nmsgstr "Greetings"\n',
    ]
    seeds = []
    for i in range(30):
        charset = ["UTF-8", "ISO-8859-1", "CHARSET", "utf8"][i % 4]
        body = (PO_HEADER % charset) if i % 5 else ""
        for e in rng.sample(entries, rng.randrange(1, len(entries))):
            body += e + "\n"
        data = body.encode("latin-1" if charset == "ISO-8859-1" else "utf-8", "replace")
        seeds.append(bytes([rng.randrange(16)]) + data)
    for bad in ['msgid "x"\n', 'msgstr "y"\n', 'msgid "a"\nmsgstr "b"\nmsgid "a"\nmsgstr "c"\n',
                'msgid "unterminated\nmsgstr ""\n', 'msgid "\\q"\nmsgstr ""\n',
                PO_HEADER % "no-such-charset" + 'msgid "a"\nmsgstr "b"\n']:
        seeds.append(bytes([0]) + bad.encode())
    return seeds


def convert_seeds(rng):
    seeds = []
    for t in TEXTS:
        # The text first; the parameters (set, direction, allocator, output
        # size, chunk cuts) come from the end.
        params = bytes(rng.randrange(256) for _ in range(6))
        seeds.append(utf8(t) + params)
    for t in TEXTS[::2]:
        for enc in ["utf-16-le", "utf-16-be", "latin-1", "shift_jis", "euc_jp", "iso2022_jp", "gb18030"]:
            try:
                seeds.append(t.encode(enc) + bytes(rng.randrange(256) for _ in range(6)))
            except UnicodeEncodeError:
                pass
    return seeds[:60]


DECIMAL_TEXTS = [
    "0", "-0", "1.5", "123.456e-7", "1,234,567.89", "  +42", ".5", "5.", "1e9999", "1E-9999",
    "Infinity", "-inf", "NaN", "nan(123)", "sNaN", "12345678901234567890123456789012345678",
    "9.999999999999999E384", "0.000000000000000000000000001", "1e", "1e+", "--1", "1,2,3",
    "\t\n 7", "99999995", "9999999999999999.5", "1_000", "0x10", "1.2.3", "+.e1",
]


def decparse_seeds(rng):
    seeds = []
    for i, t in enumerate(DECIMAL_TEXTS):
        precision = [0, 1, 2][i % 3]  # 7, 16, 34
        point, group = [(b".", b","), (b",", b"."), (b".", b"\0"), (b".", b" ")][i % 4]
        seeds.append(bytes([precision]) + point + group + bytes([1 if i % 5 else 0]) + t.encode())
    return seeds


def bid64(sign, coefficient, exponent):
    e = exponent + 398
    if coefficient < (1 << 53):
        return (sign << 63) | (e << 53) | coefficient
    return (sign << 63) | (3 << 61) | (e << 51) | (coefficient & ((1 << 51) - 1))


def bid128(sign, coefficient, exponent):
    return (sign << 127) | ((exponent + 6176) << 113) | coefficient


def decops_seeds(rng):
    specials64 = [0x7800000000000000, 0x7C00000000000000, 0x7E00000000000000 | 7, bid64(0, 0, 0),
                  bid64(1, 0, -398), bid64(0, 9999999999999999, 369), bid64(0, 1, -398)]
    specials128 = [0x7800 << 112, 0x7C00 << 112, (0x7E00 << 112) | 5, bid128(0, 0, 0),
                   bid128(0, 10**34 - 1, 6111), bid128(1, 1, -6176)]
    seeds = []
    for i in range(40):
        def d64():
            if rng.random() < 0.2:
                return rng.choice(specials64)
            return bid64(rng.randrange(2), rng.randrange(10 ** rng.randrange(1, 17)),
                         rng.choice([rng.randrange(-398, 370), rng.randrange(-20, 20)]))

        def d128():
            if rng.random() < 0.2:
                return rng.choice(specials128)
            return bid128(rng.randrange(2), rng.randrange(10 ** rng.randrange(1, 35)),
                          rng.choice([rng.randrange(-6176, 6112), rng.randrange(-40, 40)]))
        # FuzzedDataProvider takes integers from the end of the input, each
        # little-endian there: the first value consumed is the last 8 bytes.
        chunks = [struct.pack("<Q", v) for v in (d64(), d64(), d64())]
        for v in (d128(), d128(), d128()):
            chunks += [struct.pack("<Q", v & (2**64 - 1)), struct.pack("<Q", v >> 64)]
        params = bytes(rng.randrange(256) for _ in range(12))
        seeds.append(params + b"".join(reversed(chunks)))
    return seeds


def path_seeds(rng):
    # make_path reads piece selectors from the end of the input.
    seeds = []
    for i in range(30):
        seeds.append(bytes(rng.randrange(256) for _ in range(rng.randrange(4, 40))))
    return seeds


def lookup_seeds(rng):
    def s(x):
        return x.replace("\\", "\\\\") + "\\x"
    names = ["UTF-8", "latin1", "ISO_8859-1:1987", "csShiftJIS", "utf8", "windows-1252", "IBM037", ""]
    natives = ["German_Germany.1252", "English_United States.1252", "French_France.65001",
               "Japanese_Japan.932", "C", "de_DE.UTF-8@euro"]
    codes = ["de", "de_CH", "en", "EUR", "CH", "DE", "DE-BY", "US", "xx", "fr_FR", "USD", "JP-13"]
    opts = ["ab:c", ":ab:", "a-b", "x:y::", ""]
    argvs = [["-a", "-b", "x", "file"], ["-ab", "x"], ["--", "-a"], ["-", "-a"], ["-a-b"], ["-c", "-b"],
             ["-z", "-b"], ["file", "-a"]]
    seeds = []
    for i in range(36):
        a = [names, natives, codes][i % 3][i % len([names, natives, codes][i % 3])]
        b = codes[(i * 7) % len(codes)]
        data = s(a) + s(b) + s(opts[i % len(opts)])
        for arg in argvs[i % len(argvs)]:
            data += s(arg)
        seeds.append(data.encode() + bytes([rng.randrange(256)]))
    return seeds


def main():
    if os.path.isdir(OUT):
        shutil.rmtree(OUT)
    write("fuzz_utf", text_seeds(random.Random(1), 8))
    write("fuzz_normalize", text_seeds(random.Random(2), 2))
    write("fuzz_convert", convert_seeds(random.Random(3)))
    write("fuzz_catalog", catalog_seeds(random.Random(4)))
    write("fuzz_po", po_seeds(random.Random(5)))
    write("fuzz_decparse", decparse_seeds(random.Random(6)))
    write("fuzz_decops", decops_seeds(random.Random(7)))
    write("fuzz_path", path_seeds(random.Random(8)))
    write("fuzz_lookup", lookup_seeds(random.Random(9)))


if __name__ == "__main__":
    main()
