"""A freshly installed system, small and without the program, in a folder of its own."""

import contextlib
import os
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

CACHE = Path(__file__).resolve().parents[1] / "build/clean-root"
CERTIFICATES = Path("/etc/ssl/certs/ca-certificates.crt")
ENVIRONMENT = {"PATH": "/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin", "LC_ALL": "C.UTF-8",
               "DEBIAN_FRONTEND": "noninteractive", "HOME": "/root"}
SOCKETS = Path("/tmp/.X11-unix")  # where X servers put theirs, and programs look for them
# What apt, dpkg and the mounts below change all the time.
IN_FLUX = ("proc", "dev", "tmp/.X11-unix", "home", "var/log", "var/lib/apt", "var/lib/dpkg", "var/cache/apt",
           "var/cache/debconf", "var/cache/ldconfig")


def output_of(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def sources():
    """The mirrors of Debian that this computer uses, as lines of a sources.list; that of the system comes first."""
    if not any(Path("/var/lib/apt/lists").glob("*Release")):  # a container's image comes without
        subprocess.run(["apt-get", "update", "-qq"], check=True)
    codename = re.search(r"^VERSION_CODENAME=(\w+)", Path("/etc/os-release").read_text(), re.M)
    lines = output_of("apt-get", "indextargets", "--format", "$(REPO_URI) $(CODENAME) $(COMPONENT)",
                      "Identifier: Packages", "Origin: Debian").splitlines()
    wanted = sorted(line for line in set(lines) if codename and line.split()[1].startswith(codename[1])
                    and line.endswith(" main"))
    if not wanted:
        sys.exit("apt knows no mirror of this system's packages among Debian's: it has to be Debian 12")
    wanted.sort(key=lambda line: line.split()[1] != codename[1])
    return wanted


def base():
    """A compressed root from debootstrap, made once."""
    mirror, codename = sources()[0].split()[:2]
    archive = CACHE / f"{codename}.tar"
    if not archive.exists():
        print(f"Making a clean {codename}", flush=True)
        CACHE.mkdir(parents=True, exist_ok=True)
        with tempfile.TemporaryDirectory(dir=CACHE) as folder:
            subprocess.run(["debootstrap", "--variant=minbase", codename, f"{folder}/root", mirror], check=True,
                           stdout=subprocess.DEVNULL)
            subprocess.run(["tar", "--create", "--file", f"{folder}/tar", "--directory", f"{folder}/root",
                            "--numeric-owner", "--one-file-system", "."], check=True)
            os.replace(f"{folder}/tar", archive)
    return archive


def unpack(root):
    """Fills the folder. Its mirrors are those of this computer."""
    subprocess.run(["tar", "--extract", "--file", base(), "--directory", root, "--numeric-owner"], check=True)
    (root / "etc/apt/sources.list").write_text("".join(f"deb {line}\n" for line in sources()))
    options = [line for line in output_of("apt-config", "dump", "Acquire").splitlines() if "::Proxy " in line]
    if CERTIFICATES.exists():  # for mirrors with https; where only apt looks, so that the system stays without
        shutil.copy(CERTIFICATES, root / "etc/apt/certificates-of-this-computer")
        options.append('Acquire::https::CAInfo "/etc/apt/certificates-of-this-computer";')
    (root / "etc/apt/apt.conf.d/90-of-this-computer").write_text("".join(f"{line}\n" for line in options))
    for file in "etc/resolv.conf", "etc/hosts":
        if Path("/", file).exists():
            shutil.copy(Path("/", file), root / file)


@contextlib.contextmanager
def place_of_sockets():
    """Where the computer has none there is one for as long as it is needed, unless somebody else has begun to use it."""
    made = not SOCKETS.exists()
    if made:
        SOCKETS.mkdir()
        SOCKETS.chmod(0o1777)
    try:
        yield
    finally:
        if made:
            with contextlib.suppress(OSError):
                SOCKETS.rmdir()


def hide_sockets(folder):
    """Puts a folder over the computer's sockets, in a mount namespace of our own: neither side sees the other's."""
    folder.mkdir()
    folder.chmod(0o1777)
    subprocess.run(["mount", "--bind", folder, SOCKETS], check=True)


def mount(root):
    """Only in a mount namespace of our own, with which they go away whatever happens."""
    archives = CACHE / "archives"
    archives.mkdir(parents=True, exist_ok=True)
    (root / "tmp/.X11-unix").mkdir(exist_ok=True)
    subprocess.run(["mount", "-t", "proc", "proc", root / "proc"], check=True)
    here = {"/dev": "dev", archives: "var/cache/apt/archives", SOCKETS: "tmp/.X11-unix"}
    for source, target in here.items():
        subprocess.run(["mount", "--rbind", source, root / target], check=True)


def run(root, *command):
    """As root, inside. What it says is shown when it fails."""
    done = subprocess.run(["chroot", root, *command], env=ENVIRONMENT, stdin=subprocess.DEVNULL, text=True,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
    if done.returncode:
        sys.exit(f"{done.stdout}\n{' '.join(command)} fails with code {done.returncode}")
    return done.stdout


def files(root):
    """Everything that lies in it, without what is always in flux."""
    found = set()
    for folder, folders, names in os.walk(root):
        inside = os.path.relpath(folder, root)
        folders[:] = [name for name in folders if os.path.normpath(f"{inside}/{name}") not in IN_FLUX]
        found.update(os.path.normpath(f"/{inside}/{name}") for name in (*folders, *names))
    return found
