"""Prints what every locale must answer, straight from CLDR's XML:
one line `locale<TAB>kind<TAB>code<TAB>value` per resolvable code.

    cldr_oracle.py CLDR_COMMON_DIR LOCALE...

A value is the first accepted one along CLDR's parent chain (explicit
parent locales, else the name cut at its last "_", then root); accepted
means no alt, no count, no draft "unconfirmed"/"provisional", not the
inheritance marker, a code of at most three characters.  Root supplies
currency symbols only.
"""

import os
import sys
import xml.etree.ElementTree as ET

common = sys.argv[1]
locales = sys.argv[2:]
kinds = {
    "language": "./localeDisplayNames/languages/language",
    "territory": "./localeDisplayNames/territories/territory",
    "currency": "./numbers/currencies/currency/displayName",
    "symbol": "./numbers/currencies/currency/symbol",
}
parents = {}
for e in ET.parse(os.path.join(common, "supplemental/supplementalData.xml")).iter("parentLocale"):
    for child in e.get("locales").split():
        parents[child] = e.get("parent")

parsed = {}
REJECTED = ("unconfirmed", "provisional")


def sections(text):
    """The two parts of a locale file read here, as one element (parsing
    whole files would make the oracle slow)."""
    parts = []
    for tag in ("localeDisplayNames", "numbers"):
        b, e = text.find("<%s>" % tag), text.find("</%s>" % tag)
        if b >= 0 and e > b:
            parts.append(text[b:e + len(tag) + 3])
    return ET.fromstring("<ldml>%s</ldml>" % "".join(parts))


def values(name, kind):
    """{code: value} of one file and kind."""
    if name not in parsed:
        found = {k: {} for k in kinds}
        path = os.path.join(common, "main", name + ".xml")
        if os.path.exists(path):
            with open(path, encoding="utf-8") as f:
                root = sections(f.read())
            owners = {}
            for cur in root.findall("./numbers/currencies/currency"):
                for child in cur:
                    owners[child] = cur
            for k, xpath in kinds.items():
                for e in root.findall(xpath):
                    owner = owners.get(e)
                    code = (owner if owner is not None else e).get("type")
                    bad = [x for x in (e, owner) if x is not None and
                           ("alt" in x.attrib or x.get("draft") in REJECTED)]
                    if bad or "count" in e.attrib or len(code) > 3 or not e.text:
                        continue
                    if e.text != "\u2191\u2191\u2191":
                        found[k].setdefault(code, e.text)
        parsed[name] = found
    return parsed[name][kind]


out = sys.stdout
for locale in locales:
    chain = [locale]
    if not os.path.exists(os.path.join(common, "main", locale + ".xml")):
        chain = []
    while chain and chain[-1] != "root":
        c = chain[-1]
        chain.append(parents.get(c, c.rsplit("_", 1)[0] if "_" in c else "root"))
    chain = chain or ["root"]
    for kind in kinds:
        merged = {}
        for name in chain:
            if name == "root" and kind != "symbol":
                continue
            for code, value in values(name, kind).items():
                merged.setdefault(code, value)
        for code in sorted(merged):
            out.write("%s\t%s\t%s\t%s\n" % (locale, kind, code, merged[code]))
