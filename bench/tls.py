"""The part "tls": many small files, one large one, and the login, all under TLS: control and data connections, with the
server's certificate checked against the authority that has signed it."""
import os

import trees
from single import bulk_table, curl_options, lftp_settings, login_table, ours

SERVERS = ["vsftpd", "pure_ftpd", "proftpd"]
LFTP_TUNED = trees.LFTP_TUNED.replace("set ftp:ssl-allow off; ", "")


def uploads():
    """Clients on one connection. The authority lies among the work files."""
    def own(host, work, local):
        return ours(host, trees.authority_in(work), "tree", local, "0")

    def lftp(settings):
        return lambda host, work, local: trees.lftp(settings + lftp_settings(trees.authority_in(work)),
                                                    "mirror -R {local} tree")(host, work, local)

    def curl(*options):
        return lambda host, work, local: trees.curl(trees.curl_uploads, 1, "--ftp-create-dirs", *options,
                                                    *curl_options(trees.authority_in(work)))(host, work, local)
    return [trees.Client(trees.OURS, 1, own), trees.Client("lftp", 1, lftp(""), tuned=False),
            trees.Client("lftp tuned", 1, lftp(LFTP_TUNED)), trees.Client("curl", 1, curl()),
            trees.Client("curl, TLS 1.2", 1, curl("--tls-max", "1.2"))]


def small_files(report, options):
    makes, distances = trees.selected(options, [20, 50])
    tree = trees.Tree(10, 1024, 2) if options.small else trees.Tree(1000, 1024, 20)
    rows = [trees.Row(make, tree, distance, tls=True) for distance in distances for make in makes]
    report.text(f"**Folder trees up**: {tree} in {tree.folders} folders. " + trees.rounds_text(options))
    bench = trees.Bench(report, uploads(), options, trees.empty_home, lambda home, _: home / "tree")
    bench.run(rows, wanted=lambda row, client: client.tuned or row.make == "vsftpd")
    report.text(trees.HOW)


def tls(report, options):
    report.heading("Under TLS")
    if os.geteuid() != 0:
        return report.text("Not measured: the servers and the distance need root.")
    rounds = options.rounds or 5
    size = (32 if options.small else 256) * 1024 * 1024
    report.text("TLS 1.3 on control and data connections where nothing else is said; each client checks the certificate. vsftpd "
                "and proftpd want each data connection to resume the control connection's session, pure-ftpd does not ask. "
                "Repeat with `bench/run tls` (as root). ncftp has no TLS.")
    small_files(report, options)
    report.text(f"**One file of {size // 2**20} MiB on loopback**, in memory at both ends. Medians of {rounds} rounds.")
    bulk_table(report, rounds, size, options.servers or SERVERS, tls=True)
    report.text(f"**Login and small transfers at 50 ms round trip**. Medians of {rounds} rounds.")
    login_table(report, rounds, options.servers or SERVERS, tls=True)
    report.text("Tuned: lftp with `" + LFTP_TUNED.strip() + "`. All run lftp with `" + lftp_settings("AUTHORITY").strip() +
                "` and curl with `" + " ".join(curl_options("AUTHORITY")) + "`; curl is one process with a configuration file that "
                "names every file. Where sessions have to be resumed, curl 7.88 does so under TLS 1.3 for some of several files "
                "only, and fails; under TLS 1.2 for all.")
