"""Prints the iso-codes ISO 3166 data as lines:
`C<TAB>code<TAB>name` per country, `S<TAB>code<TAB>name` per subdivision.

    iso3166_oracle.py JSON_DIR
"""

import json
import os
import sys

d = sys.argv[1]
with open(os.path.join(d, "iso_3166-1.json"), encoding="utf-8") as f:
    for c in json.load(f)["3166-1"]:
        print("C\t%s\t%s" % (c["alpha_2"], c["name"]))
with open(os.path.join(d, "iso_3166-2.json"), encoding="utf-8") as f:
    for s in json.load(f)["3166-2"]:
        print("S\t%s\t%s" % (s["code"], s["name"]))
