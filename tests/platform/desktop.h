#pragma once
// A desktop of a test's own: its menu entries, its associations, its programs, and nothing of the system's.

#include <sys/wait.h>
#include <unistd.h>

#include <QByteArray>
#include <QList>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <thread>

#include "tests/platform/scratch_folder.h"

/// What a program of the desktop says of itself.
struct StartedProgram {
    QByteArray name, folder;          // its command's last name, its current folder
    bool leads_session = false;       // it has left ours
    bool holds_ours = false;          // a descriptor that we have open without the close-on-exec mark
    bool has_silent_streams = false;  // standard input and output lead nowhere
    QList<QByteArray> arguments;
};

class Desktop {
 public:
    Desktop() {
        namespace fs = std::filesystem;
        for (const char* folder : {"data/applications", "config", "bin", "started"}) {
            fs::create_directories(Path(folder));
        }
        fs::create_symlink("/usr/share/mime", Path("data/mime"));
        for (const std::string tool : {"mv", "sleep"}) {
            fs::create_symlink("/bin/" + tool, Path("bin/" + tool));
        }
    }

    QByteArray Native(const QByteArray& name) const { return files_.Native(name); }
    std::string Path(const std::string& name) const { return files_.Native().toStdString() + '/' + name; }

    void Write(const std::string& name, const std::string& text) const {
        std::ofstream(Path(name), std::ios::binary) << text;
    }

    /// A program on the search path that tells of itself and ends.
    void Install(const std::string& program) const {
        // The report gets its name when it is complete.
        Write("bin/" + program,
              "#!/bin/sh\nours=no; silent=no\n"
              "for d in /proc/$$/fd/*; do [ \"$d\" -ef '" +
                  Path("ours") +
                  "' ] && ours=yes; done\n"
                  "[ /proc/$$/fd/0 -ef /dev/null ] && [ /proc/$$/fd/1 -ef /dev/null ] && "
                  "[ /proc/$$/fd/2 -ef /dev/null ] && silent=yes\n"
                  "read -r pid command state parent group session rest </proc/$$/stat\n"
                  "[ \"$session\" = \"$$\" ] && session=yes\n" +
                  before_report_ +
                  "printf '%s\\0' \"${0##*/}\" \"$(pwd)\" \"$session\" \"$ours\" \"$silent\" \"$@\" >'" +
                  Path("report") + "'\nmv '" + Path("report") + "' '" + Path("started/report") + "'\n");
        std::filesystem::permissions(Path("bin/" + program), std::filesystem::perms::owner_all);
    }
    /// A shell command that programs installed from now on execute before they report.
    void BeforeReport(const std::string& command) { before_report_ = command + '\n'; }

    /// A menu entry for an installed program. `more` are further lines.
    void AddEntry(const std::string& name, const std::string& exec, const std::string& more = "") const {
        Write("data/applications/" + name + ".desktop",
              "[Desktop Entry]\nType=Application\nName=" + name + "\nExec=" + exec + '\n' + more);
    }
    /// Installs `name`, adds an entry for it and makes it the program for `type`.
    void Associate(const std::string& type, const std::string& name, const std::string& codes = "%f",
                   const std::string& more = "") {
        Install(name);
        AddEntry(name, name + ' ' + codes, more);
        SetDefault(type, name);
    }
    void SetDefault(const std::string& type, const std::string& entry) {
        defaults_ += type + '=' + entry + ".desktop\n";
        Write("config/mimeapps.list", "[Default Applications]\n" + defaults_);
    }

    /// Makes this the desktop of the whole process, for as long as that lives. Before anything asks GIO.
    void Enter() const {
        const auto set = [](const char* name, const std::string& value) { setenv(name, value.c_str(), 1); };
        set("HOME", Path(""));
        set("PATH", Path("bin"));
        set("XDG_DATA_HOME", Path("data"));
        set("XDG_DATA_DIRS", Path("none"));
        set("XDG_CONFIG_HOME", Path("config"));
        set("XDG_CACHE_HOME", Path("cache"));
        set("XDG_CONFIG_DIRS", Path("none"));
        set("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + Path("none"));
    }

    /// The result of `call` on this desktop, in a process of its own: GIO looks at the desktop once.
    template <typename Call>
    int Ask(Call call) const {
        const pid_t child = fork();
        if (child == 0) {
            LeaveTheScreen();
            Enter();
            _exit(call());
        }
        int status = 0;
        waitpid(child, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    /// Waits for the program that has been started.
    std::optional<StartedProgram> Started() const {
        const std::string report = Path("started/report");
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (!std::filesystem::exists(report)) {
            if (std::chrono::steady_clock::now() > deadline) {
                return std::nullopt;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        std::ostringstream text;
        text << std::ifstream(report, std::ios::binary).rdbuf();
        std::filesystem::remove(report);
        QList<QByteArray> words = QByteArray::fromStdString(text.str()).split('\0');
        if (words.size() < 6) {
            return std::nullopt;
        }
        words.removeLast();  // each word ends with a NUL
        return StartedProgram{words[0],          words[1],          words[2] == "yes",
                              words[3] == "yes", words[4] == "yes", words.sliced(5)};
    }

 private:
    static void LeaveTheScreen() {
        for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "XDG_CURRENT_DESKTOP", "XDG_RUNTIME_DIR"}) {
            unsetenv(name);
        }
    }

    const ScratchFolder files_;
    std::string defaults_, before_report_;
};
