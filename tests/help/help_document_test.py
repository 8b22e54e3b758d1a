"""Holds the help document to the HTML standard, to its own pictures and links, and to the program's texts.

Usage: help_document_test.py SOURCE_ROOT
"""

import html
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

import google_report
import help_document as help_

ROOT = Path(sys.argv[1])
FOLDER = ROOT / "hjälp"
FILE = FOLDER / "helpftp.htm"
TEXT = FILE.read_text("utf-8")
DOCUMENT = help_.Document(TEXT)

MOST_PICTURE_BYTES = 600 * 1024
LETTERS = set("åäöÅÄÖ\u00a0")  # besides ASCII
EXPLAINED_FORMS = ("about", "certificate", "connection", "favourites", "filter", "folderupload", "main", "transfer",
                   "viewer")
LONGEST_SENTENCE = 100  # characters; longer texts of the program are explanations themselves
LONGEST_INSPECTION = 120  # seconds
LIGHT, DARK = 1, 0  # as the browser counts them


def needs(program):
    return unittest.skipUnless(shutil.which(program), f"{program} is not installed")


class Html(unittest.TestCase):
    @needs("tidy")
    def test_is_valid(self):
        tidy = subprocess.run(["tidy", "-quiet", "-errors", "-utf8", FILE], capture_output=True, text=True, check=False)
        self.assertEqual(tidy.stderr, "")
        self.assertEqual(tidy.returncode, 0)

    def test_says_what_it_is(self):
        self.assertTrue(TEXT.startswith("<!DOCTYPE html>\n"))
        self.assertEqual(DOCUMENT.all("html"), [{"lang": "sv"}])
        self.assertEqual(DOCUMENT.all("meta")[0], {"charset": "utf-8"})
        self.assertEqual(len(DOCUMENT.all("title")), 1)

    def test_has_only_the_letters_of_swedish(self):
        self.assertEqual({letter for letter in html.unescape(TEXT) if not letter.isascii()} - LETTERS, set())

    def test_needs_nothing_but_its_own_pictures(self):
        self.assertEqual([tag for tag, _ in DOCUMENT.elements if tag in ("script", "link", "iframe", "object", "base")], [])
        self.assertEqual([name for _, attributes in DOCUMENT.elements for name in attributes
                          if name.startswith("on") or name == "style"], [])
        self.assertIsNone(re.search(r"url\(|@import|@font-face", DOCUMENT.style))
        self.assertEqual([link for link in DOCUMENT.all("a") if not link["href"].startswith("#")], [])

    def test_every_id_is_there_once(self):
        ids = [attributes["id"] for _, attributes in DOCUMENT.elements if "id" in attributes]
        self.assertEqual(sorted(ids), sorted(set(ids)))

    def test_every_link_leads_somewhere(self):
        ids = {attributes["id"] for _, attributes in DOCUMENT.elements if "id" in attributes}
        self.assertGreater(len(DOCUMENT.all("a")), 30)
        self.assertEqual([link["href"] for link in DOCUMENT.all("a") if link["href"][1:] not in ids], [])

    def test_the_contents_list_every_part(self):
        parts = [attributes["aria-labelledby"] for attributes in DOCUMENT.all("section")]
        links = [link["href"][1:] for link in DOCUMENT.all("a")]
        first = links.index(parts[0], 1)
        self.assertEqual(links[first:first + len(parts)], parts)

    def test_headings_come_in_order(self):
        self.assertEqual(DOCUMENT.headings[0], 1)
        self.assertEqual(DOCUMENT.headings.count(1), 1)
        for above, below in zip(DOCUMENT.headings, DOCUMENT.headings[1:]):
            self.assertLessEqual(below, above + 1)

    def test_every_table_has_headings(self):
        self.assertGreater(len(DOCUMENT.tables), 5)
        self.assertTrue(all(DOCUMENT.tables))


class Pictures(unittest.TestCase):
    def test_are_there_in_the_size_that_the_document_says(self):
        self.assertGreater(len(DOCUMENT.pictures()), 5)
        for name, width, height in DOCUMENT.pictures():
            with self.subTest(name):
                self.assertTrue((FOLDER / name).is_file())
                self.assertEqual(help_.png_size(FOLDER / name), (width, height))

    def test_are_all_shown(self):
        files = {f"bilder/{file.name}" for file in (FOLDER / "bilder").iterdir()}
        self.assertEqual(files, {name for name, _, _ in DOCUMENT.pictures()})

    def test_are_described(self):
        self.assertEqual([image["src"] for image in DOCUMENT.all("img") if len(image.get("alt", "").split()) < 5], [])

    def test_are_small(self):
        self.assertLess(sum(file.stat().st_size for file in (FOLDER / "bilder").iterdir()), MOST_PICTURE_BYTES)


class Texts(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.texts = [text for form in help_.sources(ROOT, "*.ui") for text in help_.form_texts(form)]
        for pattern in "*.cpp", "*.h":
            for source in help_.sources(ROOT, pattern):
                cls.texts += help_.literals(source.read_text("utf-8"))

    def forms(self, pattern):
        return [file for form in EXPLAINED_FORMS for file in sorted((ROOT / "forms" / form).glob(pattern))]

    def test_every_caption_is_the_programs(self):
        captions = {help_.plain(text) for text in self.texts}
        self.assertGreater(len(DOCUMENT.captions), 50)
        self.assertEqual([caption for caption in DOCUMENT.captions if caption not in captions], [])

    def test_every_saying_is_the_programs(self):
        pieces = [piece for saying in DOCUMENT.sayings for piece in saying]
        self.assertGreater(len(pieces), 50)
        self.assertEqual([piece for piece in pieces if not any(piece in text for text in self.texts)], [])

    def test_every_button_is_explained(self):
        buttons = [caption for form in self.forms("*.ui") for caption in help_.button_captions(form)]
        self.assertGreater(len(buttons), 20)
        self.assertEqual([caption for caption in buttons if caption not in DOCUMENT.captions], [])

    def test_every_sentence_of_the_windows_is_explained(self):
        sentences = [help_.plain(text) for source in self.forms("*.cpp")
                     for text in help_.literals(source.read_text("utf-8"))
                     if 3 <= len(text.split()) and len(text) < LONGEST_SENTENCE and not re.search(r"[<{]|^\d", text)]
        self.assertGreater(len(sentences), 20)
        self.assertEqual([text for text in sentences if text not in DOCUMENT.text], [])

    def test_every_line_of_the_trace_is_explained(self):
        source = (ROOT / "ftp/trace_translator.cpp").read_text("utf-8")
        sentences = re.findall(r'Rule\{\w+, u"[^"]*",\s*u"([^"]+)"', source)
        self.assertGreater(len(sentences), 10)
        self.assertEqual([text for text in sentences if text.strip() not in DOCUMENT.text], [])

    def test_every_error_is_explained(self):
        for file in "ftp/error_text.cpp", "app/shared/file_errors.cpp":
            sentences = [text for text in help_.literals((ROOT / file).read_text("utf-8")) if text[:1].isupper()]
            self.assertGreater(len(sentences), 4)
            self.assertEqual([text for text in sentences if text not in DOCUMENT.text], [])


class Browser(unittest.TestCase):
    @needs("chromium")
    def inspect(self, colours):
        """What the browser finds; see inspection.htm."""
        with tempfile.TemporaryDirectory() as home:
            page = (Path(__file__).parent / "inspection.htm").read_text("utf-8")
            inspection = Path(home) / "inspection.htm"
            inspection.write_text(page.replace("DOCUMENT", f'"{FILE.as_uri()}"'), "utf-8")
            sandbox = ["--no-sandbox"] if os.getuid() == 0 else []
            chromium = subprocess.run(
                ["chromium", "--headless", "--disable-gpu", *sandbox, f"--user-data-dir={home}/profile",
                 "--allow-file-access-from-files", f"--blink-settings=preferredColorScheme={colours}",
                 "--timeout=60000", "--dump-dom", inspection.as_uri()],
                env={**os.environ, "HOME": home}, capture_output=True, text=True, timeout=LONGEST_INSPECTION, check=False)
        findings = re.search(r'<pre id="findings">(.*)\ninspected</pre>', chromium.stdout, re.DOTALL)
        self.assertIsNotNone(findings, chromium.stdout[:2000])
        return html.unescape(findings.group(1)).split("\n")

    def check(self, colours, is_wanted):
        shown = {f"{name.split('/')[-1]} {width}x{height}"
                 for name, width, height in DOCUMENT.pictures() if is_wanted(name)}
        wanted = [f"{page}: shows {picture}" for page in (320, 640, 1280) for picture in shown]
        self.assertEqual(sorted(self.inspect(colours)), sorted(wanted))

    def test_shows_all_of_it_in_light_colours(self):
        self.check(LIGHT, lambda name: not name.endswith("-natt.png"))

    def test_shows_all_of_it_in_dark_colours(self):
        self.check(DARK, lambda name: name.endswith("-natt.png"))


if __name__ == "__main__":
    google_report.run("help_document", sys.argv[:1])
