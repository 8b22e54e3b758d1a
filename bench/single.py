"""The parts "bulk" and "login": one large file, and a login with one small transfer; in plain text, and under TLS."""
import os, pathlib, statistics, tempfile

from measuring import BIN, MEMORY, Measured, figure, interleaved, long_distance, median, server

PEERS = ["lftp", "curl", "ncftp"]
TLS_PEERS = ["lftp", "curl"]  # ncftp has no TLS


def ours(host, authority, *words):
    """Our client's command line. `authority` is there under TLS: the one whose certificates count."""
    if not authority:
        return [BIN / "bench_client", host, *words]
    return ["env", f"SSL_CERT_FILE={authority}", "SSL_CERT_DIR=/nonexistent", BIN / "bench_client", f"ftpes://{host}", *words]


def lftp_settings(authority):
    return f"set ftp:ssl-force on; set ftp:ssl-protect-data on; set ssl:ca-file {authority}; " if authority else ""


def curl_options(authority):
    """Where curl 7.88 knows the size of what it fetches under TLS, it waits a second at the end when the line is long; so it is
    told not to ask."""
    return ["--ssl-reqd", "--cacert", authority, "--ignore-content-length"] if authority else []


def commands(client, host, action, remote, local, authority=None):
    """The command line with which a client does a thing."""
    name, port = host.rsplit(":", 1)
    url = f"ftp://demo:demo@{host}/"
    login = ("set cmd:interactive no; set xfer:clobber yes; set net:max-retries 1; " + lftp_settings(authority) +
             f"open -u demo,demo -p {port} {name};")
    curl = ["curl", "-sS", *curl_options(authority)]
    account = ["-u", "demo", "-p", "demo", "-P", port]
    return {
        ("ours", "get"): ours(host, authority, "get", remote, local),
        ("ours", "put"): ours(host, authority, "put", local, remote),
        ("ours", "list"): ours(host, authority, "list", *([remote] if remote else [])),
        ("lftp", "get"): ["lftp", "--norc", "-c", f"{login} get {remote} -o {local}"],
        ("lftp", "put"): ["lftp", "--norc", "-c", f"{login} put {local} -o {remote}"],
        ("lftp", "list"): ["lftp", "--norc", "-c", f"{login} ls {remote}"],
        ("curl", "get"): [*curl, url + remote, "-o", local],
        ("curl", "put"): [*curl, "-T", local, url + remote],
        ("curl", "list"): [*curl, url + (remote + "/" if remote else "")],
        ("ncftp", "get"): ["ncftpget", "-V", "-Z", *account, name, os.path.dirname(local), remote],
        ("ncftp", "put"): ["ncftpput", "-V", "-Z", *account, "-C", name, local, remote],
        ("ncftp", "list"): ["ncftpls", "-l", *account, f"ftp://{name}/{remote}"],
    }[client, action]


def bulk_table(report, rounds, size, makes, tls=False):
    """The homes of plain servers lie in the temporary folder, those of servers with TLS in memory."""
    clients, rows = ["ours", *(TLS_PEERS if tls else PEERS)], []
    with tempfile.TemporaryDirectory(dir=MEMORY) as folder:
        source = pathlib.Path(folder) / "bulk.bin"
        with open(source, "wb") as file:
            block = os.urandom(1024 * 1024)
            for _ in range(size // len(block)):
                file.write(block)
        for make in makes:
            with server(make, tls=tls, homes=MEMORY if tls else None) as (host, home, authority):
                def warm():
                    # A virtual machine gives memory late, at a price that falls on whoever asks first: not on a client.
                    filler = pathlib.Path(folder) / "filler"
                    with open(filler, "wb") as file:
                        for _ in range(size // len(block)):
                            file.write(block)
                    filler.unlink()

                def down(client):
                    warm()
                    target = pathlib.Path(folder) / "down" / "bulk.bin"
                    target.parent.mkdir(exist_ok=True)
                    measured = Measured(commands(client, host, "get", "bulk.bin", str(target), authority))
                    assert target.stat().st_size == size, client
                    target.unlink()
                    return measured

                def up(client):
                    warm()
                    measured = Measured(commands(client, host, "put", "bulk.bin", str(source), authority))
                    assert (home / "bulk.bin").stat().st_size == size, client
                    return measured

                for direction, action in (("up", up), ("down", down)):
                    action("ours")  # warms the caches, and leaves the file for the downloads
                    results = interleaved(clients, rounds, action)
                    gib = size / 2**30
                    rows += [(f"{make} {direction}, MiB/s", median(results, lambda m: size / 2**20 / m.wall), "{:.0f}", "more"),
                             (f"{make} {direction}, CPU s/GiB", median(results, lambda m: m.cpu / gib), "{:.2f}", "less"),
                             (f"{make} {direction}, peak MiB", median(results, lambda m: m.peak), "{:.0f}", "less")]
    report.table("", clients, rows, "Wall time, CPU time (user + system) and peak memory of the client's process, login included.")


def bulk(report, rounds, small):
    size = (32 if small else 1024) * 1024 * 1024
    report.heading(f"One file of {size // 2**20} MiB on loopback")
    bulk_table(report, rounds, size, ["vsftpd", "proftpd"])


def login_table(report, rounds, makes, tls=False):
    """At 50 ms; needs root."""
    clients, rows, own = ["ours", *(TLS_PEERS if tls else PEERS)], [], []
    with long_distance(50) as (near, far, address), tempfile.TemporaryDirectory() as folder:
        for make in makes:
            with server(make, address, far, tls=tls) as (host, home, authority):
                (home / "small.txt").write_bytes(b"x" * 1024)
                local = str(pathlib.Path(folder) / "small.txt")
                trips = lambda m: m.wall / 0.05

                def measure(action, remote):
                    return interleaved(clients, rounds,
                                       lambda c: Measured(near + commands(c, host, action, remote, local, authority)))
                listed = measure("list", "")
                own.append(f"{make} {statistics.median(figure('login', m.output) / 50 for m in listed['ours']):.1f}")
                rows += [(f"{make}: login and list", median(listed, trips), "{:.1f}", "less"),
                         (f"{make}: login and fetch 1 KiB", median(measure("get", "small.txt"), trips), "{:.1f}", "less"),
                         (f"{make}: login and send 1 KiB", median(measure("put", "sent.txt"), trips), "{:.1f}", "less")]
    report.table("round trips", clients, rows, "Wall time of the whole process in round trips, goodbye included.")
    report.text("From connect to ready, ours alone, in round trips: " + ", ".join(own) + ". "
                "(proftpd as a daemon often waits a third of a second before it greets, whoever connects.)")


def login(report, rounds, small):
    report.heading("Login and small transfers at 50 ms round trip")
    if os.geteuid() != 0:
        return report.text("Not measured: needs root.")
    login_table(report, rounds, ["vsftpd", "pure_ftpd", "proftpd"])
