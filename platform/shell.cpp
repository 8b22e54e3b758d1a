#include "platform/shell.h"

#include <algorithm>

#include "platform/drive_path.h"
#include "platform/folder.h"
#include "platform/shell_command.h"
#include "platform/shell_desktop.h"

namespace platform {
namespace {

bool StartDesktopEditor(const QByteArray& file) {
    const auto program = ProgramForType("text/plain");
    if (!program || program->needs_terminal) {
        return false;
    }
    const auto arguments = ExpandCommand(program->command, {file, program->name, program->entry});
    return arguments && StartProgram(*arguments);
}

bool StartKnownEditor(const QByteArray& file) {
    static const QByteArray editors[] = {
        "gnome-text-editor", "gedit", "kate",    "kwrite",  "mousepad", "pluma", "xed",
        "featherpad",        "geany", "leafpad", "l3afpad", "nedit",    "xedit"};
    return std::ranges::any_of(editors, [&](const QByteArray& editor) {
        return IsInstalled(editor) && StartProgram({editor, file});
    });
}

}  // namespace

int OpenDocument(const QString& path) {
    const auto native = Resolve(path);
    if (!native || !(FileLength(path) || FolderExists(path))) {
        return kShellNotFound;
    }
    return OpenWithDesktop(*native) ? kShellStarted : kShellNoAssociation;
}

int OpenTextEditor(const QString& path) {
    const auto native = Resolve(path);
    if (!native || !FileLength(path)) {
        return kShellNotFound;
    }
    return StartDesktopEditor(*native) || StartKnownEditor(*native) ? kShellStarted : kShellNoAssociation;
}

}  // namespace platform
