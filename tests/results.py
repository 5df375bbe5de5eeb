"""Tells what came of the tests of an emulated machine, and compares its digests with this machine's.

usage: results.py NAME RESULTS OWN_RESULTS      both as `ctest --output-junit` writes them
"""
import re
import sys
import xml.etree.ElementTree as ElementTree


def cases(path):
    return {case.get("name"): case for case in ElementTree.parse(path).iter("testcase")}


def digests(results):
    found = {name: re.search(r"^Digest of all results: (\w+)", case.findtext("system-out"), re.M)
             for name, case in results.items() if name.startswith("property.")}
    return {name: digest and digest[1] for name, digest in found.items()}


name, results, own_results = sys.argv[1], cases(sys.argv[2]), cases(sys.argv[3])
passed = [test for test, case in results.items() if case.get("status") == "run"]
skipped = {test: re.search(r"Skipped(?:: |\n)(.*)", case.findtext("system-out"))
           for test, case in results.items() if case.find("skipped") is not None}
failed = sorted(results.keys() - passed - skipped.keys())
for test, reason in skipped.items():
    print(f"skipped: {test}: {reason[1] if reason else 'no reason is given'}")
wrong = [f"failed: {test}" for test in failed]
theirs, ours = digests(results), digests(own_results)
wrong += [f"other results than on this machine: {test}: {theirs.get(test)} instead of {digest}"
          for test, digest in ours.items() if digest is None or theirs.get(test) != digest]
print("\n".join(wrong) or f"The results of {len(ours)} property tests are those of this machine.")
print(f"{name}: {len(passed)} passed, {len(skipped)} skipped, {len(failed)} failed.")
sys.exit(bool(wrong) or not passed or not ours)
