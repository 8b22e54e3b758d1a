"""A small real FTP server with one account, demo / demo, on pyftpdlib.

pyftpd.py ADDRESS PORT HOME [--owner USER] [--no-utf8] [--clients N] [--idle SECONDS] [--ports FIRST LAST]
          [--tls offered|demanded|implicit CERTIFICATE KEY]
"""

import argparse
import os
import pwd
import sys
import warnings

warnings.simplefilter("ignore")  # about asyncore's age, from the library

from pyftpdlib.authorizers import DummyAuthorizer  # noqa: E402
from pyftpdlib.handlers import FTPHandler  # noqa: E402
from pyftpdlib.log import config_logging  # noqa: E402
from pyftpdlib.servers import FTPServer  # noqa: E402


def arguments():
    parser = argparse.ArgumentParser()
    parser.add_argument("address")
    parser.add_argument("port", type=int)
    parser.add_argument("home")
    parser.add_argument("--owner", help="the user that a server started by root becomes")
    parser.add_argument("--no-utf8", action="store_true")
    parser.add_argument("--clients", type=int, default=0)
    parser.add_argument("--idle", type=int, default=300)
    parser.add_argument("--ports", type=int, nargs=2)
    parser.add_argument("--tls", nargs=3)
    return parser.parse_args()


class BytesHandler(FTPHandler):
    """Names are bytes, as on the disk; the library's own handler mends what is not UTF-8."""

    unicode_errors = "surrogateescape"

    def push(self, s):
        super(FTPHandler, self).push(s.encode("utf8", self.unicode_errors))


FEATURES_WITHOUT_UTF8 = "211-Features supported:\r\n SIZE\r\n MDTM\r\n EPSV\r\n EPRT\r\n211 End FEAT.\r\n"


class SilentHandler(BytesHandler):
    """Says nothing about UTF-8."""

    def ftp_FEAT(self, line):
        self.push(FEATURES_WITHOUT_UTF8)


def with_tls(base, kind, certificate, key):
    """The handler on top of TLS. Reads the key, so it is called as long as the process may."""
    from pyftpdlib.handlers import TLS_FTPHandler  # only there with python3-openssl

    class TlsHandler(base, TLS_FTPHandler):
        certfile, keyfile = certificate, key
        tls_control_required = tls_data_required = kind != "offered"

        def ftp_FEAT(self, line):
            if base is SilentHandler:
                self.push(FEATURES_WITHOUT_UTF8.replace("211 ", " AUTH TLS\r\n PBSZ\r\n PROT\r\n211 "))
            else:
                super().ftp_FEAT(line)

    class ImplicitHandler(TlsHandler):
        def handle(self):
            self.secure_connection(self.ssl_context)

        def handle_ssl_established(self):
            TlsHandler.handle(self)

    handler = ImplicitHandler if kind == "implicit" else TlsHandler
    handler.get_ssl_context()
    return handler


def main():
    options = arguments()
    handler = SilentHandler if options.no_utf8 else BytesHandler
    if options.tls:
        handler = with_tls(handler, *options.tls)
    if os.getuid() == 0 and options.owner:
        owner = pwd.getpwnam(options.owner)
        os.setgroups([])
        os.setgid(owner.pw_gid)
        os.setuid(owner.pw_uid)
    config_logging(level=30)  # warnings and worse

    handler.authorizer = DummyAuthorizer()
    handler.authorizer.add_user("demo", "demo", options.home, perm="elradfmwMT")
    handler.timeout = options.idle
    handler.auth_failed_timeout = 0
    if options.ports:
        handler.passive_ports = range(options.ports[0], options.ports[1] + 1)
    server = FTPServer((options.address, options.port), handler)
    server.max_cons = options.clients + 1 if options.clients else 512  # the listening socket counts
    server.serve_forever(handle_exit=False)


if __name__ == "__main__":
    sys.exit(main())
