#include "forms/viewer/viewer_form.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QTemporaryDir>
#include <QTest>
#include <memory>

#include "app/shared/swedish_texts.h"
#include "ftp/operation_gate.h"
#include "platform/drive_path.h"

namespace forms {
namespace {

class TextViewerTest : public ::testing::Test {
 protected:
    void SetUp() override {
        window_.show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window_));
    }

    QString Write(const QString& name, const QByteArray& bytes) {
        QFile file(files_.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        return platform::FromNative(QFile::encodeName(file.fileName()));
    }
    void Show(const QString& path) {
        viewer_.ShowFile(path);
        ASSERT_TRUE(QTest::qWaitFor([this] { return QApplication::activeWindow() == &viewer_; }));
    }
    template <class Widget = QWidget>
    Widget& Get(const char* name) {
        Widget* found = viewer_.findChild<Widget*>(QString::fromLatin1(name));
        if (!found) throw std::runtime_error(name);
        return *found;
    }
    QPlainTextEdit& View() { return Get<QPlainTextEdit>("view"); }
    QString Text() { return View().toPlainText(); }
    /// The line above the text, without its invisible places to break; empty when it is not to be seen.
    QString Notice() {
        const auto& notice = Get<QLabel>("notice");
        return notice.isVisible() ? notice.text().remove(QChar(0x200B)) : QString();
    }
    void Press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key(key), modifiers);
    }
    int Position() { return View().textCursor().selectionStart(); }

    QWidget window_;
    QTemporaryDir files_;
    TextViewer viewer_{window_};
};

TEST_F(TextViewerTest, ShowsAFileAndChangesNothing) {
    Show(Write("Läs mig.txt", "Hej å hå\r\nrad två\n"));
    EXPECT_EQ(viewer_.windowTitle(), "Läs mig.txt");
    EXPECT_EQ(Text(), "Hej å hå\nrad två\n");
    EXPECT_EQ(Notice(), "");
    EXPECT_FALSE(Get("find_bar").isVisible());
    EXPECT_TRUE(QFontInfo(View().font()).fixedPitch());
    EXPECT_EQ(QApplication::focusWidget(), &View());
    QTest::keyClicks(&View(), "xyz");
    Press(Qt::Key_Delete);
    EXPECT_EQ(Text(), "Hej å hå\nrad två\n");
}

TEST_F(TextViewerTest, StaysAboveTheMainWindowWhichCanBeUsed) {
    Show(Write("a.txt", "a"));
    EXPECT_EQ(viewer_.windowHandle()->transientParent(), window_.windowHandle());
    EXPECT_TRUE(window_.isEnabled());
    EXPECT_FALSE(viewer_.isModal());
}

TEST_F(TextViewerTest, OpensWithinTheScreen) {
    const QRect area = window_.screen()->availableGeometry();
    viewer_.resize(area.size() * 2);
    Show(Write("a.txt", "a"));
    EXPECT_TRUE(area.contains(viewer_.frameGeometry()));
}

TEST_F(TextViewerTest, HasRoomForAllOfTheFindBar) {
    Show(Write("a.txt", "a"));
    Press(Qt::Key_F, Qt::ControlModifier);
    QTest::keyClicks(QApplication::focusWidget(), "b");
    Press(Qt::Key_Return);
    viewer_.resize(viewer_.minimumSizeHint());
    for (const char* name : {"find_label", "not_found", "cmdPrevious", "cmdNext"}) {
        const QWidget& widget = Get(name);
        ASSERT_TRUE(QTest::qWaitFor([&] { return widget.width() >= widget.sizeHint().width(); })) << name;
    }
}

TEST_F(TextViewerTest, ShowsTheNextFileInPlaceOfTheFirst) {
    Show(Write("a.txt", QByteArray("a\n").repeated(1000)));
    Press(Qt::Key_End, Qt::ControlModifier);
    viewer_.move(40, 60);
    ASSERT_TRUE(QTest::qWaitFor([this] { return viewer_.pos() == QPoint(40, 60); }));
    Show(Write("b.txt", "b"));
    EXPECT_EQ(viewer_.windowTitle(), "b.txt");
    EXPECT_EQ(Text(), "b");
    EXPECT_EQ(Position(), 0);
    EXPECT_EQ(viewer_.pos(), QPoint(40, 60));
}

TEST_F(TextViewerTest, ClosesByEscapeAndOpensAgain) {
    const QString path = Write("a.txt", "a");
    Show(path);
    Press(Qt::Key_Escape);
    EXPECT_FALSE(viewer_.isVisible());
    EXPECT_TRUE(window_.isVisible());
    Show(path);
    EXPECT_TRUE(viewer_.close());  // as the main window does at its end
    EXPECT_FALSE(viewer_.isVisible());
}

TEST_F(TextViewerTest, SaysWhatIsNotThereToSee) {
    Show(Write("tom.txt", ""));
    EXPECT_EQ(Notice(), "Filen är tom.");
    EXPECT_EQ(Text(), "");
    const QString path = Write("a.txt", "a");
    Show(path);
    ASSERT_TRUE(QFile::remove(files_.filePath("a.txt")));
    Show(path);
    EXPECT_EQ(Notice(), "Filen finns inte: " + path);
    EXPECT_EQ(Text(), "");
    EXPECT_EQ(viewer_.windowTitle(), "a.txt");
    Show(platform::FromNative(QFile::encodeName(files_.path())));
    EXPECT_EQ(Notice().section(u':', 0, 0), "Sökvägen kan inte användas");
    Show("a.txt");
    EXPECT_EQ(Notice(), "Sökvägen kan inte användas: a.txt");
    EXPECT_EQ(viewer_.windowTitle(), "a.txt");
    Show(Write("b.txt", "b"));
    EXPECT_EQ(Notice(), "");
}

TEST_F(TextViewerTest, TellsOfALongPathInSeveralLines) {
    Show("C:\\finns\\inte");
    const int one_line = Get("notice").height();
    const int width = viewer_.width();
    Show("C:" + QString("\\en-mapp-som-inte-finns").repeated(20));
    ASSERT_TRUE(QTest::qWaitFor([&] { return Get("notice").height() > one_line; }));
    EXPECT_EQ(viewer_.width(), width);
}

TEST_F(TextViewerTest, ShowsTheBeginningOfALargeFile) {
    constexpr int kLimit = 4 * 1024 * 1024;
    const QByteArray lines = (QByteArray(63, 'x') + '\n').repeated(kLimit / 64);
    Show(Write("hel.txt", lines));
    EXPECT_EQ(Notice(), "");
    EXPECT_EQ(Text().size(), kLimit);
    Show(Write("stor.txt", lines + "slut"));
    EXPECT_EQ(Notice(), "Filen är stor. Bara början av den visas.");
    EXPECT_EQ(Text().size(), kLimit);
    Show(Write("lång.txt", QByteArray(5000, 'x')));
    EXPECT_EQ(Notice(), "Långa rader visas delade.");
    EXPECT_EQ(Text().count(u'\n'), 2);
}

TEST_F(TextViewerTest, TakesNoNameForMoreThanAName) {
    Show(Write("a[*]\n<b>\u202Etxt.exe", "<b>a</b>"));
    EXPECT_EQ(viewer_.windowTitle(), "a[*][*]\uFFFD<b>\uFFFDtxt.exe");  // which Qt shows as one "[*]"
    EXPECT_EQ(Text(), "<b>a</b>");
    EXPECT_EQ(Get<QLabel>("notice").textFormat(), Qt::PlainText);
}

TEST_F(TextViewerTest, LooksForAText) {
    Show(Write("a.txt", "ett två\nTRE två\n"));
    Press(Qt::Key_F, Qt::ControlModifier);
    auto& field = Get<QLineEdit>("txtFind");
    EXPECT_EQ(QApplication::focusWidget(), &field);
    QTest::keyClicks(&field, "TVÅ");
    Press(Qt::Key_Return);
    EXPECT_EQ(Position(), 4);
    EXPECT_EQ(View().textCursor().selectedText(), "två");
    QTest::mouseClick(&Get("cmdNext"), Qt::LeftButton);
    EXPECT_EQ(Position(), 12);
    Press(Qt::Key_F3);
    EXPECT_EQ(Position(), 4);  // from the beginning again
    Press(Qt::Key_F3, Qt::ShiftModifier);
    EXPECT_EQ(Position(), 12);
    QTest::mouseClick(&Get("cmdPrevious"), Qt::LeftButton);
    EXPECT_EQ(Position(), 4);
    EXPECT_FALSE(Get("not_found").isVisible());
    field.setFocus();
    field.selectAll();
    QTest::keyClicks(&field, "fyra");
    Press(Qt::Key_Return);
    EXPECT_TRUE(Get("not_found").isVisible());
    EXPECT_EQ(Position(), 4);
    QTest::keyClicks(&field, "x");
    EXPECT_FALSE(Get("not_found").isVisible());
}

TEST_F(TextViewerTest, EscapeClosesTheFindBarFirst) {
    Show(Write("a.txt", "ett två\n"));
    View().moveCursor(QTextCursor::EndOfWord, QTextCursor::KeepAnchor);
    Press(Qt::Key_F, Qt::ControlModifier);
    EXPECT_EQ(Get<QLineEdit>("txtFind").text(), "ett");  // what was selected
    Press(Qt::Key_Escape);
    EXPECT_FALSE(Get("find_bar").isVisible());
    EXPECT_TRUE(viewer_.isVisible());
    EXPECT_EQ(QApplication::focusWidget(), &View());
    Press(Qt::Key_Escape);
    EXPECT_FALSE(viewer_.isVisible());
}

TEST_F(TextViewerTest, F3WithoutATextAsksForOne) {
    Show(Write("a.txt", "ett två\n"));
    Press(Qt::Key_F3);
    EXPECT_TRUE(Get("find_bar").isVisible());
    EXPECT_FALSE(Get("not_found").isVisible());
}

TEST_F(TextViewerTest, CanBeUsedWhileAnOperationRuns) {
    Show(Write("a.txt", "ett två\n"));
    const ftp::OperationGate gate;
    QApplication::clipboard()->setText("");
    Press(Qt::Key_A, Qt::ControlModifier);
    Press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QApplication::clipboard()->text(), "ett två\n");
    Press(Qt::Key_Escape);
    EXPECT_FALSE(viewer_.isVisible());
}

TEST_F(TextViewerTest, HasASwedishMenu) {
    app::SwedishTexts texts;
    QApplication::installTranslator(&texts);
    Show(Write("a.txt", "a"));
    const std::unique_ptr<QMenu> menu(View().createStandardContextMenu());
    QApplication::removeTranslator(&texts);
    QStringList lines;
    for (const QAction* action : menu->actions())
        if (!action->isSeparator()) lines.append(action->text().section(u'\t', 0, 0));
    EXPECT_EQ(lines.join(u'|'), "&Kopiera|Markera allt");
}

}  // namespace
}  // namespace forms
