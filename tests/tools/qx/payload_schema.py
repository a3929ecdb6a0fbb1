#!/usr/bin/env python3
"""payload_schema.py QX SCHEMA GUIDE: the schema, `qx check` and the guide agree: on one set of pushes, and on every key."""
import copy
import json
import re
import subprocess
import sys

from jsonschema import Draft202012Validator

qx, schema_file, guide_file = sys.argv[1:]
with open(schema_file, encoding="utf-8") as file:
    schema = json.load(file)
with open(guide_file, encoding="utf-8") as file:
    guide = file.read()
example = json.loads(re.search(r"```json.*\n((?:.*\n)*?)```", guide)[1])

ABSENT = object()
PANEL = ("_rf", "vt", "it", 0)
GOOD = [
    ((), None),
    (("_sid",), "vtqx"),
    (("_m",), 7),
    (("_rf", "vt", "tms"), 3000.0),
    (("_rf", "vt", "tms"), None),
    (("_rf", "vt", "s"), ABSENT),
    (PANEL + ("s", "bgc"), "#FFF"),
    (PANEL + ("ti",), None),
    (PANEL + ("ti", "s", "fz"), None),
    (PANEL + ("ac",), []),
    (PANEL + ("ac", 0), {"t": "0", "ul": 7}),
    (PANEL + ("ac", 0), {"t": "1", "ul": None}),
    (PANEL + ("unknown",), 1),
    (("$_rf",), ""),
    (("_rf",), ABSENT),
]
BAD = [
    (("_sid",), ABSENT),
    (("_sid",), "VTQXX"),
    (("aps", "mutable-content"), ABSENT),
    (("aps", "category"), ABSENT),
    (("aps", "category"), ""),
    (("_rf",), "{}"),
    (("_rf",), None),
    (("_rf", "vt"), ABSENT),
    (("_rf", "vt", "t"), 0),
    (("_rf", "vt", "t"), "1"),
    (("_rf", "vt", "it"), []),
    (("_rf", "vt", "it"), {}),
    (("_rf", "vt", "it", 1), 7),
    (("_rf", "vt", "tms"), "3000"),
    (("_rf", "vt", "tms"), 2500.5),
    (("_rf", "vt", "s", "bgc"), 7),
    (PANEL + ("id",), ABSENT),
    (PANEL + ("md",), ABSENT),
    (PANEL + ("md", "ul"), None),
    (PANEL + ("md", "at"), "text"),
    (PANEL + ("ti", "tx"), ABSENT),
    (PANEL + ("ti", "s", "fz"), "XL"),
    (PANEL + ("ti", "s", "an"), "left"),
    (PANEL + ("ti", "s", "fs"), "b"),
    (PANEL + ("ac",), {"t": "0"}),
    (PANEL + ("ac", 0, "t"), 2),
    (PANEL + ("ac", 0, "t"), "4"),
    (PANEL + ("ac", 0, "ul"), 7),
]


# What the guide has a table of keys for, by the beginning of its heading.
TABLES = {
    "The push": "userInfo",
    "`/aps`": "aps",
    "`/_rf/vt`": "viewTemplate",
    "`/_rf/vt/it/0`": "panel",
    "`/_rf/vt/it/0/md`": "media",
    "A text block": "textBlock",
    "The style of a text": "textStyle",
    "The style of an area": "areaStyle",
    "An action": "action",
}


def disagreements():
    """Keys that guide or schema has alone, or calls required alone."""
    for heading, name in TABLES.items():
        section = re.search(rf"^##+ {re.escape(heading)}(?:[,:].*| \(.*)?\n((?:(?!#).*\n)*)", guide, re.MULTILINE)[1]
        rows = [row.split("|")[1:4] for row in section.splitlines() if row.startswith("| `")]
        written = {key.strip(" `"): default.strip() == "required" for key, _, default in rows}
        definition = schema["$defs"][name]
        required = definition.get("required", []) if name not in ("userInfo", "aps") else ["aps"]
        known = {key: key in required for key in definition["properties"]}
        if written != known:
            yield f"{heading}: {sorted(written.items() ^ known.items())}"
    tabled = {*TABLES.values(), "content", "richFeatures"}
    yield from (f"no table in the guide: {name}" for name in schema["$defs"] if name not in tabled)


def changed(path, value):
    push = copy.deepcopy(example)
    if not path:
        return push
    parent = push
    for step in path[:-1]:
        parent = parent[step]
    if value is ABSENT:
        del parent[path[-1]]
    else:
        parent[path[-1]] = value
    return push


pushes = [(changed(*row), good, row) for good, rows in ((True, GOOD), (False, BAD)) for row in rows]
pushes += [({"content": {"userInfo": push}}, good, row) for push, good, row in pushes]
lines = "\n".join(json.dumps(push) for push, _, _ in pushes) + "\n"
result = subprocess.run([qx, "check", "--format", "json", "-"], input=lines, capture_output=True, text=True, timeout=60)
refused = {
    finding["line"] for finding in map(json.loads, result.stdout.splitlines()) if finding["severity"] == "error"
}
Draft202012Validator.check_schema(schema)
validator = Draft202012Validator(schema)
failures = 0
for disagreement in disagreements():
    failures += 1
    print(disagreement)
for line, (push, good, row) in enumerate(pushes, 1):
    if (validator.is_valid(push), line not in refused) != (good, good):
        failures += 1
        print(f"{row}: schema {validator.is_valid(push)}, qx check {line not in refused}, expected {good}")
sys.exit(1 if failures else 0)
