"""What a program is shown with: a small FTP server of its own, a virtual screen, and the player."""

import contextlib
import multiprocessing
import os
import pwd
import signal
import socket
import subprocess
import sys
import warnings

warnings.simplefilter("ignore")  # about asyncore's age, from the library

from pyftpdlib.authorizers import DummyAuthorizer  # noqa: E402
from pyftpdlib.handlers import FTPHandler  # noqa: E402
from pyftpdlib.log import config_logging  # noqa: E402
from pyftpdlib.servers import FTPServer  # noqa: E402

LONGEST_START, LONGEST_PLAY = 30, 600  # seconds
SETTINGS_FILE = "Websmide's FTP program.conf"
PROFILE = """[0]
acco=
host={host}
namn={name}
pass={password}
user={user}
[general]
antal=1
"""
# Where the program has been open before, it leaves the place of its window; a new user is greeted with the three steps,
# which stand before what a script presses. A place that cannot be read is no place.
WINDOW_FILE = "Websmide's FTP program, fönster.conf"
WINDOW = """[MainForm]
MainForm=-
"""


def give_up_root(home):
    """The server needs no rights: one that root has started keeps none, and sees its home folder only."""
    nobody = pwd.getpwnam("nobody")
    for path in home, *home.rglob("*"):
        os.chown(path, nobody.pw_uid, nobody.pw_gid, follow_symlinks=False)
    os.chroot(home)
    os.chdir("/")
    os.setgroups([])
    os.setgid(nobody.pw_gid)
    os.setuid(nobody.pw_uid)
    return "/"


def serve(listener, home, account, starter, handler, confined):
    signal.signal(signal.SIGTERM, signal.SIG_DFL)
    signal.signal(signal.SIGINT, signal.SIG_IGN)  # the one who runs the program tells when it is over
    config_logging(level=30)  # warnings and worse
    handler.authorizer = DummyAuthorizer()
    if os.getuid() == 0 and confined:
        home = give_up_root(home)
    handler.authorizer.add_user(*account, str(home), perm="elradfmwMT")
    server = FTPServer(listener, handler)
    while os.getppid() == starter:
        server.serve_forever(timeout=0.5, blocking=False, handle_exit=False)


@contextlib.contextmanager
def ending_with_us(process):
    try:
        yield process
    finally:
        process.terminate()
        process.wait()


@contextlib.contextmanager
def ftp_server(home, account, port=0, handler=FTPHandler, confined=True):
    """The server's address and port. `account` is a name and a password; port 0 is any that is free."""
    listener = socket.create_server(("127.0.0.1", port))
    server = multiprocessing.Process(target=serve, daemon=True,
                                     args=(listener, home, account, os.getpid(), handler, confined))
    server.start()
    try:
        yield listener.getsockname()
    finally:
        server.terminate()
        server.join()


def start_openbox(environment):
    """Returns when windows are taken care of: one that comes earlier is not given the focus."""
    signal.pthread_sigmask(signal.SIG_BLOCK, {signal.SIGUSR1})
    openbox = subprocess.Popen(["openbox", "--config-file", "/etc/xdg/openbox/rc.xml",
                                "--startup", f"sh -c 'kill -USR1 {os.getpid()}'"],
                               env=environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    if not signal.sigtimedwait({signal.SIGUSR1}, LONGEST_START):
        openbox.kill()
        sys.exit("openbox does not start")
    return openbox


@contextlib.contextmanager
def virtual_screen(runtime):
    """The environment of what is to be shown on it, with a runtime folder; windows are managed by openbox."""
    ours, its = os.pipe()
    xvfb = subprocess.Popen(["Xvfb", "-displayfd", str(its), "-screen", "0", "1366x900x24", "-wr", "-nolisten", "tcp"],
                            pass_fds=[its], stderr=subprocess.DEVNULL)
    with ending_with_us(xvfb), open(ours) as answer:
        os.close(its)
        display = answer.readline().strip()
        if not display:
            sys.exit("Xvfb does not start")
        runtime.mkdir(mode=0o700)
        environment = {"DISPLAY": f":{display}", "QT_QPA_PLATFORM": "xcb", "XDG_RUNTIME_DIR": str(runtime),
                       "LC_ALL": "C.UTF-8"}
        openbox = start_openbox({**os.environ, **environment})
        with ending_with_us(openbox):
            yield environment


def player(program, script, folder):
    """The environment in which the player, built beside the program, plays a script of its own."""
    return {"QT_QPA_GENERIC_PLUGINS": f"demo_player:{script}", "QT_PLUGIN_PATH": str(program.parents[1] / "plugins"),
            "WEBSMIDE_DEMO": str(folder)}
