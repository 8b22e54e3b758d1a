#include "tests/forms/connection/connection_dialog.h"

using toolkit_test::ExpectBox;

namespace forms {
namespace {

using Profiles = ConnectionDialog;

settings::Profile ProfileOf(const QString& word) {
    return {word + QStringLiteral(".host"), word + QStringLiteral(".user"), word + QStringLiteral(".pass"),
            word + QStringLiteral(".acco")};
}

const settings::Profile kNothing;

TEST_F(Profiles, WithoutAnyTheFieldsAreEmpty) {
    Open();
    EXPECT_TRUE(ProfileNames().isEmpty());
    EXPECT_EQ(Fields(), kNothing);
    EXPECT_FALSE(Button("Command1").isEnabled());
}

TEST_F(Profiles, TheFirstIsSelectedWhenTheDialogOpens) {
    SaveProfile("ett", ProfileOf("ett"));
    SaveProfile("två", ProfileOf("två"));
    Open();
    EXPECT_EQ(ProfileNames(), QStringList({"ett", "två"}));
    EXPECT_EQ(Get<QComboBox>("Combo1").currentIndex(), 0);
    EXPECT_EQ(Fields(), ProfileOf("ett"));
    EXPECT_TRUE(Button("Command1").isEnabled());
}

TEST_F(Profiles, ChoosingOneFillsTheFields) {
    SaveProfile("ett", ProfileOf("ett"));
    SaveProfile("två", ProfileOf("två"));
    Open();
    QTest::keyClick(&Get("Combo1"), Qt::Key_Down);
    EXPECT_EQ(Fields(), ProfileOf("två"));
    QTest::keyClick(&Get("Combo1"), Qt::Key_Up);
    EXPECT_EQ(Fields(), ProfileOf("ett"));
}

TEST_F(Profiles, OneWithoutANameCannotBeRemoved) {
    SaveProfile("ett", ProfileOf("ett"));
    SaveProfile("", ProfileOf("tom"));
    Open();
    QTest::keyClick(&Get("Combo1"), Qt::Key_Down);
    EXPECT_EQ(Fields(), ProfileOf("tom"));
    EXPECT_FALSE(Button("Command1").isEnabled());
    QTest::keyClick(&Get("Combo1"), Qt::Key_Up);
    EXPECT_TRUE(Button("Command1").isEnabled());
}

TEST_F(Profiles, TheUserNameListHoldsAnonymousOnly) {
    Open();
    const auto& users = Get<QComboBox>("txtusername");
    ASSERT_EQ(users.count(), 1);
    EXPECT_EQ(users.itemText(0), "anonymous");
    Type("txtusername", "an");  // and does not finish what is typed
    EXPECT_EQ(Fields().user, "an");
}

TEST_F(Profiles, ASavedOneStandsLastAndIsSelected) {
    SaveProfile("ett", ProfileOf("ett"));
    Open();
    Type("txtHost", "ftp.example.com");
    Type("txtusername", "anna");
    Type("txtPassword", "hemlig");
    Type("txtAccount", "");
    {
        ExpectBox name("Spara profil", "Spara profil som ", "cmdOk", "Hemma");
        ClickOn("Command6");
    }
    const settings::Profile saved{"ftp.example.com", "anna", "hemlig", ""};
    EXPECT_EQ(ProfileNames(), QStringList({"ett", "Hemma"}));
    EXPECT_EQ(Get<QComboBox>("Combo1").currentIndex(), 1);
    EXPECT_EQ(Fields(), saved);
    EXPECT_EQ(Setting("general", "antal"), "2");
    EXPECT_EQ(Setting("1", "namn"), "Hemma");
    EXPECT_EQ(settings::LoadProfile(store_, 1), saved);
    EXPECT_EQ(settings::LoadProfile(store_, 0), ProfileOf("ett"));
}

TEST_F(Profiles, ANameThatIsTakenIsAskedForAgain) {
    SaveProfile("TEST", ProfileOf("ett"));
    SaveProfile("Åsa", ProfileOf("två"));
    Open();
    {
        ExpectBox first("Spara profil", "Spara profil som ", "cmdOk", "test");
        ExpectBox refused("Fel vid spara", "Tyvärr är profilen [test] redan upptagen, välj ett nytt namn!",
                          "cmdOk");
        ExpectBox second("Spara profil", "Spara profil som ", "cmdOk", "åSA");
        ExpectBox refused_too("Fel vid spara", "Tyvärr är profilen [åSA] redan upptagen, välj ett nytt namn!",
                              "cmdOk");
        ExpectBox third("Spara profil", "Spara profil som ", "cmdOk", "test2");
        ClickOn("Command6");
    }
    EXPECT_EQ(ProfileNames(), QStringList({"TEST", "Åsa", "test2"}));
    EXPECT_EQ(Setting("general", "antal"), "3");
}

TEST_F(Profiles, AnEmptyNameSavesNothing) {
    SaveProfile("", ProfileOf("tom"));
    Open();
    {
        ExpectBox empty("Spara profil", "Spara profil som ", "cmdOk", "");
        ClickOn("Command6");
    }
    {
        ExpectBox cancelled("Spara profil", "Spara profil som ", "cmdCancel", "Hemma");
        ClickOn("Command6");
    }
    EXPECT_EQ(ProfileNames(), QStringList({""}));
    EXPECT_EQ(Setting("general", "antal"), "1");
}

struct Removal {
    int removed, selected;
    QStringList left;
};

class RemovedProfile : public ConnectionDialog, public ::testing::WithParamInterface<Removal> {};

TEST_P(RemovedProfile, LeavesTheNextOneSelectedOrTheLast) {
    const QStringList names{"ett", "två", "tre"};
    for (const QString& name : names) SaveProfile(name, ProfileOf(name));
    Open();
    for (int i = 0; i < GetParam().removed; ++i) QTest::keyClick(&Get("Combo1"), Qt::Key_Down);
    {
        ExpectBox question("Ta bort profil", "Vill du ta bort [" + names[GetParam().removed] + "] ?",
                           "cmdYes");
        ClickOn("Command1");
    }
    EXPECT_EQ(ProfileNames(), GetParam().left);
    EXPECT_EQ(Get<QComboBox>("Combo1").currentIndex(), GetParam().selected);
    EXPECT_EQ(Fields(), ProfileOf(GetParam().left[GetParam().selected]));
    EXPECT_EQ(Setting("general", "antal"), "2");
    EXPECT_EQ(settings::LoadProfileNames(store_), GetParam().left);
    for (int i = 0; i < 2; ++i) EXPECT_EQ(settings::LoadProfile(store_, i), ProfileOf(GetParam().left[i]));
    EXPECT_EQ(settings::LoadProfile(store_, 2), kNothing);
    EXPECT_EQ(Setting("2", "namn"), "");
}

INSTANTIATE_TEST_SUITE_P(OfThree, RemovedProfile,
                         ::testing::Values(Removal{0, 0, {"två", "tre"}}, Removal{1, 1, {"ett", "tre"}},
                                           Removal{2, 1, {"ett", "två"}}));

TEST_F(Profiles, RemovingTheOnlyOneEmptiesTheFields) {
    SaveProfile("ett", ProfileOf("ett"));
    Open();
    {
        ExpectBox question("Ta bort profil", "Vill du ta bort [ett] ?", "cmdYes");
        ClickOn("Command1");
    }
    EXPECT_TRUE(ProfileNames().isEmpty());
    EXPECT_EQ(Fields(), kNothing);
    EXPECT_FALSE(Button("Command1").isEnabled());
    EXPECT_EQ(Setting("general", "antal"), "0");
    EXPECT_EQ(settings::LoadProfile(store_, 0), kNothing);
}

TEST_F(Profiles, NoRemovesNothing) {
    SaveProfile("ett", ProfileOf("ett"));
    Open();
    ExpectBox question("Ta bort profil", "Vill du ta bort [ett] ?", "cmdNo");
    ClickOn("Command1");
    EXPECT_EQ(ProfileNames(), QStringList({"ett"}));
    EXPECT_EQ(Setting("general", "antal"), "1");
    EXPECT_EQ(Fields(), ProfileOf("ett"));
}

}  // namespace
}  // namespace forms
