"""The parts "trees" and "fetches": many small files, on one connection and on several.

Ours with N lanes has N connections and its main one, so it is compared twice: with peers on N connections and with
lftp on N+1. A peer runs as it comes, and "tuned": with the settings of somebody who knows it and wants speed.
"""
import contextlib, dataclasses, os, pathlib, shlex, shutil, statistics, subprocess, sys, tempfile
from collections.abc import Callable

from measuring import BIN, MEMORY, Failure, Measured, at_once, interleaved, long_distance, near_loopback, server

SERVERS = ["vsftpd", "pure_ftpd", "proftpd"]
DISTANCES = [0, 20, 50]  # ms of round trip; 0: loopback
RATE = 100               # Mbit/s at a distance
AT_ONCE = 12             # rows at a distance
LIMIT = 1200             # seconds after which a client counts as failed
OURS = "ours"

# lftp: commands leave together, no permissions or times after each file, no questions about what is there, no goodbye.
LFTP_TUNED = ("set ftp:sync-mode off; set mirror:set-permissions off; set ftp:use-site-utime off; set ftp:use-site-utime2 off; "
              "set ftp:use-mdtm off; set mirror:overwrite on; set ftp:rest-stor off; set ftp:use-size off; set ftp:ssl-allow off; "
              "set ftp:use-stat off; set ftp:use-quit off; set net:connection-limit 0; ")
# ncftp: no questions before a file and no times after it.
NCFTP_TUNED = ["-o", "useSIZE=0,useMDTM=0,useFEAT=0,useCLNT=0,useHELP_SITE=0,useSITE_UTIME=0,useMLST=0,useMLSD=0,doNotGetStartCWD=1"]


@dataclasses.dataclass(frozen=True)
class Tree:
    count: int
    size: int
    folders: int

    def __str__(self):
        return f"{self.count:,} x {self.size // 1024} KiB"

    def make(self, root):
        """Writes the tree; its contents differ from file to file, so that a mix-up shows."""
        for number in range(self.count):
            folder = root / f"mapp{number * self.folders // self.count:03d}" if self.folders else root
            folder.mkdir(parents=True, exist_ok=True)
            (folder / f"sida{number:05d}.html").write_bytes(os.urandom(self.size))


@dataclasses.dataclass(frozen=True)
class Client:
    """One way to move the files. `connections`: 1, 4, 8 as the peers count; ours and the peers with one more go beside."""
    name: str
    connections: int
    command: Callable  # (host, folder of work files, local tree) -> command line
    tuned: bool = True
    more: bool = False  # one connection more, as ours has


def contents(folder):
    return {str(path.relative_to(folder)): path.read_bytes() for path in folder.rglob("*") if path.is_file()}


def flaw(wanted, folder):
    """What is wrong with what has arrived, or None."""
    got = contents(folder) if folder.is_dir() else {}
    wrong = sum(got.get(name) != data for name, data in wanted.items())
    return f"{wrong} of {len(wanted)} files missing or wrong, {len(set(got) - set(wanted))} too many" \
        if wrong or len(got) != len(wanted) else None


def empty(folder):
    for entry in folder.iterdir():
        shutil.rmtree(entry) if entry.is_dir() else entry.unlink()


def lftp(settings, work):
    def command(host, _, local):
        name, port = host.rsplit(":", 1)
        return ["lftp", "--norc", "-c", f"set cmd:interactive no; set cmd:fail-exit yes; set xfer:clobber yes; set net:max-retries 2; "
                f"{settings}open -u demo,demo -p {port} {name}; {work.format(local=shlex.quote(str(local)))}"]
    return command


def ncftp(program, options, places):
    """places(work, local): what stands after the host."""
    def command(host, work, local):
        name, port = host.rsplit(":", 1)
        return [program, "-V", "-Z", *options, "-u", "demo", "-p", "demo", "-P", port, name, *places(work, local)]
    return command


def curl(pairs, parallel, *options):
    """`pairs` makes the lines of the configuration file, which names every file."""
    def command(host, work, local):
        config = work / "curl.config"
        config.write_text("\n".join(pairs(f"ftp://demo:demo@{host}", local)) + "\n")
        return ["curl", "-sS", "--no-progress-meter", *options,
                *(["--parallel", "--parallel-max", str(parallel)] if parallel > 1 else []), "-K", config]
    return command


def curl_uploads(url, local):
    for path in sorted(path for path in local.rglob("*") if path.is_file()):
        yield f'upload-file = "{path}"'
        yield f'url = "{url}/{local.name}/{path.relative_to(local)}"'


def uploads():
    ours = lambda lanes: lambda host, _, local: [BIN / "bench_client", host, "tree", local, str(lanes)]
    into_home = lambda _, local: [".", local]
    put = lambda settings, number: lftp(settings, f"mirror -R --parallel={number} {{local}} tree")
    sent = lambda number: curl(curl_uploads, number, "--ftp-create-dirs")
    clients = [Client(OURS, 1, ours(0)),
               Client("lftp", 1, lftp("", "mirror -R {local} tree"), tuned=False),
               Client("lftp tuned", 1, lftp(LFTP_TUNED, "mirror -R {local} tree")),
               Client("ncftp", 1, ncftp("ncftpput", ["-R"], into_home), tuned=False),
               Client("ncftp tuned", 1, ncftp("ncftpput", ["-R", *NCFTP_TUNED], into_home)),
               Client("curl", 1, sent(1))]
    for number in (4, 8):
        clients += [Client(OURS, number, ours(number)),
                    Client("lftp", number, put("", number), tuned=False),
                    Client("lftp tuned", number, put(LFTP_TUNED, number)),
                    Client("curl", number, sent(number)),
                    Client(f"lftp tuned, {number + 1}", number, put(LFTP_TUNED, number + 1), more=True)]
    return clients


def downloads():
    def ours(lanes):
        def command(host, work, local):
            return [BIN / "bench_client", host, "enter", "tree", "fetch", local, str(lanes), "1024", f"@{work}/names"]
        return command

    def asked(url, local):
        for name in (local.parent / "names").read_text().split():
            yield f'output = "{local}/{name}"'
            yield f'url = "{url}/tree/{name}"'
    # Named one by one: pure-ftpd has no NLST for a pattern.
    by_name = lambda work, local: [local, *(f"tree/{name}" for name in (work / "names").read_text().split())]
    get = lambda settings, number: lftp(settings, f"mirror --parallel={number} tree {{local}}")
    got = lambda number: curl(asked, number)
    clients = [Client(OURS, 1, ours(0)),
               Client("lftp mget", 1, lftp("", "mget -O {local} tree/*"), tuned=False),
               Client("lftp tuned", 1, lftp(LFTP_TUNED, "mirror tree {local}")),
               Client("ncftp tuned", 1, ncftp("ncftpget", NCFTP_TUNED, by_name)),
               Client("curl", 1, got(1))]
    for number in (4, 8):
        clients += [Client(OURS, number, ours(number)),
                    Client("lftp tuned", number, get(LFTP_TUNED, number)),
                    Client("curl", number, got(number)),
                    Client(f"lftp tuned, {number + 1}", number, get(LFTP_TUNED, number + 1), more=True)]
    return clients


def authority_in(work):
    """Where the authority lies during a row under TLS."""
    return work / "authority.pem"


@contextlib.contextmanager
def reachable(row, work):
    """What to put before the client's command, the server's address, its home folder."""
    if not row.distance:
        with near_loopback() as near, serving(row, "127.0.0.1", near, work) as (host, home):
            yield near, host, home
        return
    with long_distance(row.distance, RATE) as (near, far, address), serving(row, address, far, work) as (host, home):
        trip = round_trip(near, host)
        if not row.distance <= trip < row.distance * 1.1 + 1:
            raise Failure(f"the link is not what it says: {trip:.1f} ms instead of {row.distance}")
        yield near, host, home


@contextlib.contextmanager
def serving(row, address, prefix, work):
    with server(row.make, address, prefix, MEMORY, row.tls) as (host, home, authority):
        if authority:
            shutil.copyfile(authority, authority_in(work))
        yield host, home


def round_trip(near, host):
    """Milliseconds of the fastest of some TCP connects."""
    script = ("import socket, sys, time\ndef one():\n    start = time.monotonic()\n"
              "    with socket.create_connection((sys.argv[1], int(sys.argv[2]))) as s: spent = time.monotonic() - start; s.recv(1)\n"
              "    return spent\nprint(min(one() for _ in range(5)) * 1000)")
    told = subprocess.run([*near, sys.executable, "-c", script, *host.rsplit(":", 1)], check=True, capture_output=True)
    return float(told.stdout)


class Section:
    """The rows of a part, by number of connections: {connections: {row name: {client name: seconds or None}}}."""

    def __init__(self, report):
        self.report, self.rows, self.remarks = report, {}, []

    def add(self, client, row, walls):
        failed = any(wall is None for wall in walls)
        self.rows.setdefault(client.connections, {}).setdefault(row, {})[client.name] = None if failed else statistics.median(walls)
        if not failed and max(walls) > 1.5 * min(walls) and max(walls) - min(walls) > 0.5:
            self.remarks.append(f"Uneven: {row}, {client.name} [{client.connections}]: from {min(walls):.2f} to {max(walls):.2f} s.")

    def tables(self, clients, form):
        """form(row, seconds) is the text of a cell."""
        for connections, rows in sorted(self.rows.items()):
            group = [client for client in clients if client.connections == connections]
            equal = [client.name for client in group if client.name != OURS and not client.more]
            more = [client.name for client in group if client.more]
            of = "One connection" if connections == 1 else f"{connections} connections (ours: {connections} lanes and the main one)"
            self.report.text(f"**{of}**")
            ahead = [("ahead of the best peer" + (f" on {connections}" if more else ""), equal)]
            ahead += [(f"ahead of lftp on {connections + 1}", more)] if more else []
            self.report.row("", *(client.name for client in group), *(title for title, _ in ahead))
            self.report.row(*["---"] * (1 + len(group) + len(ahead)))
            for row, walls in rows.items():
                cells = ["–" if client.name not in walls else "failed" if walls[client.name] is None
                         else form(row, walls[client.name]) for client in group]
                self.report.row(str(row), *cells, *(self.ratio(walls, peers) for _, peers in ahead))
            self.report.lines.append("")
        for remark in self.remarks:
            self.report.text(remark)

    @staticmethod
    def ratio(walls, peers):
        times = [walls[peer] for peer in peers if walls.get(peer) is not None]
        return f"{min(times) / walls[OURS]:.2f}" if times and OURS in walls else "–"


@dataclasses.dataclass(frozen=True)
class Row:
    make: str
    tree: Tree
    distance: int
    tls: bool = False

    def trips(self):
        return self.tree.count * self.distance

    def __str__(self):
        return f"{self.make}, {self.tree}, " + (f"{self.distance} ms" if self.distance else "loopback")


def cell(row, seconds):
    """At a distance round trips per file, else milliseconds and files per second."""
    if row.distance:
        return f"{seconds * 1000 / row.distance / row.tree.count:.2f}"
    return f"{seconds * 1000:.0f} ({row.tree.count / seconds:.0f}/s)"


def worth(row, client):
    """Whether a client takes part without --all: what would say nothing new and take many minutes does not."""
    if not row.distance and (client.name, client.connections) == ("curl", 1):
        return row.make == "vsftpd" and row.tree.count <= 1000  # elsewhere it would wait for minutes, see PEERS
    if row.tree.count > 1000 and not row.distance:
        return client.tuned
    if row.tree.count > 1000:
        return client.tuned and client.connections > (4 if row.distance >= 50 else 1)
    return client.tuned or not row.distance or row.make == "vsftpd"


class Bench:
    """Measures rows: `prepare(home, wanted, local)` before each client, `arrived(home, local)` is where the files must be."""

    def __init__(self, report, clients, options, prepare, arrived):
        self.section, self.clients, self.options = Section(report), clients, options
        self.prepare, self.arrived = prepare, arrived

    def measure(self, row, taking_part):
        """{client's number: [seconds, or None]} of the clients in turns, and remarks."""
        rounds = self.options.rounds or (1 if row.distance else 3)
        with contextlib.ExitStack() as stack:
            work = pathlib.Path(stack.enter_context(tempfile.TemporaryDirectory(dir=MEMORY)))
            near, host, home = stack.enter_context(reachable(row, work))
            source = work / "source" / "tree"
            row.tree.make(source)
            (work / "names").write_text("\n".join(sorted(contents(source))) + "\n")
            wanted = contents(source)
            failed, remarks = set(), []

            def measure(number):
                client = self.clients[number]
                if number in failed:
                    return None
                local = self.prepare(home, source, work)
                try:
                    wall = Measured(near + client.command(host, work, local), limit=LIMIT).wall
                    problem = flaw(wanted, self.arrived(home, local))
                except Failure as failure:
                    problem = str(failure)
                if problem:
                    failed.add(number)
                    remarks.append(failure_of(row, client, problem))
                    return None
                print(f"    {row}, {client.name} [{client.connections}]: {wall:.2f} s", flush=True)
                return wall
            return interleaved(taking_part, rounds, measure), remarks

    def run(self, rows, wanted=worth):
        """At a distance clients wait for the line and not for the machine, so several rows are measured at once."""
        work = []
        for row in rows:
            for connections in sorted({client.connections for client in self.clients}):
                taking_part = [number for number, client in enumerate(self.clients) if client.connections == connections
                               and (self.options.all or wanted(row, client))]
                if taking_part:
                    work.append((row, taking_part))
        work.sort(key=lambda piece: -piece[0].trips() / self.clients[piece[1][0]].connections)  # the longest first
        near = [self.measure(*piece) for piece in work if not piece[0].distance]
        far = at_once(AT_ONCE, [lambda piece=piece: self.measure(*piece) for piece in work if piece[0].distance])
        results = {id(piece): (far if piece[0].distance else near).pop(0) for piece in work}
        for piece in sorted(work, key=lambda piece: rows.index(piece[0])):
            walls_of, remarks = results[id(piece)]
            self.section.remarks += remarks
            for number, walls in walls_of.items():
                self.section.add(self.clients[number], piece[0], walls)
        self.section.tables(self.clients, cell)


def failure_of(row, client, problem):
    """What the report says of it; ours must not fail."""
    if client.name == OURS:
        raise Failure(f"ours, {row}, {client.connections}: {problem}")
    print(f"    {row}, {client.name} on {client.connections}: {problem}", flush=True)
    said = [line for line in problem.splitlines() if line.strip()][-1]
    return f"Failed: {row}, {client.name} [{client.connections}]: {said[:160]}"


HOW = ("At a distance: wall time of the whole process, login and goodbye included, in round trips for each file, on a line of "
       f"{RATE} Mbit/s; on loopback: milliseconds for all (and files per second). A client that failed or left anything out is "
       "shown as failed. Rows at a distance were measured several at a time. Files and home folders in memory, emptied before each client; what arrived was compared file by file. "
       "– was not run: it takes long and says nothing new (`--all` runs it).")
PEERS = ("Tuned: lftp with `" + LFTP_TUNED.strip() + "`; ncftp with `" + " ".join(NCFTP_TUNED) + "`. "
         "curl is one process with a configuration file that names every file{curl}. ncftp has no more than one connection. "
         "curl 7.88 now and then waits whole seconds between two files, mostly on loopback: it sleeps for a second on nothing but its own "
         "wake-up pipe when the reply to EPSV or PASV was there at once. No option that was tried prevents it; its figures are as "
         "they came.")
LANES = ("Ours with N lanes has N connections and its main one, N+1 in all; lftp is therefore shown with N+1 as well, and the last "
         "column is the stricter comparison.")


def selected(options, distances):
    return options.servers or SERVERS, distances if options.distances is None else options.distances


def rounds_text(options):
    if options.rounds:
        return "One round." if options.rounds == 1 else f"Medians of {options.rounds} rounds."
    return "Medians of 3 rounds on loopback, one round at a distance."


def empty_home(home, source, _):
    """For uploads: the server has nothing yet."""
    empty(home)
    return source


def trees(report, options):
    report.heading("Folder trees up")
    if os.geteuid() != 0:
        return report.text("Not measured: the servers and the distance need root.")

    makes, distances = selected(options, DISTANCES)
    both = [Tree(60, 1024, 3), Tree(100, 4096, 5)] if options.small else [Tree(1000, 1024, 20), Tree(5000, 4096, 100)]
    rows = [Row(make, tree, distance) for distance in distances for tree in both for make in makes]
    report.text(f"{both[0]} in {both[0].folders} folders and {both[1]} in {both[1].folders}. Repeat with `bench/run trees` (as root). "
                + rounds_text(options))
    Bench(report, uploads(), options, empty_home, lambda home, _: home / "tree").run(rows)
    for text in (HOW, LANES, PEERS.format(curl=" and `--ftp-create-dirs`")):
        report.text(text)


def fetches(report, options):
    report.heading("Many small files down")
    if os.geteuid() != 0:
        return report.text("Not measured: the servers and the distance need root.")

    def prepare(home, source, work):
        if not (home / "tree").exists():
            shutil.copytree(source, home / "tree")
        local = work / "down"
        local.mkdir(exist_ok=True)
        empty(local)
        return local

    makes, distances = selected(options, [0, 50])
    tree = Tree(60 if options.small else 1000, 1024, 0)
    rows = [Row(make, tree, distance) for distance in distances for make in makes]
    report.text(f"{tree}, all in one folder. Repeat with `bench/run fetches` (as root). " + rounds_text(options))
    Bench(report, downloads(), options, prepare, lambda _, local: local).run(rows)
    for text in (HOW, LANES, PEERS.format(curl="")):
        report.text(text)
