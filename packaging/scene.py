"""Starts the installed program on a virtual screen: looks at its window, and plays the demo session in it."""

import contextlib
import os
import re
import shutil
import subprocess
import sys
import time
from pathlib import Path

SOURCE = Path(__file__).resolve().parents[1]
sys.path.insert(0, str(SOURCE / "tools/demo"))

import stage  # noqa: E402

PLAYER = SOURCE / "build/package-test/plugins/generic/libdemo_player.so"
INPUT_LIBRARY = "libxcb-xtest.so.0"  # the player's, not the program's


class Scene:
    """A computer's file system, `root`, as the user `owner` (user and group number) sees it; `launch` makes a
    command of an environment, a folder and the program. All that is added to it lies below `home`."""

    def __init__(self, root, home, owner, launch):
        self.root, self.home, self.owner, self.launch = root, home, owner, launch
        self.demo = home / "demo"

    def outside(self, path):
        return self.root / path.relative_to("/")

    def set_up(self):
        demo = self.outside(self.demo)
        for source, target in ("site", "server"), ("outbox", "local"):
            shutil.copytree(SOURCE / "tools/demo" / source, demo / target)
        plugins = demo / "plugins/generic"
        plugins.mkdir(parents=True)
        shutil.copy(PLAYER, plugins)
        libraries = subprocess.run(["ldd", PLAYER], check=True, capture_output=True, text=True).stdout
        shutil.copy(re.search(rf"{INPUT_LIBRARY} => (\S+)", libraries)[1], demo / INPUT_LIBRARY)
        (demo / "runtime").mkdir(mode=0o700)
        for path in demo, *demo.rglob("*"):
            os.chown(path, *self.owner)
            path.chmod(0o755 if path.is_dir() else 0o644)
        for path in demo / "server", *(demo / "server").rglob("*/"):
            path.chmod(0o777)  # the server gives them to a user of its own, and the player puts a file there
        (demo / "runtime").chmod(0o700)

    def write_settings(self, address):
        """A profile, and that the program has been open before."""
        folder = self.outside(self.home / ".config/websmide")
        folder.mkdir(parents=True, exist_ok=True)
        profile = stage.PROFILE.format(host="{}:{}".format(*address), name="Demo", user="demo", password="demo")
        (folder / stage.SETTINGS_FILE).write_text(profile, "utf-8")
        (folder / stage.WINDOW_FILE).write_text(stage.WINDOW, "utf-8")
        for path in folder.parent, folder, *folder.iterdir():
            os.chown(path, *self.owner)

    def start(self, screen, environment):
        environment = {"HOME": str(self.home), "PATH": "/usr/local/bin:/usr/bin:/bin"} | screen | environment
        environment |= {"XDG_RUNTIME_DIR": str(self.demo / "runtime")}
        return subprocess.Popen(self.launch(environment, self.demo / "local"), stdin=subprocess.DEVNULL)

    def play(self):
        """The demo session, from the connection to the closing of the window."""
        with contextlib.ExitStack() as session:
            address = session.enter_context(stage.ftp_server(self.outside(self.demo / "server"), ("demo", "demo")))
            self.write_settings(address)
            screen = session.enter_context(stage.virtual_screen(self.outside(self.demo / "screen")))
            environment = {"QT_QPA_GENERIC_PLUGINS": "demo_player:session", "WEBSMIDE_DEMO": str(self.demo),
                           "QT_PLUGIN_PATH": str(self.demo / "plugins"), "LD_LIBRARY_PATH": str(self.demo)}
            process = session.enter_context(stage.ending_with_us(self.start(screen, environment)))
            return process.wait(stage.LONGEST_PLAY) == 0

    def window(self):
        """What the window of the program, started as it is, tells the desktop: {property: text}."""
        with contextlib.ExitStack() as session:
            screen = session.enter_context(stage.virtual_screen(self.outside(self.demo / "second")))
            process = session.enter_context(stage.ending_with_us(self.start(screen, {})))
            end = time.monotonic() + stage.LONGEST_START
            while process.poll() is None and time.monotonic() < end:
                clients = ask_screen(screen, "-root", "_NET_CLIENT_LIST")["_NET_CLIENT_LIST"]
                window = re.search("0x[0-9a-f]+", clients)
                if window:
                    return ask_screen(screen, "-id", window[0], "WM_CLASS", "_NET_WM_ICON", "_NET_WM_NAME")
                time.sleep(0.1)
        sys.exit("the program opens no window")


def ask_screen(screen, *question):
    answer = subprocess.run(["xprop", "-notype", *question], env={**os.environ, **screen}, capture_output=True,
                            text=True, check=True).stdout
    names = [word for word in question if word.isupper()]
    return {name: re.split(r"[:=]", part, maxsplit=1)[-1].strip()
            for name, part in zip(names, re.split(rf"^(?=(?:{'|'.join(names)})\b)", answer, flags=re.M)[1:])}
