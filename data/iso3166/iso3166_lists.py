"""The library's ISO 3166 countries and their subdivisions, read from the
iso-codes JSON files (iso_3166-1.json, iso_3166-2.json).

The country list is fixed: the countries for which subdivisions are kept,
plus KY and TF.  Each country gets every subdivision the edition gives for
it, sorted by code; a listed country without subdivisions in the edition
gets an empty list, and subdivisions of unlisted countries are left out.
Names come from the `name` field, except where the library fixes a spelling.
"""

import json
import os

DEFAULT_DIR = "/usr/share/iso-codes/json"

COUNTRIES = """
AD AE AF AG AL AM AO AR AT AU AZ BA BB BD BE BF BG BH BI BJ BM BN BO BQ BR BS
BT BW BY BZ CA CD CF CG CH CI CL CM CN CO CR CU CV CY CZ DE DJ DK DM DO DZ EC
EE EG EH ER ES ET FI FJ FM FR GA GB GD GE GH GL GM GN GQ GR GT GW GY HN HR HT
HU ID IE IL IN IQ IR IS IT JM JO JP KE KG KH KI KM KN KP KR KW KY KZ LA LB LC
LI LK LR LS LT LU LV LY MA MC MD ME MG MH MK ML MM MN MO MR MT MU MV MW MX MY
MZ NA NE NG NI NL NO NP NR NZ OM PA PE PG PH PK PL PS PT PW PY QA RO RS RU RW
SA SB SC SD SE SG SH SI SK SL SM SN SO SR SS ST SV SY SZ TD TF TG TH TJ TL TM
TN TO TR TT TV TW TZ UA UG UM US UY UZ VC VE VN VU WS YE ZA ZM ZW
""".split()

# Spellings the library keeps whatever the edition says.
FIXED_NAMES = {"TW": "Taiwan, Province Of China"}


def load(json_dir=DEFAULT_DIR):
    """[(code, name, [(subdivision code, name)])] in table order."""
    with open(os.path.join(json_dir, "iso_3166-1.json"), encoding="utf-8") as f:
        names = {c["alpha_2"]: c["name"] for c in json.load(f)["3166-1"]}
    with open(os.path.join(json_dir, "iso_3166-2.json"), encoding="utf-8") as f:
        subdivisions = json.load(f)["3166-2"]
    by_country = {code: [] for code in COUNTRIES}
    for s in subdivisions:
        country = s["code"].split("-")[0]
        if country in by_country:
            by_country[country].append((s["code"], s["name"]))
    return [(c, FIXED_NAMES.get(c, names[c]), sorted(by_country[c])) for c in sorted(COUNTRIES)]
