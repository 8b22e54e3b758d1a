#include "toolkit/message_box.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QTest>
#include <QTimer>
#include <optional>

#include "tests/support/box_answerer.h"

namespace toolkit {
namespace {

using toolkit_test::ExpectBox;

const QString kTitle = QStringLiteral("Ta bort fil");
const QString kText = QStringLiteral("Vill du ta bort [C:\\webb\\index.htm] ?");

class MessageBoxTest : public testing::Test {
 protected:
    void SetUp() override {
        parent_.resize(500, 400);
        parent_.show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&parent_));
    }

    Answer Ask(const QString& text = kText) {
        return MsgBox(&parent_, text, Buttons::YesNo, Icon::Information, kTitle);
    }

    QWidget parent_;
};

TEST_F(MessageBoxTest, EachWayOutHasItsAnswer) {
    const std::pair<QString, Answer> cases[] = {
        {QStringLiteral("cmdYes"), Answer::Yes},
        {QStringLiteral("cmdNo"), Answer::No},
        {ExpectBox::kEnter, Answer::Yes},
        {ExpectBox::kEscape, Answer::No},
    };
    for (const auto& [press, answer] : cases) {
        ExpectBox box(kTitle, kText, press);
        EXPECT_EQ(Ask(), answer) << qUtf8Printable(press);
    }
    for (const QString& press : {QStringLiteral("cmdOk"), ExpectBox::kEnter, ExpectBox::kEscape}) {
        ExpectBox box(kDefaultTitle, kText, press);
        EXPECT_EQ(MsgBox(&parent_, kText, Buttons::Ok, Icon::None), Answer::Ok) << qUtf8Printable(press);
    }
}

TEST_F(MessageBoxTest, ThereIsRoomForTheTitleBesideTheWindowsOwnButtons) {
    const QString title = QStringLiteral("Ta bort fil/katalog från server");
    ExpectBox box(title, QStringLiteral("?"), QStringLiteral("cmdNo"));
    box.Meanwhile([&](QDialog& dialog) {
        EXPECT_GT(dialog.width(), dialog.fontMetrics().horizontalAdvance(title) + 100);
    });
    EXPECT_EQ(MsgBox(&parent_, QStringLiteral("?"), Buttons::YesNo, Icon::None, title), Answer::No);
}

TEST_F(MessageBoxTest, ClosingIsNo) {
    ExpectBox box(kTitle, kText, ExpectBox::kEscape);
    box.Meanwhile([](QDialog& dialog) { dialog.close(); });
    EXPECT_EQ(Ask(), Answer::No);
}

TEST_F(MessageBoxTest, AltAndTheLetterAnswer) {
    for (const auto& [key, answer] : {std::pair{Qt::Key_J, Answer::Yes}, std::pair{Qt::Key_N, Answer::No}}) {
        ExpectBox box(kTitle, kText, ExpectBox::kEscape);
        box.Meanwhile([key = key](QDialog& dialog) {
            QTest::keyClick(dialog.windowHandle(), key, Qt::AltModifier);
            EXPECT_TRUE(QTest::qWaitFor([&dialog] { return !dialog.isVisible(); }));
        });
        EXPECT_EQ(Ask(), answer);
    }
}

TEST_F(MessageBoxTest, ButtonsAreSwedishAndTheFirstIsDefault) {
    ExpectBox box(kTitle, kText, QStringLiteral("cmdNo"));
    box.Meanwhile([](QDialog& dialog) {
        QStringList texts;
        for (const auto* button : dialog.findChildren<QPushButton*>())
            texts.append(button->text().remove(u'&'));
        EXPECT_EQ(texts.join(u' '), QStringLiteral("Ja Nej"));
        EXPECT_TRUE(dialog.findChild<QPushButton*>(QStringLiteral("cmdYes"))->isDefault());
        EXPECT_EQ(dialog.objectName(), QStringLiteral("MsgBox"));
        EXPECT_TRUE(dialog.isModal());
        EXPECT_TRUE(dialog.property("allowWhileBusy").toBool());
    });
    Ask();
}

TEST_F(MessageBoxTest, APictureIsShownOnlyWhenAskedFor) {
    for (const auto& [icon, pictures] : {std::pair{Icon::Information, 1}, std::pair{Icon::None, 0}}) {
        ExpectBox box(kDefaultTitle, kText, QStringLiteral("cmdOk"));
        box.Meanwhile([pictures = pictures](QDialog& dialog) {
            int found = 0;
            for (const auto* label : dialog.findChildren<QLabel*>()) found += !label->pixmap().isNull();
            EXPECT_EQ(found, pictures);
        });
        MsgBox(&parent_, kText, Buttons::Ok, icon);
    }
}

TEST_F(MessageBoxTest, MarkupIsShownAsWritten) {
    const QString text = QStringLiteral("<b>fet</b> &amp; <img src=x>");
    ExpectBox box(kTitle, text, QStringLiteral("cmdNo"));
    box.Meanwhile([](QDialog& dialog) {
        const auto* label = dialog.findChild<QLabel*>(QStringLiteral("lblText"));
        EXPECT_EQ(label->textFormat(), Qt::PlainText);
        EXPECT_GT(label->width(),
                  label->fontMetrics().horizontalAdvance(QStringLiteral("<b>fet</b> &amp; <img")));
    });
    Ask(text);
}

TEST_F(MessageBoxTest, EveryTextFitsTheScreen) {
    const QStringList texts{
        QString(),
        QStringLiteral("Kort"),
        QStringLiteral("Rad ett\r\nRad två"),
        QStringLiteral("Ett längre meddelande ").repeated(20),
        QStringLiteral("Vill du ta bort [C:\\") + QStringLiteral("mapp\\").repeated(60) +
            QStringLiteral("] ?"),
        QString(5000, u'x'),
        QStringLiteral("rad\n").repeated(300),
    };
    for (const QString& text : texts) {
        ExpectBox box(kTitle, text, QStringLiteral("cmdNo"));
        box.Meanwhile([](QDialog& dialog) {
            const QSize screen = dialog.screen()->availableSize();
            EXPECT_LT(dialog.width(), 700);
            EXPECT_LT(dialog.height(), screen.height() * 3 / 4);
            const auto* label = dialog.findChild<QLabel*>(QStringLiteral("lblText"));
            EXPECT_EQ(label->size(), label->sizeHint());
        });
        EXPECT_EQ(Ask(text), Answer::No);
    }
}

TEST_F(MessageBoxTest, WorksOverADisabledParentAndStaysAboveIt) {
    parent_.setEnabled(false);
    ExpectBox box(kTitle, kText, QStringLiteral("cmdYes"));
    box.Meanwhile([this](QDialog& dialog) {
        EXPECT_TRUE(dialog.isEnabled());
        EXPECT_EQ(dialog.windowHandle()->transientParent(), parent_.windowHandle());
    });
    EXPECT_EQ(Ask(), Answer::Yes);
}

TEST_F(MessageBoxTest, WorksWithoutAParent) {
    ExpectBox box(kDefaultTitle, kText, QStringLiteral("cmdYes"));
    EXPECT_EQ(MsgBox(nullptr, kText, Buttons::YesNo, Icon::None), Answer::Yes);
}

TEST_F(MessageBoxTest, TheEndOfTheParentIsNo) {
    auto* parent = new QWidget;
    auto* inner = new QWidget(parent);
    parent->show();
    ExpectBox box(kTitle, kText, QStringLiteral("cmdYes"));
    box.Meanwhile([parent](QDialog&) { delete parent; });
    EXPECT_EQ(MsgBox(inner, kText, Buttons::YesNo, Icon::None, kTitle), Answer::No);
}

TEST_F(MessageBoxTest, TheEndOfTheParentEndsAnInputBoxWithoutAnAnswer) {
    auto* parent = new QWidget;
    parent->show();
    ExpectBox box(kTitle, kText, QStringLiteral("cmdOk"));
    box.Meanwhile([parent](QDialog&) { delete parent; });
    EXPECT_EQ(InputBox(parent, kText, kTitle, QStringLiteral("svar")), QString());
}

TEST_F(MessageBoxTest, TheEndOfTheProgramIsNo) {
    const std::pair<const char*, void (*)()> ends[] = {
        {"quit", [] { QCoreApplication::quit(); }},
        {"exit", [] { QCoreApplication::exit(); }},
    };
    for (const auto& [name, end] : ends) {
        ExpectBox box(kTitle, kText, ExpectBox::kNothing);
        box.Meanwhile([end = end](QDialog&) { end(); });
        std::optional<Answer> answer;
        QTimer::singleShot(0, &parent_, [&] { answer = Ask(); });
        QApplication::exec();
        EXPECT_EQ(answer, Answer::No) << name;
    }
}

TEST_F(MessageBoxTest, ThePointerIsAnArrowInTheBox) {
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    ExpectBox box(kTitle, kText, QStringLiteral("cmdYes"));
    box.Meanwhile([](QDialog&) { EXPECT_EQ(QGuiApplication::overrideCursor()->shape(), Qt::ArrowCursor); });
    Ask();
    EXPECT_EQ(QGuiApplication::overrideCursor()->shape(), Qt::WaitCursor);
    QGuiApplication::restoreOverrideCursor();
}

TEST_F(MessageBoxTest, AQuestionInAQuestionIsAnswered) {
    ExpectBox outer(kTitle, QStringLiteral("yttre"), QStringLiteral("cmdYes"));
    ExpectBox inner(kTitle, QStringLiteral("inre"), QStringLiteral("cmdNo"));
    outer.Meanwhile([this](QDialog&) { EXPECT_EQ(Ask(QStringLiteral("inre")), Answer::No); });
    EXPECT_EQ(Ask(QStringLiteral("yttre")), Answer::Yes);
}

struct InputCase {
    const char* given;
    std::optional<QString> typed;
    QString press;
    const char* answer;
};

TEST_F(MessageBoxTest, AnInputBoxGivesTheTextOrNothing) {
    const QString ok = QStringLiteral("cmdOk"), cancel = QStringLiteral("cmdCancel");
    const InputCase cases[] = {
        {"", QStringLiteral("bilder"), ok, "bilder"},
        {"", QStringLiteral(" a b "), ok, " a b "},
        {"", std::nullopt, ok, ""},
        {"fil.txt", std::nullopt, ok, "fil.txt"},
        {"fil.txt", QStringLiteral("ny.txt"), ExpectBox::kEnter, "ny.txt"},
        {"fil.txt", QStringLiteral("ny.txt"), cancel, ""},
        {"fil.txt", std::nullopt, ExpectBox::kEscape, ""},
        {"fil.txt", QString(), ok, ""},
    };
    for (const InputCase& test : cases) {
        ExpectBox box(QStringLiteral("Skapa katalog"), QStringLiteral("Namn på ny katalog"), test.press,
                      test.typed);
        EXPECT_EQ(InputBox(&parent_, QStringLiteral("Namn på ny katalog"), QStringLiteral("Skapa katalog"),
                           QString::fromLatin1(test.given)),
                  QString::fromLatin1(test.answer));
    }
}

TEST_F(MessageBoxTest, AnInputBoxBeginsWithTheDefaultSelected) {
    ExpectBox box(kTitle, kText, QStringLiteral("cmdCancel"));
    box.Meanwhile([](QDialog& dialog) {
        const auto* field = dialog.findChild<QLineEdit*>(QStringLiteral("txtInput"));
        EXPECT_EQ(field->selectedText(), QStringLiteral("fil.txt"));
        EXPECT_EQ(dialog.focusWidget(), field);
        EXPECT_EQ(dialog.objectName(), QStringLiteral("InputBox"));
        QStringList texts;
        for (const auto* button : dialog.findChildren<QPushButton*>())
            texts.append(button->text().remove(u'&'));
        EXPECT_EQ(texts.join(u' '), QStringLiteral("OK Avbryt"));
    });
    InputBox(&parent_, kText, kTitle, QStringLiteral("fil.txt"));
}

}  // namespace
}  // namespace toolkit
