#include <QLabel>
#include <ctime>

#include "ftp/trace_translator.h"
#include "tests/forms/main/main_window.h"
#include "tests/support/box_answerer.h"
#include "toolkit/message_box.h"

namespace forms {
namespace {

using Window = MainWindow;

TEST_F(Window, StartsWithoutAConnection) {
    Open();
    EXPECT_EQ(window_->objectName(), QStringLiteral("MainForm"));
    EXPECT_EQ(window_->windowTitle(), QStringLiteral("Websmide's FTP-program 3.0"));
    for (const char* name : {"Command9", "Command14", "Command21", "Command10", "Command11", "Command12",
                             "Command13", "Command1", "Command2", "Command23", "Command16", "avb"})
        EXPECT_FALSE(Button(name).isEnabled()) << name;
    EXPECT_TRUE(Button("cmdConnection").isEnabled());
    EXPECT_EQ(window_->findChild<ftp::Component*>(QStringLiteral("Ftp1"))->SessionMode, 0);
    for (const char* name : {"listDir", "List1", "File1", "fleratabort", "fleratabort2", "l1"})
        EXPECT_FALSE(Get(name).isVisible()) << name;
}

TEST_F(Window, CarriesTheCaptions) {
    const std::pair<const char*, const char*> captions[] = {
        {"cmdConnection", "Ny förbindelse..."},
        {"Command16", "Stäng förbindelse"},
        {"cmdDirectory", "Directory"},
        {"cmdFileTransfers", "File Transfers"},
        {"Command17", "Hjälp om FTP"},
        {"Command18", "Om Websmide's FTP..."},
        {"Command19", "Visa/Dölj 1-2-3 hjälp"},
        {"avb", "&Avbryt"},
        {"Command11", "&Kör"},
        {"Command12", "&Visa"},
        {"Command10", "&Döp om"},
        {"Command13", "&Ta bort"},
        {"Command21", "&cd.."},
        {"Command14", "&Skapa katalog"},
        {"Command9", "&Uppdatera"},
        {"Command2", "&Ta hem fil(er)"},
        {"Command1", "&Ladda upp fil(er)"},
        {"Command23", "Ladda upp &mapp..."},
        {"Command3", "&Skapa katalog"},
        {"Command5", "&Kör"},
        {"Command7", "&Uppdatera"},
        {"Command4", "&Visa"},
        {"Command6", "&Döp om"},
        {"Command8", "&Ta bort"},
        {"Command22", "Ändra"},
    };
    const std::pair<const char*, const char*> labels[] = {
        {"Label1", "Överfört:"},
        {"Label5", "State:"},
        {"Label4", "Last Error:"},
        {"Label3", "Last Action:"},
        {"lblState", "Ej ansluten"},
        {"Label2", "Visar filer oavsett 'senast ändrad' och 'storlek'. Klicka här för att ändra!"},
    };
    Open();
    for (const auto& [name, caption] : captions)
        EXPECT_EQ(Button(name).text(), QString::fromUtf8(caption)) << name;
    for (const auto& [name, text] : labels)
        EXPECT_EQ(Get<QLabel>(name).text(), QString::fromUtf8(text)) << name;
    EXPECT_EQ(Button("Command29").toolTip(), QStringLiteral("Välj favoritkatalog"));
    EXPECT_EQ(Get<toolkit::ListView>("listdir2").model()->headerData(0, Qt::Horizontal).toString(),
              QStringLiteral("Server-fil"));
}

TEST_F(Window, ClosingTheConnectionTwiceIsHarmless) {
    const char* const of_the_connection[] = {"Command16", "Command1",  "Command2",  "Command9",
                                             "Command14", "Command21", "Command10", "Command11",
                                             "Command12", "Command13", "Command23"};
    Open();
    app::Globals().SessionOpen = true;
    for (int press = 0; press < 2; ++press) {
        for (const char* name : of_the_connection) Button(name).setEnabled(true);
        Button("cmdConnection").setEnabled(false);
        ClickOn("Command16");
        for (const char* name : of_the_connection) EXPECT_FALSE(Button(name).isEnabled()) << name;
        EXPECT_TRUE(Button("cmdConnection").isEnabled());
        EXPECT_TRUE(Button("cmdConnection").hasFocus());
        EXPECT_FALSE(app::Globals().SessionOpen);
        EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
    }
}

TEST_F(Window, AChildWindowIsShownInThePlaceOfTheCurrentOne) {
    Open();
    QWidget first(window_.get()), second(window_.get());
    first.move(30, 30);
    window_->LoadForm(first, Button("cmdDirectory"));
    EXPECT_EQ(first.pos(), QPoint(0, 0));
    EXPECT_TRUE(first.isVisible());
    EXPECT_TRUE(Button("cmdDirectory").font().bold());
    first.move(7, 7);
    window_->LoadForm(first, Button("cmdDirectory"));
    EXPECT_EQ(first.pos(), QPoint(7, 7)) << "the current one is left alone";
    EXPECT_TRUE(Button("cmdDirectory").font().bold());

    window_->LoadForm(second, Button("cmdFileTransfers"));
    EXPECT_FALSE(first.isVisible());
    EXPECT_TRUE(second.isVisible());
    EXPECT_FALSE(Button("cmdDirectory").font().bold());
    EXPECT_TRUE(Button("cmdFileTransfers").font().bold());
}

TEST_F(Window, ARefusedActionCodeIsShownAndReturned) {
    Open();
    EXPECT_EQ(window_->ExecuteCommand(9), 0);
    EXPECT_EQ(window_->ExecuteCommand(20), 0);
    std::int32_t number = 0;
    QString description;
    try {
        window_->findChild<ftp::Component*>(QStringLiteral("Ftp1"))->SetAction(77);
    } catch (const ftp::UnknownAction& error) {
        number = error.Number();
        description = error.Description();
    }
    ASSERT_NE(number, 0);
    toolkit_test::ExpectBox box(toolkit::kDefaultTitle, description, QStringLiteral("cmdOk"));
    EXPECT_EQ(window_->ExecuteCommand(77), number);
}

TEST_F(Window, TheTraceKeepsTenThousandLines) {
    Open();
    auto& trace = Get<toolkit::ListBox>("listTrace");
    for (int i = 0; i <= ftp::kMaxListLines + 1; ++i) window_->Trace(QString::number(i));
    EXPECT_EQ(trace.ListCount(), ftp::kMaxListLines + 1);
    EXPECT_EQ(trace.List(0), QStringLiteral("1"));
    EXPECT_EQ(trace.Text(), QString::number(ftp::kMaxListLines + 1));
}

TEST_F(Window, SizeAndPlaceAreKept) {
    Open();
    window_->resize(900, 640);
    ASSERT_TRUE(QTest::qWaitFor([this] { return window_->size() == QSize(900, 640); }));
    auto& panels = Get<QSplitter>("panels");
    panels.setSizes({500, 380});
    const QList<int> sizes = panels.sizes();
    Close();
    Open();
    EXPECT_EQ(window_->size(), QSize(900, 640));
    EXPECT_EQ(Get<QSplitter>("panels").sizes(), sizes);
}

TEST_F(Window, GarbageInTheKeptPlaceIsIgnored) {
    for (const char* key : {"MainForm", "panels", "workspace", "local_lists"})
        store_.SaveSetting(QStringLiteral("Websmide's FTP program, fönster"), QStringLiteral("MainForm"),
                           QString::fromLatin1(key), QStringLiteral("åäö skräp AAAA//8="));
    Open();
    EXPECT_GE(window_->width(), 615);
    EXPECT_GT(Get("list2").width(), 0);
}

// From asking to painted rows and the new title, in this process's own time: other programs do not count.
TEST_F(Window, AHundredThousandFilesAreNothingSpecial) {
    constexpr int kFiles = 100'000;
#ifdef __SANITIZE_ADDRESS__
    constexpr double kSeconds = 5;
#elif defined(NDEBUG)
    constexpr double kSeconds = 1;
#else
    constexpr double kSeconds = 3;
#endif
    for (int i = 0; i < kFiles; ++i) MakeFile(QStringLiteral("Fil%1.txt").arg(i), 0);
    Open();
    auto& list = Get<toolkit::ListView>("list2");
    const auto seconds_for = [&list](const auto& act) {
        const std::clock_t begin = std::clock();
        act();
        list.viewport()->repaint();
        return static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
    };
    EXPECT_LT(seconds_for([this] { window_->Dir1_Change(); }), kSeconds);
    EXPECT_LT(seconds_for([&list] { QTest::keyClick(&list, Qt::Key_A, Qt::ControlModifier); }), kSeconds);
    EXPECT_EQ(list.SelCount(), kFiles);
    EXPECT_TRUE(window_->windowTitle().contains(QStringLiteral("   -   0 KB")));
}

}  // namespace
}  // namespace forms
