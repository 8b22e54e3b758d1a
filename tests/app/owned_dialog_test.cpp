#include "app/shared/owned_dialog.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QCloseEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QVBoxLayout>
#include <QWindow>
#include <functional>

namespace {

class Dialog : public app::OwnedDialog {
 public:
    using OwnedDialog::OpenOverOwner;
    using OwnedDialog::OwnedDialog;
};

class OwnedDialogTest : public testing::Test {
 protected:
    void SetUp() override {
        auto* column = new QVBoxLayout(&owner_);
        column->addWidget(new QPushButton(&owner_));
        column->addWidget(&field_);
        owner_.show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&owner_));
        field_.setFocus();
        dialog_.OpenOverOwner();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog_));
    }

    QWidget owner_;
    QLineEdit field_{&owner_};
    Dialog dialog_{owner_};
};

TEST_F(OwnedDialogTest, HoldsItsOwnerWhileItIsOpen) {
    EXPECT_FALSE(owner_.isEnabled());
    EXPECT_EQ(dialog_.windowHandle()->transientParent(), owner_.windowHandle());
}

TEST_F(OwnedDialogTest, EveryWayOfClosingGivesTheOwnerBack) {
    const std::function<void()> ways[] = {
        [this] { dialog_.close(); },
        [this] { dialog_.accept(); },
        [this] { QTest::keyClick(&dialog_, Qt::Key_Escape); },
        [this] {  // as the window manager does
            QCloseEvent close;
            QApplication::sendEvent(dialog_.windowHandle(), &close);
        },
    };
    for (const auto& way : ways) {
        way();
        EXPECT_FALSE(dialog_.isVisible());
        EXPECT_TRUE(owner_.isEnabled());
        EXPECT_EQ(dialog_.windowHandle()->transientParent(), nullptr);
        EXPECT_TRUE(QTest::qWaitFor([this] { return field_.hasFocus(); }));
        dialog_.OpenOverOwner();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog_));
    }
}

}  // namespace
