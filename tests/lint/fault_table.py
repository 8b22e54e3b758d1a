"""Holds the table of doc/faults.md to the tests.

Each row is "| what a server does | what the user gets | `Suite.Case/Parameter` ... |"; the names are patterns of
fnmatch, without the prefix that GoogleTest puts before suites with parameters.
"""

import fnmatch
import re

ROW = re.compile(r"^\|(.*)\|\s*$")
QUOTED = re.compile(r"`([^`]+)`")


def rows(document):
    """The cells of each row, without headings and rules."""
    for line in document.splitlines():
        found = ROW.match(line)
        cells = [cell.strip() for cell in found.group(1).split("|")] if found else []
        if cells and cells[-1] != "Test" and not set(cells[0]) <= set("-: "):
            yield cells


def names_in_list(listing):
    """The full names of what --gtest_list_tests has printed."""
    names, suite = [], None
    for line in listing.splitlines():
        name = line.split("#")[0].rstrip()
        if name.startswith("  "):
            names.append(suite + name.strip())
        elif name.endswith("."):
            suite = name.split("/", 1)[-1]
    return names


def check(document, tests):
    """What is wrong, as lines."""
    findings, covered = [], set()
    for cells in rows(document):
        if len(cells) != 3 or not all(cells):
            findings.append(f"not three cells: {' | '.join(cells)}")
            continue
        patterns = QUOTED.findall(cells[2])
        if not patterns:
            findings.append(f"no test: {cells[0]}")
        for pattern in patterns:
            matched = fnmatch.filter(tests, pattern)
            covered.update(matched)
            if not matched:
                findings.append(f"no such test: {pattern}")
    findings += [f"not in the table: {test}" for test in tests if test not in covered]
    return findings
