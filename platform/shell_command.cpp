#include "platform/shell_command.h"

#include <glib.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <vector>

namespace platform {
namespace {

struct Freer {
    void operator()(gchar* text) const { g_free(text); }
    void operator()(gchar** texts) const { g_strfreev(texts); }
};

std::optional<QList<QByteArray>> Split(const QByteArray& line) {
    gchar** words = nullptr;
    if (!g_shell_parse_argv(line.constData(), nullptr, &words, nullptr)) {
        return std::nullopt;
    }
    const std::unique_ptr<gchar*, Freer> owner(words);
    QList<QByteArray> split;
    for (gchar** word = words; *word; ++word) {
        split += *word;
    }
    return split;
}

bool IsFileCode(const QByteArray& text) {
    return text == "%f" || text == "%F" || text == "%u" || text == "%U";
}

// The code alone, or as the value of a plain option.
bool TakesFile(const QByteArray& word) {
    const QByteArray option = word.chopped(std::min<qsizetype>(2, word.size()));
    const bool plain =
        option.startsWith("--") && option.indexOf('=') == option.size() - 1 &&
        std::all_of(option.begin(), option.end() - 1, [](char c) { return g_ascii_isalnum(c) || c == '-'; });
    return (option.isEmpty() || plain) && IsFileCode(word.sliced(option.size()));
}

// A word without the file's path. The codes that are not named here stand for nothing: the icon, and those
// that the standard has withdrawn.
std::optional<QByteArray> ExpandWord(const QByteArray& word, const CommandSubject& subject) {
    QByteArray text;
    for (qsizetype i = 0; i < word.size(); ++i) {
        if (word[i] != '%' || i + 1 == word.size()) {
            text += word[i];
            continue;
        }
        const QByteArray code = word.sliced(i++, 2);
        if (IsFileCode(code)) {
            return std::nullopt;
        }
        text += code == "%%"   ? "%"
                : code == "%c" ? subject.name
                : code == "%k" ? subject.entry
                               : QByteArray();
    }
    return text;
}

// Where the file's path would be the program itself, or what a shell executes.
bool WouldExecute(const QList<QByteArray>& before) {
    return before.isEmpty() || before.last() == "-c";
}

}  // namespace

std::optional<QList<QByteArray>> ExpandCommand(const QByteArray& exec, const CommandSubject& subject) {
    const auto words = Split(exec);
    if (!words) {
        return std::nullopt;
    }
    QList<QByteArray> arguments;
    bool placed = false;
    for (const QByteArray& word : *words) {
        if (TakesFile(word)) {
            if (WouldExecute(arguments)) {
                return std::nullopt;
            }
            arguments += word.chopped(2) + subject.file;
            placed = true;
            continue;
        }
        const auto text = ExpandWord(word, subject);
        if (!text) {
            return std::nullopt;
        }
        if (!text->isEmpty() || word.isEmpty()) {
            // Flatpak's mark for an address that it is to pass on; ours is a path.
            arguments += *text == "@@u" ? "@@" : *text;
        }
    }
    if (!placed) {
        if (WouldExecute(arguments)) {
            return std::nullopt;
        }
        arguments += subject.file;
    }
    return arguments;
}

bool IsInstalled(const QByteArray& program) {
    return std::unique_ptr<gchar, Freer>(g_find_program_in_path(program.constData())) != nullptr;
}

bool StartProgram(const QList<QByteArray>& arguments) {
    std::vector<gchar*> words;
    for (const QByteArray& argument : arguments) {
        words.push_back(const_cast<gchar*>(argument.constData()));
    }
    words.push_back(nullptr);
    constexpr auto kFlags = static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_STDOUT_TO_DEV_NULL |
                                                     G_SPAWN_STDERR_TO_DEV_NULL);
    return g_spawn_async("/", words.data(), nullptr, kFlags, LeaveSession, nullptr, nullptr, nullptr);
}

void LeaveSession(void* folder) {
    setsid();
    if (folder && chdir(static_cast<const char*>(folder)) != 0) {
        _exit(1);  // a folder that is not there has been found out before
    }
}

}  // namespace platform
