"""What Python's unittest finds, also in the form of a GoogleTest report: summary.py counts such cases one by one.

Where GTEST_OUTPUT=xml:FOLDER/ asks for it, the report stands in FOLDER/NAME.xml.
"""

import os
import unittest
import xml.etree.ElementTree as xml


def run(name, arguments):
    """Runs the calling program's cases and ends it. `name`: of the test at ctest; `arguments`: for unittest."""
    def result(*parts):
        return Report(name, *parts)
    unittest.main(argv=arguments, testRunner=unittest.TextTestRunner(resultclass=result, verbosity=2))


class Report(unittest.TextTestResult):
    def __init__(self, name, *parts):
        super().__init__(*parts)
        self.name = name
        self.suites = xml.Element("testsuites")
        self.suite = xml.SubElement(self.suites, "testsuite", name=name)
        self.case = None

    def startTest(self, test):
        super().startTest(test)
        self.case = xml.SubElement(self.suite, "testcase", name=test.id().split(".", 1)[1], status="run")

    def addSkip(self, test, reason):
        super().addSkip(test, reason)
        xml.SubElement(self.case, "skipped", message=reason)

    def addError(self, test, error):
        super().addError(test, error)
        xml.SubElement(self.case, "failure")

    def addFailure(self, test, error):
        super().addFailure(test, error)
        xml.SubElement(self.case, "failure")

    def addSubTest(self, test, subtest, error):
        super().addSubTest(test, subtest, error)
        if error:
            xml.SubElement(self.case, "failure")

    def stopTestRun(self):
        super().stopTestRun()
        place = os.environ.get("GTEST_OUTPUT", "").removeprefix("xml:")
        if place:
            xml.ElementTree(self.suites).write(os.path.join(place, self.name + ".xml"))
