"""Display names of the library's 190 locales, read from CLDR's XML files.

For each locale this module gives, per kind, the entries the locale itself
must carry: CLDR's resolved value of every key, minus those that the
library's own fallback (regional locale, then its language, then root)
would give anyway.  CLDR resolves through its own parent chain, which is
longer than the library's (en_AU inherits from en_001, es_AR from es_419,
pt_AO from pt_PT, nb from no); flattening that chain into the locale keeps
the library's three-step lookup giving CLDR's answer.

Filters, as CLDR's tools apply them by default: no `alt` variants, no
currency names with a `count`, no entries whose `draft` is "unconfirmed" or
"provisional", no values equal to the inheritance marker; keys of at most
three characters.  Root keeps only currency symbols.
"""

import os
import re
import xml.etree.ElementTree as ET

DEFAULT_DIR = "/usr/share/unicode/cldr/common"

KINDS = ("language", "territory", "currency", "symbol")

LOCALES = """
af af_NA ar ar_DJ ar_ER ar_SO az be bg br bs ca cs cy da de de_CH de_LU el en
en_AG en_AU en_BB en_BE en_BM en_BS en_BW en_BZ en_CA en_CM en_DM en_FJ en_GB
en_GD en_GH en_GI en_GM en_GY en_HK en_IN en_JM en_KE en_KI en_KN en_KY en_LC
en_LR en_LS en_MG en_MT en_MU en_MW en_NA en_NG en_NZ en_PG en_PH en_PK en_SB
en_SC en_SG en_SL en_SS en_SZ en_TO en_TT en_TZ en_UG en_VC en_VU en_WS en_ZA
en_ZM en_ZW es es_AR es_BO es_CL es_CO es_CR es_CU es_DO es_EC es_GT es_HN
es_MX es_NI es_PA es_PE es_PH es_PR es_PY es_US es_UY es_VE et eu fa fa_AF fi
fo fr fr_BI fr_CA fr_CD fr_CH fr_DJ fr_DZ fr_GN fr_HT fr_KM fr_LU fr_MG fr_MR
fr_MU fr_RW fr_SC fr_SY fr_TN ga gd gl ha he hi hr hr_BA hu id ig is it it_CH
ja kk ko ky lt lv mk mn ms mt nb nl nl_AW nl_BE nl_CW nl_SR nl_SX nn pl ps pt
pt_AO pt_MO pt_MZ pt_PT pt_ST rm ro ru ru_BY ru_KG ru_KZ rw se sk sl sq sq_MK
sr sv sv_FI sw sw_UG tg th tn tn_BW tr uk ur uz vi xh yo zh zu
""".split()

INHERIT_MARKER = "\u2191\u2191\u2191"
REJECTED_DRAFT = ("unconfirmed", "provisional")
SECTIONS = re.compile(r"<localeDisplayNames>.*?</localeDisplayNames>|<currencies>.*?</currencies>", re.S)


def accepted(element):
    return "alt" not in element.attrib and element.get("draft") not in REJECTED_DRAFT


def read_locale_file(path):
    """The locale's own entries per kind ({} for each kind when no file)."""
    data = {kind: {} for kind in KINDS}
    if not os.path.exists(path):
        return data
    with open(path, encoding="utf-8") as f:
        text = f.read()
    # Parsing only the two sections read keeps the generator fast.
    parts = [m.group(0) for m in SECTIONS.finditer(text)]
    root = ET.fromstring("<ldml>" + "".join(parts) + "</ldml>")

    def put(kind, key, element):
        value = element.text or ""
        if len(key) <= 3 and accepted(element) and value and value != INHERIT_MARKER:
            data[kind].setdefault(key, value)

    for e in root.findall("./localeDisplayNames/languages/language"):
        put("language", e.get("type"), e)
    for e in root.findall("./localeDisplayNames/territories/territory"):
        put("territory", e.get("type"), e)
    for cur in root.findall("./currencies/currency"):
        if not accepted(cur):
            continue
        key = cur.get("type")
        for e in cur.findall("displayName"):
            if "count" not in e.attrib:
                put("currency", key, e)
        for e in cur.findall("symbol"):
            put("symbol", key, e)
    return data


def parent_locales(cldr_dir):
    """CLDR's explicit parents ({child: parent})."""
    tree = ET.parse(os.path.join(cldr_dir, "supplemental", "supplementalData.xml"))
    parents = {}
    for e in tree.getroot().findall("./parentLocales/parentLocale"):
        for child in e.get("locales").split():
            parents[child] = e.get("parent")
    return parents


def cldr_chain(locale, parents):
    """The locale and its ancestors in CLDR's inheritance, root last."""
    chain = [locale]
    while chain[-1] != "root":
        cur = chain[-1]
        chain.append(parents.get(cur, cur.rsplit("_", 1)[0] if "_" in cur else "root"))
    return chain


def resolve(cldr_dir):
    """{locale: {kind: {key: value}}}: CLDR's resolved values, root as "root"."""
    parents = parent_locales(cldr_dir)
    files = {}

    def own(name):
        if name not in files:
            files[name] = read_locale_file(os.path.join(cldr_dir, "main", name + ".xml"))
        return files[name]

    resolved = {}
    for locale in ["root"] + LOCALES:
        merged = {kind: {} for kind in KINDS}
        # A locale without a file of its own (CLDR may drop one to its seed
        # set) resolves to nothing but root: it stays empty here.
        if locale == "root" or os.path.exists(os.path.join(cldr_dir, "main", locale + ".xml")):
            for name in cldr_chain(locale, parents):
                for kind in KINDS:
                    if name == "root" and kind != "symbol":
                        continue
                    for key, value in own(name)[kind].items():
                        merged[kind].setdefault(key, value)
        resolved[locale] = merged
    return resolved


def load(cldr_dir=DEFAULT_DIR):
    """[(name, {kind: {key: value}})] in table order (root as "" first),
    each locale holding only what the library's fallback does not give."""
    resolved = resolve(cldr_dir)
    tables = {}
    for locale in ["root"] + LOCALES:
        fallback = []
        if locale != "root":
            if "_" in locale:
                fallback.append(tables[locale.split("_")[0]])
            fallback.append(tables["root"])
        kept = {}
        for kind in KINDS:
            kept[kind] = {}
            for key, value in resolved[locale][kind].items():
                inherited = next((t[kind][key] for t in fallback if key in t[kind]), None)
                if inherited != value:
                    kept[kind][key] = value
        tables[locale] = kept
    names = sorted(LOCALES)
    return [("", tables["root"])] + [(n, tables[n]) for n in names]
