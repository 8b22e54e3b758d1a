"""The server of the pictures: its listings and its certificate are the same every day, and it can stop halfway
through a file."""

import datetime
import hashlib

from cryptography import x509
from cryptography.hazmat.primitives import serialization
from cryptography.hazmat.primitives.asymmetric.ed25519 import Ed25519PrivateKey
from pyftpdlib.filesystems import AbstractedFS
from pyftpdlib.handlers import TLS_DTPHandler, TLS_FTPHandler

PIECE = 8192  # bytes sent at a time
CERTIFIED = datetime.datetime(2024, 1, 1), datetime.datetime(2034, 1, 1)


def write_certificate(host, file):
    """One that the server has issued itself, with its key. Nothing in it is left to chance, its key neither: it
    protects nothing."""
    key = Ed25519PrivateKey.from_private_bytes(hashlib.sha256(host.encode()).digest())
    name = x509.Name([x509.NameAttribute(x509.NameOID.COMMON_NAME, host)])
    certificate = (x509.CertificateBuilder().subject_name(name).issuer_name(name).public_key(key.public_key())
                   .serial_number(1).not_valid_before(CERTIFIED[0]).not_valid_after(CERTIFIED[1])
                   .add_extension(x509.SubjectAlternativeName([x509.DNSName(host)]), critical=False)
                   .sign(key, None))
    pem = serialization.Encoding.PEM
    file.write_bytes(certificate.public_bytes(pem) + key.private_bytes(
        pem, serialization.PrivateFormat.PKCS8, serialization.NoEncryption()))


def pictured_handler(age, held_file, held_at, certificate):
    """`age` is the time of change for a name, in seconds; `held_file` is sent up to the byte `held_at`."""

    class Files(AbstractedFS):
        def listdir(self, path):
            return sorted(super().listdir(path))

        def lstat(self, path):
            status = list(super().lstat(path))
            status[8] = age(path.rsplit("/", 1)[-1])
            return type(super().lstat(path))(status)

        def get_user_by_uid(self, uid):
            return "anna"

        def get_group_by_gid(self, gid):
            return "www"

    class Channel(TLS_DTPHandler):
        ac_out_buffer_size = PIECE

        def send(self, data):
            sent = super().send(data)
            if self.file_obj and self.file_obj.name.endswith(held_file) and self.tot_bytes_sent >= held_at:
                self.del_channel()  # nobody asks it for more
            return sent

    class Handler(TLS_FTPHandler):
        certfile = str(certificate)
        abstracted_fs = Files
        dtp_handler = Channel
        use_sendfile = False

    return Handler
