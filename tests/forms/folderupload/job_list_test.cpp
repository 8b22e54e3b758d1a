#include "forms/folderupload/job_list.h"

#include <gtest/gtest.h>

namespace forms {
namespace {

class Jobs : public ::testing::Test {
 protected:
    QStringList Lines() const {
        QStringList lines;
        for (int row = 0; row < jobs_.Count(); ++row) lines.append(jobs_.Line(row));
        return lines;
    }
    /// "LOGO.GIF>logo.gif": what is replaced by what.
    QStringList Overwrites() const {
        QStringList pairs;
        for (const auto [earlier, later] : jobs_.Overwrites())
            pairs.append(Source(earlier) + u'>' + Source(later));
        return pairs;
    }
    QString Source(int row) const { return jobs_.SourceOf(row).mid(QString("C:\\R\\").size()); }
    void AddFile(const QString& name, const QString& folder = "C:\\R\\") { jobs_.AddFile(folder, name); }

    JobList jobs_;
};

TEST_F(Jobs, HaveThreeForms) {
    jobs_.AddFolder("bilder");
    jobs_.AddFile("C:\\Webb\\Bilder\\", "LOGO.GIF");
    jobs_.AddUp(2);
    EXPECT_EQ(Lines(), QStringList({"Skapa bilder", "Fil C:\\Webb\\Bilder\\logo.gif", "cd ..", "cd .."}));
    EXPECT_EQ(jobs_.SourceOf(1), "C:\\Webb\\Bilder\\LOGO.GIF");
    jobs_.Clear();
    EXPECT_EQ(jobs_.Count(), 0);
}

TEST_F(Jobs, KeepTheFileThatALineWasMadeFrom) {
    const QString backslash(QChar(0xF05C)), byte(QChar(0xF0E4));  // as platform/ writes them
    const QStringList names{"a.txt", "A.TXT", "Åäö.Htm", "a" + backslash + "B.txt", byte + "X", "Fil x"};
    for (const QString& name : names) AddFile(name);
    EXPECT_EQ(Lines().value(3), "Fil C:\\R\\a" + backslash + "b.txt");
    for (int row = 0; row < names.size(); ++row) EXPECT_EQ(Source(row), names[row]);
    jobs_.Clear();
    AddFile("b.txt");
    AddFile("c.txt");
    EXPECT_EQ(Source(1), "c.txt");
}

TEST_F(Jobs, TellWhatWouldBeReplaced) {
    jobs_.AddFolder("r");
    for (const char* name : {"LOGO.GIF", "Logo.gif", "logo.gif", "annan.gif"}) AddFile(name);
    EXPECT_EQ(Overwrites(), QStringList({"LOGO.GIF>Logo.gif", "Logo.gif>logo.gif"}));
}

TEST_F(Jobs, TheSameNameInAnotherFolderReplacesNothing) {
    jobs_.AddFolder("r");
    AddFile("x");
    jobs_.AddFolder("a");
    AddFile("x");
    jobs_.AddUp(1);
    jobs_.AddFolder("b");
    AddFile("x");
    jobs_.AddFolder("a");
    AddFile("x");
    EXPECT_EQ(Overwrites(), QStringList());
}

TEST_F(Jobs, AFolderThatIsEnteredTwiceIsTheSame) {
    jobs_.AddFolder("r");
    jobs_.AddFolder("a");
    AddFile("x", "C:\\R\\a\\");
    jobs_.AddUp(1);
    jobs_.AddFolder("a");
    AddFile("X", "C:\\R\\A\\");
    EXPECT_EQ(Overwrites(), QStringList("a\\x>A\\X"));
}

TEST_F(Jobs, TheFirstLineDoesNotLeadUp) {
    jobs_.AddUp(1);
    AddFile("x");
    jobs_.AddUp(1);
    AddFile("x");
    jobs_.AddFolder("a");
    jobs_.AddUp(2);
    AddFile("X");
    EXPECT_EQ(Overwrites(), QStringList());
    jobs_.AddUp(1);
    jobs_.AddFolder("a");
    AddFile("x");
    EXPECT_EQ(Overwrites(), QStringList());
}

TEST_F(Jobs, WhatIsTakenAwayReplacesNothing) {
    AddFile("a");
    AddFile("A");
    jobs_.RemoveLast();
    EXPECT_EQ(Lines(), QStringList("Fil C:\\R\\a"));
    EXPECT_EQ(Overwrites(), QStringList());
    jobs_.RemoveLast();
    jobs_.RemoveLast();  // nothing left
    EXPECT_EQ(jobs_.Count(), 0);
}

TEST_F(Jobs, MayBeHeldFromTheViews) {
    jobs_.Lines().Hold();
    jobs_.AddFolder("a");
    EXPECT_EQ(jobs_.Count(), 1);
    EXPECT_EQ(jobs_.Line(0), "Skapa a");
    EXPECT_EQ(jobs_.Lines().rowCount(), 0);
    jobs_.Lines().Publish();
    EXPECT_EQ(jobs_.Lines().rowCount(), 1);
}

}  // namespace
}  // namespace forms
