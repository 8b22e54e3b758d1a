#include "platform/shell_command.h"

#include <gtest/gtest.h>

namespace platform {
namespace {

using Words = QList<QByteArray>;

const CommandSubject kSubject = {"/a b/$(x) %f.txt", "Min text", "/usr/min.desktop"};
const QByteArray kFile = kSubject.file;

TEST(ExpandCommand, PutsThePathWhereTheEntryWantsIt) {
    const std::pair<QByteArray, Words> rows[] = {
        {"gedit", {"gedit", kFile}},
        {"gedit %f", {"gedit", kFile}},
        {"gedit %F", {"gedit", kFile}},
        {"gedit %u", {"gedit", kFile}},
        {"gedit %U", {"gedit", kFile}},
        {"gedit %U --wait", {"gedit", kFile, "--wait"}},
        {"gedit --wait", {"gedit", "--wait", kFile}},
        {"gedit --file=%f", {"gedit", "--file=" + kFile}},
        {"\"/opt/Min text/bin/text\" \"a \\\"b\\\"\" %f", {"/opt/Min text/bin/text", "a \"b\"", kFile}},
        {"text '' %f", {"text", "", kFile}},
        {"text %i %f", {"text", kFile}},
        {"text %d %D %n %N %v %m %f", {"text", kFile}},
        {"text --title=%c %k 100%% %f", {"text", "--title=Min text", "/usr/min.desktop", "100%", kFile}},
        {"text %", {"text", "%", kFile}},
        {"sh -c \"exec emacs \\\"\\$@\\\"\" sh %F", {"sh", "-c", "exec emacs \"$@\"", "sh", kFile}},
        {"sh -c text %f", {"sh", "-c", "text", kFile}},
        {"text --c %f", {"text", "--c", kFile}},
        {"flatpak run --file-forwarding org.text @@u %U @@",
         {"flatpak", "run", "--file-forwarding", "org.text", "@@", kFile, "@@"}},
    };
    for (const auto& [exec, words] : rows) {
        EXPECT_EQ(ExpandCommand(exec, kSubject), words) << exec.toStdString();
    }
}

// A file's name must never become part of what a shell reads.
TEST(ExpandCommand, RefusesWhatItCannotExpandSafely) {
    for (const char* exec : {"sh -c \"text %f\"", "sh -c 'text '%f", "sh -c x=%f", "text file:%u", "text 'a",
                             "sh \"--x ;y=%f\" %f", ""}) {
        EXPECT_EQ(ExpandCommand(exec, kSubject), std::nullopt) << exec;
    }
}

TEST(ExpandCommand, RefusesWhatWouldExecuteTheFile) {
    for (const char* exec : {"%f", "%U --wait", "%i", "%i %f", "%i %d text=%f", "--x=%f", "sh -c", "sh -c %f",
                             "sh '-c' %u", "sh -c %i %F", "sh -c %i", "sh -c --x=%f", "text %f -c %f"}) {
        EXPECT_EQ(ExpandCommand(exec, kSubject), std::nullopt) << exec;
    }
}

TEST(StartProgram, FindsProgramsByTheSearchPath) {
    EXPECT_TRUE(IsInstalled("sh"));
    EXPECT_FALSE(IsInstalled("websmide-finns-inte"));
    EXPECT_FALSE(StartProgram({"websmide-finns-inte", "x"}));
}

}  // namespace
}  // namespace platform
