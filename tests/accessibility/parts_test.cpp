// What assistive programs are told of values, rows and presses.

#include <QAccessibleActionInterface>
#include <QAccessibleValueInterface>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QLabel>

#include "ftp/operation_gate.h"
#include "tests/accessibility/windows.h"
#include "toolkit/picture_bar.h"

namespace forms {
namespace {

class Parts : public MainWindow {
 protected:
    void SetUp() override {
        MainWindow::SetUp();
        MakeFile(QStringLiteral("a.txt"), 10);
        MakeFile(QStringLiteral("b.txt"), 2000);
        Open();
    }

    QAccessibleInterface& Part(const char* name) {
        return *QAccessible::queryAccessibleInterface(&Get(name));
    }

    void Press(const char* name) {
        Part(name).actionInterface()->doAction(Part(name).actionInterface()->actionNames().first());
    }

    bool DialogIsOpen(const char* name) {
        for (const QWidget* window : QApplication::topLevelWidgets())
            if (window->isVisible() && window->objectName() == QString::fromLatin1(name)) return true;
        return false;
    }
};

TEST_F(Parts, TheStripTellsHowMuchIsDone) {
    auto& p2 = Get<toolkit::PictureBox>("p2");
    p2.SetWidth(0.42 * Get<toolkit::PictureBox>("p1").Width());
    QAccessibleInterface& bar = Part("p1");
    EXPECT_EQ(bar.role(), QAccessible::ProgressBar);
    ASSERT_TRUE(bar.valueInterface());
    EXPECT_EQ(bar.valueInterface()->currentValue().toInt(), 42);
    EXPECT_EQ(bar.valueInterface()->maximumValue().toInt(), 100);
    EXPECT_EQ(bar.text(QAccessible::Value), QStringLiteral("42 %"));
    EXPECT_EQ(bar.childCount(), 0);
}

TEST_F(Parts, ARowTellsItsColumns) {
    QAccessibleInterface& list = Part("list2");
    ASSERT_TRUE(list.tableInterface());
    EXPECT_EQ(list.tableInterface()->columnDescription(2), QStringLiteral("Senast ändrad"));
    EXPECT_EQ(list.tableInterface()->cellAt(1, 0)->text(QAccessible::Name), QStringLiteral("b.txt"));
    EXPECT_EQ(list.tableInterface()->cellAt(1, 1)->text(QAccessible::Name), QStringLiteral("2000"));
    EXPECT_FALSE(list.tableInterface()->isRowSelected(1));
    ClickRow("list2", 1);
    EXPECT_TRUE(list.tableInterface()->isRowSelected(1));
    EXPECT_TRUE(list.tableInterface()->cellAt(1, 0)->state().selected);
}

TEST_F(Parts, AComboBoxIsCalledByItsLabelAndTellsItsValue) {
    QAccessibleInterface& box = Part("Text1");
    EXPECT_EQ(box.role(), QAccessible::ComboBox);
    EXPECT_EQ(box.text(QAccessible::Value), QStringLiteral("*.*"));
    ASSERT_EQ(box.childCount(), 2);
    EXPECT_EQ(box.child(1)->text(QAccessible::Name), QStringLiteral("Filmönster"));
    EXPECT_TRUE(box.child(0)->child(0)->state().selected);
    Get<QComboBox>("Text1").setCurrentIndex(3);
    EXPECT_TRUE(box.child(0)->child(3)->state().selected);
    EXPECT_EQ(box.indexOfChild(box.child(1)), 1);
}

TEST_F(Parts, AButtonIsPressedAsByItsKey) {
    Press("Command18");
    ASSERT_TRUE(QTest::qWaitFor([this] { return DialogIsOpen("Form2"); }));
}

TEST_F(Parts, ALinkIsPressedAsByItsKey) {
    EXPECT_EQ(Part("Label2").role(), QAccessible::Link);
    Press("Label2");
    ASSERT_TRUE(QTest::qWaitFor([this] { return DialogIsOpen("Form3"); }));
}

TEST_F(Parts, ADisabledButtonHasNothingToPress) {
    EXPECT_FALSE(Part("Command1")
                     .actionInterface()
                     ->actionNames()
                     .contains(QAccessibleActionInterface::pressAction()));
    EXPECT_TRUE(Part("Command1").state().disabled);
}

TEST_F(Parts, BehindADialogNothingIsPressed) {
    QDialog dialog(window_.get());
    dialog.setModal(true);
    dialog.show();
    Press("Command18");
    QCoreApplication::sendPostedEvents();
    EXPECT_FALSE(DialogIsOpen("Form2"));
    dialog.close();
    Press("Command18");
    ASSERT_TRUE(QTest::qWaitFor([this] { return DialogIsOpen("Form2"); }));
}

TEST_F(Parts, WhatALabelSaysIsToldAsItStands) {
    Get<QLabel>("lblLastAction").setText(QStringLiteral("rock & roll.mp3"));
    EXPECT_EQ(Part("lblLastAction").text(QAccessible::Name), QStringLiteral("rock & roll.mp3"));
}

// Who hears the window is held to the same as who presses the keys.
TEST_F(Parts, WhileAnOperationRunsNothingElseIsPressed) {
    {
        const ftp::OperationGate gate;
        Press("Command18");
        QCoreApplication::sendPostedEvents();
        EXPECT_FALSE(DialogIsOpen("Form2"));
    }
    Press("Command18");
    ASSERT_TRUE(QTest::qWaitFor([this] { return DialogIsOpen("Form2"); }));
}

}  // namespace
}  // namespace forms
