"""The server of the pictures: its listings are the same every day, and it can stop halfway through a file."""

from pyftpdlib.filesystems import AbstractedFS
from pyftpdlib.handlers import DTPHandler, FTPHandler

PIECE = 8192  # bytes sent at a time


def pictured_handler(age, held_file, held_at):
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

    class Channel(DTPHandler):
        ac_out_buffer_size = PIECE

        def send(self, data):
            sent = super().send(data)
            if self.file_obj and self.file_obj.name.endswith(held_file) and self.tot_bytes_sent >= held_at:
                self.del_channel()  # nobody asks it for more
            return sent

    class Handler(FTPHandler):
        abstracted_fs = Files
        dtp_handler = Channel
        use_sendfile = False

    return Handler
