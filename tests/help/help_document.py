"""Reads the help document, and the texts of the program that it quotes.

In the document <b> marks what stands in the program's windows and menus, <samp> what the program says; a <var>
inside a <samp> stands for what differs from time to time.
"""

import re
import struct
import xml.etree.ElementTree as xml
from html.parser import HTMLParser
from pathlib import Path

WITHOUT_END = {"meta", "img", "source", "wbr", "br", "link", "input", "hr"}
QUOTES = {"b", "samp"}


class Document(HTMLParser):
    """The elements in their order, as (tag, attributes), and what is quoted."""

    def __init__(self, text):
        super().__init__()
        self.text, self.style = "", ""
        self.elements, self.headings = [], []
        self.captions, self.sayings = [], []  # of <b>; of <samp>, as the pieces between the <var>s
        self.tables = []                      # for each: whether it has a heading
        self._open, self._pieces = [], []
        self.feed(text)

    def _inside(self, *tags):
        return any(tag in tags for tag in self._open)

    def handle_starttag(self, tag, attributes):
        self.elements.append((tag, dict(attributes)))
        if re.fullmatch("h[1-6]", tag):
            self.headings.append(int(tag[1]))
        if tag == "table":
            self.tables.append(False)
        if tag == "th":
            self.tables[-1] = True
        if tag in QUOTES:
            self._pieces = [""]
        elif self._inside(*QUOTES):
            self._pieces.append("")
        if tag not in WITHOUT_END:
            self._open.append(tag)

    def handle_endtag(self, tag):
        while self._open.pop() != tag:
            pass
        if tag == "var":
            self._pieces.append("")
        if tag == "b":
            self.captions.append(" ".join("".join(self._pieces).split()))
        if tag == "samp" and not self._inside("pre"):
            self.sayings.append([piece for piece in self._pieces if piece.strip()])

    def handle_data(self, data):
        if self._inside("style"):
            self.style += data
            return
        self.text += data
        if self._inside(*QUOTES) and not self._inside("var"):
            self._pieces[-1] += data

    def all(self, tag):
        return [attributes for name, attributes in self.elements if name == tag]

    def pictures(self):
        """(name, width, height) of each, as the document has it; a night picture is as large as its day picture."""
        pictures, waiting = [], []
        for tag, attributes in self.elements:
            if tag == "source":
                waiting.append(attributes["srcset"])
            if tag == "img":
                size = int(attributes["width"]), int(attributes["height"])
                pictures += [(name, *size) for name in (attributes["src"], *waiting)]
                waiting = []
        return pictures


def png_size(file):
    """(width, height), or None when it is no PNG."""
    head = file.read_bytes()[:24]
    return struct.unpack(">II", head[16:]) if head[:8] == b"\x89PNG\r\n\x1a\n" and head[12:16] == b"IHDR" else None


LITERAL = r'"(?:[^"\\\n]|\\.)*"'
LITERALS = re.compile(rf"{LITERAL}(?:_s)?(?:\s*{LITERAL})*")  # beside each other they are one


def literals(source):
    """The texts in a C++ source."""
    found = []
    for run in LITERALS.findall(re.sub(r"^\s*(#include|//).*$", "", source, flags=re.MULTILINE)):
        text = "".join(piece[1:-1] for piece in re.findall(LITERAL, run))
        found.append(text.replace(r"\r\n", " ").replace(r"\\", "\\").replace(r"\"", '"').replace(r"\t", "\t"))
    return found


def form_texts(form):
    """The texts in a .ui file."""
    return [element.text for element in xml.parse(form).iter("string") if element.text]


def plain(caption):
    """Without the mark of the letter that presses it, and without the key in a menu."""
    return caption.split("\t")[0].replace("&", "").strip()


def sources(root, pattern):
    folders = ("app", "forms", "ftp", "platform", "settings", "toolkit")
    return sorted(file for folder in folders for file in Path(root, folder).rglob(pattern))


def button_captions(form):
    """Of the buttons in a .ui file that the user can come to see."""
    for widget in xml.parse(form).iter("widget"):
        if widget.get("class") != "QPushButton" or widget.find("property[@name='visible']") is not None:
            continue
        text = widget.find("property[@name='text']/string")
        if text is not None and text.text:
            yield plain(text.text)
