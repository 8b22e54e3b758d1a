"""Checks the rules on planted tables, then holds the real one to the tests that there are.

Usage: fault_table_test.py DOCUMENT TEST_PROGRAM...
"""

import os
import subprocess
import sys
import unittest

import fault_table

DOCUMENT, PROGRAMS = sys.argv[1], sys.argv[2:]

LISTING = """Running main() from gtest_main.cc
One.
  Small
All/Two.
  Case/This  # GetParam() = 4 bytes
  Case/That  # GetParam() = 4 bytes
"""
TESTS = ["One.Small", "Two.Case/This", "Two.Case/That"]
HEAD = "| Fault | What the user gets | Test |\n|---|---|---|\n"


class FaultTable(unittest.TestCase):
    def test_names_in_a_list(self):
        self.assertEqual(fault_table.names_in_list(LISTING), TESTS)

    def test_a_whole_table(self):
        table = HEAD + "| a | b | `One.Small` |\n| a | b | `Two.*/This` and `Two.*/That` |\n"
        self.assertEqual(fault_table.check(table, TESTS), [])

    def test_what_is_found(self):
        table = HEAD + "| a | b | `One.Large` |\n| c | d | nothing |\n| e |  | `One.Small` |\n| f | g | `Two.*/This` |\n"
        self.assertEqual(fault_table.check(table, TESTS), [
            "no such test: One.Large", "no test: c", "not three cells: e |  | `One.Small`",
            "not in the table: One.Small", "not in the table: Two.Case/That"])

    def test_the_table(self):
        with open(DOCUMENT, encoding="utf-8") as file:
            document = file.read()
        # Where a report is asked for, a list would be written as one, in the place of that of the run.
        environment = {name: value for name, value in os.environ.items() if name != "GTEST_OUTPUT"}
        tests = []
        for program in PROGRAMS:
            listing = subprocess.run([program, "--gtest_list_tests"], check=True, capture_output=True, text=True,
                                     env=environment)
            tests += fault_table.names_in_list(listing.stdout)
        self.assertGreater(len(tests), 500, "hardly anything was listed")
        findings = fault_table.check(document, tests)
        self.assertEqual(findings, [], "\n" + "\n".join(findings))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
