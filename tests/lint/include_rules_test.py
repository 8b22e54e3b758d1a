"""Checks the rules on single includes and on a planted tree, then holds the real tree to them.

Usage: include_rules_test.py SOURCE_ROOT QT_INCLUDE_FOLDERS (separated by semicolons)
"""

import os
import sys
import tempfile
import unittest

import include_rules

ROOT = sys.argv[1]
QT_FOLDER = next(f for f in sys.argv[2].split(";") if os.path.isdir(os.path.join(f, "QtCore")))

ALLOWED = [
    ("ftp/engine/wire/a.cpp", '"ftp/engine/wire/reply.h"'),
    ("ftp/engine/wire/a.h", "<vector>"),
    ("ftp/engine/wire/a.h", "<tl/expected.hpp>"),
    ("ftp/engine/net/a.cpp", "<asio/ip/tcp.hpp>"),
    ("ftp/engine/net/socket_calls_linux.cpp", "<sys/sendfile.h>"),
    ("ftp/engine/net/local_files_posix.cpp", "<unistd.h>"),
    ("ftp/engine/net/tls.cpp", "<openssl/ssl.h>"),
    ("ftp/engine/net/tls_stream.h", "<asio/ssl.hpp>"),
    ("ftp/engine/session/a.cpp", '"ftp/engine/net/stream.h"'),
    ("ftp/engine/worker.cpp", '"ftp/engine/session/login.h"'),
    ("ftp/component.h", '"ftp/engine/worker.h"'),
    ("ftp/component.h", '"ftp/engine/wire/failure.h"'),
    ("ftp/component.h", "<QObject>"),
    ("platform/shell_desktop.cpp", "<gio/gio.h>"),
    ("platform/shell_command.cpp", "<glib.h>"),
    ("platform/folder.cpp", "<dirent.h>"),
    ("platform/desktop_signs.cpp", "<QDBusMessage>"),
    ("settings/a.cpp", '"platform/folder.h"'),
    ("settings/a.cpp", "<platform/folder.h>"),
    ("toolkit/a.cpp", "<QtWidgets/QListView>"),
    ("app/shared/a.cpp", '"toolkit/lists.h"'),
    ("forms/about/a.cpp", '"app/shared/ftpglob.h"'),
    ("forms/about/a.h", '"ui_about_form.h"'),
    ("forms/about/a.cpp", '"a.moc"'),
    ("forms/main/a.cpp", '"forms/about/about_form.h"'),
    ("forms/main/a.cpp", '"forms/main/model.h"'),
    ("app/main.cpp", '"forms/main/main_form.h"'),
    ("app/main.cpp", "<QApplication>"),
]

REFUSED = [
    ("platform/folder.cpp", "<QDBusMessage>"),
    ("app/shared/a.cpp", "<QDBusConnection>"),
    ("ftp/engine/wire/a.cpp", '"ftp/engine/net/stream.h"'),
    ("ftp/engine/wire/a.cpp", '"reply.h"'),
    ("ftp/engine/wire/a.cpp", "<asio/buffer.hpp>"),
    ("ftp/engine/wire/a.cpp", "<asio.hpp>"),
    ("ftp/engine/wire/a.cpp", "<QString>"),
    ("ftp/engine/wire/a.cpp", "<unistd.h>"),
    ("ftp/engine/wire/a.cpp", "<string.h>"),
    ("ftp/engine/net/tcp.cpp", "<openssl/ssl.h>"),
    ("ftp/engine/net/tcp.cpp", "<sys/socket.h>"),
    ("ftp/engine/net/tls.cpp", "<unistd.h>"),
    ("ftp/engine/net/tcp.cpp", "<asio/ssl.hpp>"),
    ("ftp/engine/net/tcp.cpp", '"ftp/engine/session/login.h"'),
    ("ftp/engine/net/tcp.cpp", "<QtCore/QString>"),
    ("ftp/engine/session/a.cpp", '"ftp/engine/net/tcp.h"'),
    ("ftp/engine/session/a.cpp", '"ftp/engine/worker.h"'),
    ("ftp/engine/session/a.cpp", "<netinet/in.h>"),
    ("ftp/engine/worker.cpp", '"ftp/component.h"'),
    ("ftp/engine/worker.cpp", "<QThread>"),
    ("ftp/component.cpp", '"ftp/engine/session/login.h"'),
    ("ftp/component.cpp", '"toolkit/lists.h"'),
    ("ftp/component.cpp", "<QWidget>"),
    ("ftp/component.cpp", "<QColor>"),
    ("ftp/component.cpp", "<QtNetwork/QTcpSocket>"),
    ("platform/folder.cpp", "<glib.h>"),
    ("platform/folder.cpp", "<glib-object.h>"),
    ("platform/shell.cpp", "<QDesktopServices>"),
    ("platform/folder.cpp", '"settings/profiles.h"'),
    ("platform/folder.cpp", "<settings/profiles.h>"),
    ("platform/folder.cpp", "<tests/support/server.h>"),
    ("settings/a.cpp", '"toolkit/lists.h"'),
    ("settings/a.cpp", "<fcntl.h>"),
    ("toolkit/a.cpp", '"ftp/component.h"'),
    ("toolkit/a.cpp", '"app/shared/ftpglob.h"'),
    ("app/shared/a.cpp", '"forms/main/main_form.h"'),
    ("app/shared/a.cpp", "<pwd.h>"),
    ("forms/about/a.cpp", '"forms/main/main_form.h"'),
    ("forms/about/a.cpp", '"ftp/engine/worker.h"'),
    ("forms/about/a.cpp", "<sys/stat.h>"),
    ("forms/main/a.cpp", '"forms/about/model.h"'),
    ("forms/main/a.cpp", '"tests/support/server.h"'),
    ("app/main.cpp", "<unistd.h>"),
]


def finding(file, include):
    return include_rules.check_include(file, include[0], include[1:-1], QT_FOLDER)


class IncludeRules(unittest.TestCase):
    def test_what_is_allowed(self):
        for file, include in ALLOWED:
            with self.subTest(file=file, include=include):
                self.assertIsNone(finding(file, include))

    def test_what_is_refused(self):
        for file, include in REFUSED:
            with self.subTest(file=file, include=include):
                self.assertIsNotNone(finding(file, include))

    def test_planted_includes_are_found(self):
        planted = {
            "ftp/engine/wire/good.cpp": "#include <string>\n",
            "ftp/engine/wire/bad.cpp": '#include <string>\n  #  include  <QString>  // why not\n',
            "toolkit/deep/bad.h": '#pragma once\n#include "ftp/component.h"\n',
            "tests/free.cpp": "#include <unistd.h>\n",
            "elsewhere/lost.cpp": "",
        }
        with tempfile.TemporaryDirectory() as root:
            for file, text in planted.items():
                path = os.path.join(root, file)
                os.makedirs(os.path.dirname(path), exist_ok=True)
                with open(path, "w", encoding="utf-8") as source:
                    source.write(text)
            findings, count = include_rules.check_tree(root, QT_FOLDER)
        self.assertEqual(count, 4)
        self.assertEqual([line.split(":")[0] for line in findings],
                         ["elsewhere/lost.cpp", "ftp/engine/wire/bad.cpp", "toolkit/deep/bad.h"])

    def test_the_tree(self):
        findings, count = include_rules.check_tree(ROOT, QT_FOLDER)
        self.assertGreater(count, 50, "hardly anything was read")
        self.assertEqual(findings, [], "\n" + "\n".join(findings))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
