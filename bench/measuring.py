"""What the measurements have in common: building, processes, servers, the long-distance link, the report."""
import contextlib, multiprocessing.connection, os, pathlib, re, signal, statistics, subprocess, sys, tempfile, threading, time

ROOT = pathlib.Path(__file__).resolve().parent.parent
BIN = ROOT / "build/bench/bin"
MEMORY = "/dev/shm"  # for files and homes: the disk is nobody's merit


def build(with_window):
    subprocess.run([ROOT / "tools/install", "build", "demo", "test", "bench", "servers"], check=True)
    subprocess.run([ROOT / "tools/configure", "bench"], check=True)
    targets = ["bench_client", "bench_link", "bench_serve", *(["bench_window", "websmide-ftp"] if with_window else [])]
    subprocess.run(["cmake", "--build", "--preset", "bench", "--target", *targets], cwd=ROOT, check=True,
                   stdout=subprocess.DEVNULL)


def end_tidily():
    """Ctrl-C and its kin end the script by way of every clean-up, and a second one does not disturb that."""
    numbers = signal.SIGINT, signal.SIGTERM, signal.SIGHUP

    def stop(number, _):
        for one in numbers:
            signal.signal(one, signal.SIG_IGN)
        sys.exit(128 + number)
    for number in numbers:
        signal.signal(number, stop)


class Failure(Exception):
    """A process that ended with an error, or too late."""


class Measured:
    """One process, from start to end: wall and CPU seconds, peak memory in MiB, what it printed."""

    def __init__(self, command, limit=None, **options):
        start = time.monotonic()
        # time(1) between us and the process: a process's peak begins with what its parent had.
        peak, errors = tempfile.NamedTemporaryFile("r"), tempfile.TemporaryFile()
        # In a session of its own Ctrl-C reaches this script alone, which ends what it has started.
        process = subprocess.Popen(["time", "-o", peak.name, "-f", "%M", *map(str, command)], stdin=subprocess.DEVNULL,
                                   stdout=subprocess.PIPE, stderr=errors, start_new_session=True, **options)
        late = threading.Event()
        timer = threading.Timer(limit or 3600, lambda: (late.set(), os.killpg(process.pid, signal.SIGKILL)))
        timer.start()
        try:
            self.output = process.stdout.read().decode(errors="replace")
            _, status, usage = os.wait4(process.pid, 0)
        except BaseException:
            os.killpg(process.pid, signal.SIGKILL)
            process.wait()
            raise
        finally:
            timer.cancel()
        process.returncode = os.waitstatus_to_exitcode(status)
        self.wall = time.monotonic() - start
        self.cpu = usage.ru_utime + usage.ru_stime
        if late.is_set() or process.returncode != 0:
            errors.seek(0)
            said = self.output[-1000:] + errors.read().decode(errors="replace")[-1000:]
            raise Failure(f"{'too late' if late.is_set() else 'failed'}: {' '.join(map(str, command))[:1000]}\n{said}")
        self.peak = int(peak.read()) / 1024


def figure(name, output):
    return float(re.search(rf"^{name} ([\d.]+)$", output, re.M)[1])


@contextlib.contextmanager
def server(make, address=None, prefix=(), homes=None, tls=False):
    """"HOST:PORT" and the home folder, below `homes` if that is said, of a server that lives as long as the context; with
    TLS the file of the authority that has signed its certificate, else None."""
    environment = {**os.environ, **({"TMPDIR": homes} if homes else {})}
    words = [make, address or "127.0.0.1", *(["tls"] if tls else [])]
    process = subprocess.Popen([*prefix, BIN / "bench_serve", *words],
                               stdin=subprocess.PIPE, stdout=subprocess.PIPE, start_new_session=True, env=environment)
    try:
        told = process.stdout.readline().decode().split()
        if len(told) != len(words[2:]) + 2:
            raise Failure(f"failed: {make} does not start")
        yield told[0], pathlib.Path(told[1]), pathlib.Path(told[2]) if tls else None
    finally:
        process.stdin.close()
        process.wait()


@contextlib.contextmanager
def long_distance(round_trip_ms, rate_mbit=None):
    """What to put before a command to run it near or far, and the far address. Needs root."""
    names = client, far = f"wm{os.getpid()}c", f"wm{os.getpid()}s"
    link = None
    ip = lambda *words: subprocess.run(["ip", *words], check=True)
    try:
        for name in names:
            ip("netns", "add", name)
        link = subprocess.Popen([BIN / "bench_link", client, far, str(round_trip_ms / 2), str(rate_mbit or 0)],
                                stdout=subprocess.PIPE, start_new_session=True)
        assert link.stdout.readline() == b"ready\n"
        for name, own, other in ((client, "10.99.0.1", "10.99.0.2"), (far, "10.99.0.2", "10.99.0.1")):
            ip("-n", name, "address", "add", own, "peer", other, "dev", "wan0")
            ip("-n", name, "link", "set", "wan0", "up")
            ip("-n", name, "link", "set", "lo", "up")
        yield ["ip", "netns", "exec", client], ["ip", "netns", "exec", far], "10.99.0.2"
    finally:
        if link:
            link.kill()
            link.wait()
        for name in names:
            subprocess.run(["ip", "netns", "delete", name], stderr=subprocess.DEVNULL)


@contextlib.contextmanager
def near_loopback():
    """What to put before a command to run it on a loopback of its own, where closed connections leave their ports at once:
    tens of thousands of files would use up all that there are. Needs root."""
    name = f"wm{os.getpid()}l"
    ip = lambda *words: subprocess.run(["ip", *words], check=True, stdout=subprocess.DEVNULL)
    try:
        ip("netns", "add", name)
        ip("-n", name, "link", "set", "lo", "up")
        ip("netns", "exec", name, "sysctl", "-w", "net.ipv4.tcp_max_tw_buckets=0", "net.ipv4.ip_local_port_range=2000 65000")
        yield ["ip", "netns", "exec", name]
    finally:
        subprocess.run(["ip", "netns", "delete", name], stderr=subprocess.DEVNULL)


def interleaved(clients, rounds, measure):
    """{client: [measurement of each round]}; the clients take turns and begin in another place each round."""
    results = {client: [] for client in clients}
    for turn in range(rounds):
        first = turn % len(clients) if clients else 0
        for client in clients[first:] + clients[:first]:
            results[client].append(measure(client))
    return results


def at_once(most, calls):
    """The results of the calls in their order, each made in a process of its own."""
    fork = multiprocessing.get_context("fork")
    running, results, waiting = {}, [None] * len(calls), list(enumerate(calls))

    def carry_out(call, pipe):
        try:
            pipe.send((call(), None))
        except Failure as failure:
            pipe.send((None, str(failure)))
    try:
        while waiting or running:
            while waiting and len(running) < most:
                number, call = waiting.pop(0)
                ours, theirs = fork.Pipe(duplex=False)
                process = fork.Process(target=carry_out, args=(call, theirs))
                process.start()
                theirs.close()
                running[ours] = number, process
            for pipe in multiprocessing.connection.wait(list(running)):
                number, process = running.pop(pipe)
                try:
                    results[number], problem = pipe.recv()
                except EOFError:
                    problem = "a measurement ended without a result"
                process.join()
                if problem:
                    raise Failure(problem)
    finally:
        for _, process in running.values():
            process.terminate()
            process.join()
    return results


def median(results, attribute):
    return {client: statistics.median(attribute(one) for one in many) for client, many in results.items()}


class Report:
    def __init__(self):
        self.lines = []

    def heading(self, text):
        print(f"\n{text}", flush=True)
        self.lines += ["", f"## {text}", ""]

    def text(self, text):
        print(text, flush=True)
        self.lines += [text, ""]

    def row(self, *cells):
        line = f"| {' | '.join(cells)} |"
        print(line, flush=True)
        self.lines.append(line)

    def table(self, first, clients, rows, unit_note):
        """rows: [(name, {client: median}, format, better)], better is "less" or "more"."""
        self.lines += [f"| {first} | " + " | ".join(clients) + " | ahead of the best peer |", "|---" * (len(clients) + 2) + "|"]
        for name, values, form, better in rows:
            peers = [values[client] for client in clients if client != "ours" and client in values]
            best = (min if better == "less" else max)(peers)
            ahead = best / values["ours"] if better == "less" else values["ours"] / best
            cells = [form.format(values[client]) if client in values else "–" for client in clients]
            self.row(name, *cells, f"{ahead:.2f}")
        self.lines += ["", unit_note, ""]
