"""uncovered.py REPORT.json: prints what the tests leave uncovered of xml/, and why.

The report is gcovr's. Fails when uncovered.txt gives no reason for a line, or one that is stale.
"""

import json
import pathlib
import sys

reasons = {}  # by file name and piece of a line
for block in pathlib.Path(__file__).with_name("uncovered.txt").read_text().split("\n\n"):
    lines = block.splitlines()
    reason = " ".join(line[2:] for line in lines if line.startswith("#"))
    reasons.update((tuple(line.split(": ", 1)), reason) for line in lines if line[0] != "#")

found = {}  # by reason
used = set()
for file in json.load(open(sys.argv[1]))["files"]:
    path = pathlib.Path(file["file"])
    source = path.read_text().splitlines()
    for line in file["lines"]:
        text = source[line["line_number"] - 1].strip()
        missed = sum(branch["count"] == 0 for branch in line["branches"])
        if missed or (line["count"] == 0 and not line.get("gcovr/noncode")):
            keys = [key for key in reasons if key[0] == path.name and key[1] in text]
            used.update(keys)
            reason = reasons[keys[0]] if keys else "NO REASON IS GIVEN"
            branches = f" ({missed} of {len(line['branches'])} branches)" if missed else ""
            found.setdefault(reason, []).append(f"  {path}:{line['line_number']}{branches}: {text}")
for reason, lines in found.items():
    print(reason, *lines, "", sep="\n")
for name, piece in sorted(set(reasons) - used):
    print(f"covered by now: {name}: {piece}")
sys.exit("NO REASON IS GIVEN" in found or set(reasons) != used)
