#include <QApplication>
#include <functional>
#include <utility>

#include "settings/favourites.h"
#include "tests/forms/main/main_window.h"
#include "tests/support/box_answerer.h"

namespace forms {
namespace {

class Toolbar : public MainWindow {
 protected:
    /// The visible window of that name, or none.
    static QWidget* Window(const char* name) {
        for (QWidget* window : QApplication::topLevelWidgets())
            if (window->isVisible() && window->objectName() == QString::fromLatin1(name)) return window;
        return nullptr;
    }

    /// Opens the window as the program does; `painted` is called by the event loop before what the greeting
    /// has queued there.
    void Start(std::function<void()> painted) {
        window_ = std::make_unique<MainForm>(store_);
        window_->show();
        window_->GreetNewUser();
        window_->installEventFilter(new Watcher(window_.get(), std::move(painted)));
    }

    class Watcher : public QObject {
     public:
        Watcher(QObject* window, std::function<void()> painted)
            : QObject(window), painted_(std::move(painted)) {}

     protected:
        bool eventFilter(QObject* window, QEvent* event) override {
            if (event->type() == QEvent::Paint && std::exchange(first_, false))
                QMetaObject::invokeMethod(window, painted_, Qt::QueuedConnection);
            return false;
        }

     private:
        const std::function<void()> painted_;
        bool first_ = true;
    };

    QString Shown() const { return store_.GetSetting("Websmide's FTP program", "general", "visa"); }
};

TEST_F(Toolbar, TheHelpPanelIsShownAndHiddenAndTheChoiceKeptAtOnce) {
    Open();
    EXPECT_EQ(Shown(), "");
    ClickOn("Command19");
    EXPECT_TRUE(Window("Form4"));
    EXPECT_EQ(Shown(), "1");
    EXPECT_TRUE(window_->isEnabled());
    ClickOn("Command19");
    EXPECT_FALSE(Window("Form4"));
    EXPECT_EQ(Shown(), "0");
    ClickOn("Command19");
    ASSERT_TRUE(Window("Form4"));
    Window("Form4")->close();  // by the user: the next press shows it again
    EXPECT_EQ(Shown(), "1");
    ClickOn("Command19");
    EXPECT_TRUE(Window("Form4"));
    EXPECT_EQ(Shown(), "1");
}

TEST_F(Toolbar, TheHelpPanelEndsWithTheProgram) {
    Open();
    ClickOn("Command19");
    ASSERT_TRUE(Window("Form4"));
    Close();
    EXPECT_FALSE(Window("Form4"));
}

// Only once, also where the first time ended with a crash: the place of the window says that the user knows
// the program.
TEST_F(Toolbar, TheThreeStepsGreetANewUser) {
    Start([] {});
    ASSERT_TRUE(QTest::qWaitFor([] { return Window("Form4") != nullptr; }));
    ASSERT_TRUE(QTest::qWaitForWindowExposed(Window("Form4")));
    ASSERT_TRUE(QTest::qWaitForWindowActive(window_.get()));
    EXPECT_EQ(Shown(), "");
    EXPECT_TRUE(QRect(window_->frameGeometry()).contains(Window("Form4")->frameGeometry().topLeft()));
    ClickOn("Command19");
    EXPECT_FALSE(Window("Form4"));
    EXPECT_EQ(Shown(), "0");
    ClickOn("Command19");
    ASSERT_TRUE(Window("Form4"));
    QTest::keyClick(&Get("listdir2"), Qt::Key_Escape);
    EXPECT_FALSE(Window("Form4")) << "it goes without having the focus";
    window_.reset();

    bool painted = false;
    Start([&painted] { painted = true; });
    ASSERT_TRUE(QTest::qWaitFor([&painted] { return painted; }));
    QApplication::processEvents();
    EXPECT_FALSE(Window("Form4"));
}

TEST_F(Toolbar, AWindowThatIsClosedAtOnceGreetsNobody) {
    bool closed = false;
    Start([this, &closed] { closed = window_->close(); });
    ASSERT_TRUE(QTest::qWaitFor([&closed] { return closed; }));
    QApplication::processEvents();
    EXPECT_FALSE(Window("Form4"));
}

TEST_F(Toolbar, TheAboutBoxHoldsTheWindow) {
    Open();
    ClickOn("Command18");
    QWidget* box = Window("Form2");
    ASSERT_TRUE(box);
    EXPECT_FALSE(window_->isEnabled());
    QTest::mouseClick(box->findChild<QPushButton*>("Command1"), Qt::LeftButton);
    EXPECT_FALSE(Window("Form2"));
    EXPECT_TRUE(window_->isEnabled());
}

TEST_F(Toolbar, TwoButtonsAreThereWithoutEffect) {
    Open();
    const auto state = [this] {
        QString text;
        for (QWidget* window : QApplication::topLevelWidgets())
            if (window->isVisible()) text += window->objectName() + window->windowTitle();
        for (const QPushButton* button : window_->findChildren<QPushButton*>())
            text += button->objectName() + (button->isEnabled() ? u'+' : u'-');
        return text;
    };
    const QString before = state();
    ClickOn("cmdDirectory");
    ClickOn("cmdFileTransfers");
    EXPECT_EQ(state(), before);
    EXPECT_EQ(Get<toolkit::ListBox>("listTrace").ListCount(), 0);
}

// The label opens the filter, and what is chosen there shows in the list at once.
TEST_F(Toolbar, TheFilterIsSetFromItsLabel) {
    MakeFile("liten.txt", 3);
    MakeFile("stor.txt", 3000);
    Open();
    QTest::mouseClick(&Get("Label2"), Qt::LeftButton);
    QWidget* dialog = Window("Form3");
    ASSERT_TRUE(dialog && QTest::qWaitForWindowActive(dialog));
    EXPECT_FALSE(window_->isEnabled());
    auto* unit = dialog->findChild<QComboBox*>("typ");
    unit->setFocus();
    QTest::keyClick(unit, Qt::Key_Down);
    EXPECT_EQ(unit->currentText(), "KB");
    QTest::mouseClick(dialog->findChild<QPushButton*>("Command1"), Qt::LeftButton);
    EXPECT_FALSE(Window("Form3"));
    EXPECT_TRUE(window_->isEnabled());
    EXPECT_EQ(Get<QLabel>("Label2").text(), "FILTER=  Filstorlek större än 1 KB. Klicka här för att ändra!");
    EXPECT_EQ(Names(), QStringList("stor.txt"));
}

TEST_F(Toolbar, TheSameFilterAgainDoesNotReadTheListAgain) {
    Open();
    MakeFile("ny.txt", 3);
    QTest::mouseClick(&Get("Label2"), Qt::LeftButton);
    ASSERT_TRUE(Window("Form3"));
    QTest::mouseClick(Window("Form3")->findChild<QPushButton*>("Command1"), Qt::LeftButton);
    EXPECT_EQ(Names(), QStringList());
    EXPECT_EQ(Get<QLabel>("Label2").text(),
              "Visar filer oavsett 'senast ändrad' och 'storlek'. Klicka här för att ändra!");
}

TEST_F(Toolbar, AFavouriteOpensItsFolder) {
    ASSERT_TRUE(QDir(files_.path()).mkdir("mina sidor"));
    MakeFile("mina sidor/index.htm", 3);
    settings::AppendFavourite(store_, "Mina sidor", Folder() + "\\mina sidor");
    Open();
    ClickOn("Command29");
    QWidget* dialog = Window("favviskat");
    ASSERT_TRUE(dialog && QTest::qWaitForWindowActive(dialog));
    EXPECT_EQ(dialog->property("tag").toString(), "frmmdi");
    EXPECT_FALSE(window_->isEnabled());
    QWidget* list = dialog->findChild<QWidget*>("List1");
    list->setFocus();
    QTest::keyClick(list, Qt::Key_End);
    QTest::mouseClick(dialog->findChild<QPushButton*>("Command1"), Qt::LeftButton);
    EXPECT_FALSE(Window("favviskat"));
    EXPECT_EQ(Get<toolkit::DirListBox>("Dir1").Path(), Folder() + "\\mina sidor");
    EXPECT_EQ(Names(), QStringList("index.htm"));
}

}  // namespace
}  // namespace forms
