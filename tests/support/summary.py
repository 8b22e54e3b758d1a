"""Counts the test cases of one or several runs of ctest.

summary.py RESULTS...   each a folder with ctest.xml (ctest --output-junit) and NAME.xml (--gtest_output) for every
                        GoogleTest program; or with failed.txt, the reason why nothing could be run.

Lists what failed and what was skipped and why, and ends with "N passed, N failed, N skipped". The exit code is 0
when something passed and nothing failed.
"""

import os
import sys
import xml.etree.ElementTree as xml


def google_cases(file):
    """(name, "passed" | "failed" | "skipped", reason) of each case of a GoogleTest program."""
    for suite in xml.parse(file).getroot():
        for case in suite.iter("testcase"):
            name = f"{suite.get('name')}.{case.get('name')}"
            skipped = case.find("skipped")
            if case.find("failure") is not None:
                yield name, "failed", ""
            elif skipped is not None:
                yield name, "skipped", (skipped.get("message") or "").strip().split("\n")[-1]
            elif case.get("status") == "run":
                yield name, "passed", ""


def program_cases(folder, test):
    """The cases of one test of ctest; one that is no GoogleTest program, or that broke down, is a case itself."""
    name = test.get("name")
    failed = test.get("status") != "run"
    report = os.path.join(folder, name + ".xml")
    if not os.path.exists(report):
        return [(name, "failed" if failed else "passed", "")]
    cases = list(google_cases(report))
    if not cases:
        return [(name, "failed", "its report tells of no case that was run")]
    cases = [(f"{name}: {case}", outcome, reason) for case, outcome, reason in cases]
    if failed and not any(outcome == "failed" for _, outcome, _ in cases):
        cases.append((f"{name}: its end", "failed", ""))  # a leak or a crash after the last case
    return cases


def folder_cases(folder):
    failed = os.path.join(folder, "failed.txt")
    if os.path.exists(failed):
        with open(failed, encoding="utf-8") as reason:
            return [(os.path.basename(folder), "failed", reason.read().strip())]
    tests = xml.parse(os.path.join(folder, "ctest.xml")).getroot().iter("testcase")
    return [(f"{os.path.basename(folder)}/{name}", outcome, reason)
            for test in tests for name, outcome, reason in program_cases(folder, test)]


def main(folders):
    cases = [case for folder in folders for case in folder_cases(folder)]
    for wanted in ("skipped", "failed"):
        for name, outcome, reason in cases:
            if outcome == wanted:
                print(f"{wanted}: {name}" + (f" ({reason})" if reason else ""))
    count = {wanted: sum(outcome == wanted for _, outcome, _ in cases) for wanted in ("passed", "failed", "skipped")}
    print(", ".join(f"{number} {outcome}" for outcome, number in count.items()))
    return 0 if count["passed"] and not count["failed"] else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
