#pragma once
// The desktop's own programs. UI thread only; returns as soon as the program is started. A started program
// runs for itself: it holds nothing of ours and goes on when we end.

#include <QString>

namespace platform {

enum ShellResult { kShellNotFound = 2, kShellNoAssociation = 31, kShellStarted = 33 };

/// Opens a document or a folder with the program that the desktop associates with its type. `path` is in the
/// drive-letter notation. Returns a ShellResult, above 32 when a program was started: kShellNoAssociation
/// when the desktop has none for the type, it cannot be started (one that needs a terminal where there is no
/// terminal), or the desktop has not answered for five seconds; kShellNotFound when there is no such file or
/// folder. The program's current folder is "C:\", unless its entry in the desktop's menu names another.
int OpenDocument(const QString& path);

/// Opens a file in the user's text editor, whatever the file's type: the desktop's program for plain text, or
/// a well-known editor where that one needs a terminal or cannot be started. The editor is given the file's
/// full native path. Returns a ShellResult: kShellNoAssociation when there is no editor, kShellNotFound when
/// there is no such file.
int OpenTextEditor(const QString& path);

}  // namespace platform
