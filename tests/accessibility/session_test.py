"""The real program as one who hears it and has no mouse meets it: over AT-SPI, and by keys.

Usage: session_test.py PROGRAM

Needs a screen (tests/support/on_screen) and gives itself a session bus, an accessibility bus and an FTP server of
its own.
"""

import ctypes
import os
import shutil
import subprocess
import sys
import tempfile
import threading
import time
import unittest
import warnings

import google_report

warnings.simplefilter("ignore")  # about asyncore's age, from pyftpdlib, and Atspi's own deprecations

LONGEST_WAIT = 20  # seconds; the program under the sanitizers is slow
FIELD_ROLES = ("text", "password text", "combo box", "list", "tree", "check box", "push button", "link")


def missing():
    """Why the program cannot be heard here, or nothing."""
    if not shutil.which("dbus-daemon"):
        return "dbus-daemon is not installed"
    if not any(os.path.exists(f"{folder}/at-spi-bus-launcher") for folder in ("/usr/libexec", "/usr/lib/at-spi2-core")):
        return "at-spi2-core is not installed"
    try:
        import gi
        gi.require_version("Atspi", "2.0")
    except (ImportError, ValueError):
        return "python3-gi and gir1.2-atspi-2.0 are not installed"
    try:
        import pyftpdlib  # noqa: F401
        ctypes.CDLL("libXtst.so.6")
    except (ImportError, OSError) as error:
        return str(error)
    return None


REASON = missing()


def wait_for(what, condition):
    """The condition's first value that counts as true."""
    end = time.monotonic() + LONGEST_WAIT
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > end:
            raise AssertionError(f"waited in vain for {what}")
        time.sleep(0.02)  # between two looks at another process, which tells us nothing by itself


class Keys:
    """The keyboard of the screen."""

    NAMES = {"Alt": 0xFFE9, "Shift": 0xFFE1, "Control": 0xFFE3, "Tab": 0xFF09, "Return": 0xFF0D, "Escape": 0xFF1B,
             "Home": 0xFF50, "Down": 0xFF54, "F4": 0xFFC1, "F10": 0xFFC7, "Space": 0x20, "Menu": 0xFF67}

    def __init__(self):
        self.x11, self.xtst = ctypes.CDLL("libX11.so.6"), ctypes.CDLL("libXtst.so.6")
        self.x11.XOpenDisplay.restype = ctypes.c_void_p
        self.x11.XKeycodeToKeysym.restype = self.x11.XStringToKeysym.restype = ctypes.c_ulong
        self.screen = ctypes.c_void_p(self.x11.XOpenDisplay(None))

    def _send(self, symbol, down):
        code = self.x11.XKeysymToKeycode(self.screen, ctypes.c_ulong(symbol))
        self.xtst.XTestFakeKeyEvent(self.screen, code, down, ctypes.c_ulong(0))

    def press(self, *names):
        symbols = [self.NAMES.get(name) or ord(name) for name in names]
        for symbol in symbols:
            self._send(symbol, 1)
        for symbol in reversed(symbols):
            self._send(symbol, 0)
        self.x11.XSync(self.screen, 0)

    def type(self, text):
        for letter in text:
            code = self.x11.XKeysymToKeycode(self.screen, ctypes.c_ulong(ord(letter)))
            plain = self.x11.XKeycodeToKeysym(self.screen, code, 0) == ord(letter)
            self.press(*([letter] if plain else ["Shift", letter]))


class Bus:
    """A session bus of the test's own. The accessibility bus is started by whoever asks for it there."""

    def __init__(self, folder):
        os.environ.update(XDG_RUNTIME_DIR=folder, HOME=folder, XDG_CONFIG_HOME=folder, XDG_DATA_HOME=folder)
        os.environ.pop("AT_SPI_BUS_ADDRESS", None)
        self.daemon = subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--print-address=1"],
                                       stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        os.environ["DBUS_SESSION_BUS_ADDRESS"] = self.daemon.stdout.readline().strip()

    def close(self):
        self.daemon.terminate()
        self.daemon.wait()
        self.daemon.stdout.close()


class Server:
    """Takes what is sent to it slowly: a few seconds for a megabyte."""

    def __init__(self, home):
        from pyftpdlib.authorizers import DummyAuthorizer
        from pyftpdlib.handlers import FTPHandler, ThrottledDTPHandler
        from pyftpdlib.log import config_logging
        from pyftpdlib.servers import FTPServer
        config_logging(level=50)

        class Slow(ThrottledDTPHandler):
            read_limit = 200_000  # bytes a second

        class Handler(FTPHandler):
            authorizer = DummyAuthorizer()
            dtp_handler = Slow

        Handler.authorizer.add_user("demo", "demo", home, perm="elradfmwMT")
        self.server = FTPServer(("127.0.0.1", 0), Handler)
        self.address = "127.0.0.1:%d" % self.server.address[1]
        self.going = True
        self.thread = threading.Thread(target=self._serve)
        self.thread.start()

    def _serve(self):
        while self.going:
            self.server.serve_forever(timeout=0.05, blocking=False, handle_exit=False)

    def close(self):
        self.going = False
        self.thread.join()
        self.server.close_all()


def has(part, state):
    return part.get_state_set().contains(getattr(Atspi.StateType, state))


def children(part):
    return [child for child in (part.get_child_at_index(i) for i in range(part.get_child_count())) if child]


def below(part):
    """All that is to be seen below a part. Rows of a list are not looked into."""
    for child in children(part):
        if has(child, "SHOWING"):
            yield child
            yield from below(child)


class Screen(unittest.TestCase):
    """The program, started for each case in a folder with two files."""

    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        self.local, self.remote = os.path.join(self.folder, "local"), os.path.join(self.folder, "remote")
        for folder in (self.local, self.remote):
            os.mkdir(folder)
        with open(os.path.join(self.local, "hej.txt"), "w", encoding="utf-8") as file:
            file.write("hej på dig")
        with open(os.path.join(self.local, "stor.bin"), "wb") as file:
            file.truncate(8_000_000)
        with open(os.path.join(self.remote, "readme.txt"), "w", encoding="utf-8") as file:
            file.write("x")
        # Somebody who has had the program open before is not greeted with the three steps.
        with open(os.path.join(self.folder, "Websmide's FTP program, fönster.conf"), "w", encoding="utf-8") as file:
            file.write("[MainForm]\nMainForm=-\n")
        self.keys = Keys()
        self.program = subprocess.Popen(
            [PROGRAM], cwd=self.local,
            env={**os.environ, "WEBSMIDE_SETTINGS_DIR": self.folder, "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1"})
        self.addCleanup(self.program.wait)
        self.addCleanup(self.program.kill)
        self.application = wait_for("the program", self.find_application)
        self.main = self.window("Websmide's FTP-program 3.0")

    def find_application(self):
        desktop = Atspi.get_desktop(0)
        desktop.set_cache_mask(Atspi.Cache.NONE)
        for application in children(desktop):
            if application.get_process_id() == self.program.pid:
                application.set_cache_mask(Atspi.Cache.NONE)
                return application
        return None

    def find_window(self, name):
        return next((window for window in children(self.application)
                     if window.get_name() == name and has(window, "SHOWING")), None)

    def window(self, name):
        """The window, once the keyboard is there."""
        return wait_for(f"the window {name}", lambda: (lambda found: found and has(found, "ACTIVE") and found)(
            self.find_window(name)))

    def gone(self, name):
        wait_for(f"the end of the window {name}", lambda: not self.find_window(name))

    def find(self, window, role, name):
        return next((part for part in below(window) if part.get_name() == name and part.get_role_name() == role), None)

    def part(self, window, role, name):
        return wait_for(f"{role} {name}", lambda: self.find(window, role, name))

    def press(self, window, role, name):
        """As an assistive program does."""
        action = self.part(window, role, name).get_action_iface()
        names = [action.get_action_name(i) for i in range(action.get_n_actions())]
        self.assertIn("Press", names)
        action.do_action(names.index("Press"))

    def focus(self, window):
        # The current row of a list counts as focused, too, wherever the keyboard is.
        return next((part for part in below(window)
                     if has(part, "FOCUSED") and part.get_role_name() not in ("list item", "table cell")), None)

    def tab_to(self, window, name):
        for _ in range(60):
            focus = self.focus(window)
            if focus and focus.get_name() == name:
                return focus
            self.keys.press("Tab")
            wait_for("the next stop", lambda was=focus: self.focus(window) != was)
        raise AssertionError(f"Tab does not come to {name}")

    def rows(self, window, name):
        tree = self.part(window, "tree", name)
        return [cell for cell in children(tree) if cell.get_role_name() == "table cell"]

    def selected(self, window, name, row):
        return any(has(cell, "SELECTED") and cell.get_name() == row for cell in self.rows(window, name))

    def close_program(self):
        self.keys.press("Alt", "F4")
        self.assertEqual(self.program.wait(LONGEST_WAIT), 0)

    def check(self, window):
        """What has to hold in every window."""
        for part in below(window):
            role, name, where = part.get_role_name(), part.get_name(), f"in {window.get_name()}"
            if has(part, "FOCUSABLE") or role in FIELD_ROLES or role in ("image", "progress bar", "separator"):
                self.assertNotEqual(name.strip(), "", f"{role} {where}")
            self.assertNotIn(role, ("unknown", "invalid"), f"{name} {where}")
            self.assertNotIn("<", part.get_description(), f"{name} {where}")


@unittest.skipIf(REASON, REASON)
class Windows(Screen):
    def test_main_window(self):
        self.check(self.main)
        self.assertEqual(self.main.get_role_name(), "frame")
        for role, name in (("panel", "Din dator"), ("panel", "Server"), ("combo box", "Enhet"), ("combo box", "Filmönster"),
                           ("combo box", "Ihågkomna kataloger"), ("push button", "Välj favoritkatalog"),
                           ("list", "Kataloger på din dator"), ("tree", "Filer på din dator"), ("tree", "Filer på servern"),
                           ("list", "Händelser"), ("progress bar", "Överförd andel")):
            self.part(self.main, role, name)
        self.assertEqual([row.get_name() for row in self.rows(self.main, "Filer på din dator")][::3], ["hej.txt", "stor.bin"])
        self.close_program()

    def test_fields_lead_to_their_labels(self):
        self.press(self.main, "push button", "Ny förbindelse...")
        dialog = self.window("Kontakta FTP-Server")
        self.check(dialog)
        labelled = {}
        for part in below(dialog):
            for relation in part.get_relation_set():
                if relation.get_relation_type() == Atspi.RelationType.LABELLED_BY:
                    labelled[relation.get_target(0).get_name()] = part.get_role_name()
        self.assertEqual(labelled, {"Användarprofil:": "combo box", "FTP-värd:": "text", "Användarnamn:": "combo box",
                                    "Lösenord:": "password text", " (ej nödv.) Konto:": "text"})
        self.keys.press("Escape")
        self.gone("Kontakta FTP-Server")
        self.close_program()

    def test_the_others(self):
        for role, name, title in (("push button", "Om Websmide's FTP...", "Om.."),
                                  ("push button", "Välj favoritkatalog", "Välj favoritkatalog"),
                                  ("link", "Visar filer oavsett 'senast ändrad' och 'storlek'. Klicka här för att ändra!",
                                   "Filter för fillistan")):
            self.press(self.main, role, name)
            self.check(self.window(title))
            self.keys.press("Escape")
            self.gone(title)
            self.window(self.main.get_name())
        self.press(self.main, "push button", "Visa/Dölj 1-2-3 hjälp")
        help_panel = "1-2-3 så skickar du upp dina filer!"
        self.check(wait_for(help_panel, lambda: self.find_window(help_panel)))
        self.press(self.main, "push button", "Visa/Dölj 1-2-3 hjälp")
        self.gone(help_panel)
        self.close_program()

    def test_menu_of_a_row(self):
        self.tab_to(self.main, "Filer på din dator")
        self.keys.press("Space")
        wait_for("the row", lambda: self.selected(self.main, "Filer på din dator", "hej.txt"))
        self.keys.press("Shift", "F10")
        self.keys.press("d")  # &Döp om
        self.check(self.window("Döp om fil"))
        self.keys.press("Escape")
        self.gone("Döp om fil")
        self.window(self.main.get_name())
        self.close_program()


@unittest.skipIf(REASON, REASON)
class Session(Screen):
    """One session, and the mouse is never touched."""

    def setUp(self):
        super().setUp()
        self.server = Server(self.remote)
        self.addCleanup(self.server.close)

    def connect(self):
        self.tab_to(self.main, "Ny förbindelse...")
        self.keys.press("Space")
        dialog = self.window("Kontakta FTP-Server")
        for label, text in (("FTP-värd:", self.server.address), ("Användarnamn:", "demo"), ("Lösenord:", "demo")):
            self.tab_to(dialog, label)
            self.keys.press("Control", "a")
            self.keys.type(text)
        self.keys.press("Return")
        self.gone("Kontakta FTP-Server")
        self.window(self.main.get_name())
        self.wait_for_server_file("readme.txt")

    def wait_for_server_file(self, name):
        wait_for(f"{name} on the server", lambda: any(row.get_name() == f"{name}, fil"
                                                      for row in self.rows(self.main, "Filer på servern")))

    def choose(self, key, name):
        self.tab_to(self.main, "Filer på din dator")
        self.keys.press(key)
        wait_for(name, lambda: self.selected(self.main, "Filer på din dator", name))

    def enabled(self, name):
        return has(self.part(self.main, "push button", name), "ENABLED")

    def question(self, answer):
        self.keys.press("Alt", "a")
        box = self.window("Avbryt överföring!")
        self.check(box)
        self.assertEqual(box.get_role_name(), "alert")
        self.assertEqual(box.get_description(), "Vill du avbryta överföringen ?")
        self.keys.press(answer)
        self.gone("Avbryt överföring!")

    def test_without_a_mouse(self):
        self.connect()
        self.choose("Space", "hej.txt")
        self.keys.press("Alt", "l")
        self.wait_for_server_file("hej.txt")
        with open(os.path.join(self.remote, "hej.txt"), encoding="utf-8") as file:
            self.assertEqual(file.read(), "hej på dig")

        wait_for("the end of the upload", lambda: self.enabled("Uppdatera"))
        self.choose("Down", "stor.bin")
        self.keys.press("Alt", "l")
        bar = self.part(self.main, "progress bar", "Överförd andel").get_value_iface()
        wait_for("progress", lambda: 0 < bar.get_current_value() < 100)
        self.question("Escape")
        self.assertTrue(self.enabled("Avbryt"))
        self.question("Return")
        wait_for("the end of the transfer", lambda: not self.enabled("Avbryt"))
        self.assertLess(os.path.getsize(os.path.join(self.remote, "stor.bin")), 8_000_000)

        self.window(self.main.get_name())
        self.tab_to(self.main, "Stäng förbindelse")
        self.keys.press("Space")
        wait_for("the end of the session", lambda: self.enabled("Ny förbindelse..."))
        self.assertEqual(self.rows(self.main, "Filer på servern"), [])
        self.close_program()


def main():
    global Atspi, PROGRAM
    PROGRAM = sys.argv[1]
    with tempfile.TemporaryDirectory() as folder:
        bus = None
        if not REASON:
            bus = Bus(folder)  # before Atspi looks for one
            from gi.repository import Atspi
        try:
            google_report.run("accessibility_test", sys.argv[:1] + sys.argv[2:])
        finally:
            if bus:
                bus.close()


if __name__ == "__main__":
    main()
