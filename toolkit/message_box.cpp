#include "toolkit/message_box.h"

#include <QApplication>
#include <QDialog>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QStyle>
#include <QVBoxLayout>

#include "toolkit/accessible.h"
#include "toolkit/pictures.h"
#include "toolkit/wrapped_label.h"

namespace toolkit {
namespace {

constexpr int kBesideTitle = 130;  // pixels: the window manager's own buttons, and bolder letters than ours

// Rows from above: the message, further controls, the buttons.
class Box : public QDialog {
 public:
    Box(QWidget* parent, const QString& name, const QString& title)
        : QDialog(parent ? parent->window() : nullptr,
                  Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint) {
        setObjectName(name);
        setWindowTitle(title);
        setWindowModality(Qt::ApplicationModal);
        setProperty("allowWhileBusy", true);  // a question can be answered while an operation runs
        buttons_->addStretch();
        rows_->setSpacing(14);
        rows_->setContentsMargins(16, 16, 16, 14);
        rows_->addLayout(message_);
        rows_->addLayout(buttons_);
        rows_->addStrut(fontMetrics().horizontalAdvance(title) + kBesideTitle);
        rows_->setSizeConstraint(QLayout::SetFixedSize);
    }

    void AddPicture(const QIcon& picture) {
        auto* label = new QLabel(this);
        const int extent = style()->pixelMetric(QStyle::PM_MessageBoxIconSize);
        label->setPixmap(picture.pixmap(QSize(extent, extent), devicePixelRatioF()));
        MakeDecorative(*label);
        message_->addWidget(label, 0, Qt::AlignTop);
    }

    void AddText(const QString& text) {
        auto* label = new WrappedLabel(text, this);
        label->setObjectName(QStringLiteral("lblText"));
        message_->setSpacing(14);
        const int highest = screen()->availableGeometry().height() / 2;
        if (label->sizeHint().height() <= highest) {
            message_->addWidget(label, 1, Qt::AlignLeft | Qt::AlignVCenter);
            return;
        }
        auto* area = new QScrollArea(this);
        area->setAccessibleName(QStringLiteral("Meddelande"));
        area->setWidget(label);
        area->setFixedSize(label->sizeHint().width() + 2 * style()->pixelMetric(QStyle::PM_ScrollBarExtent),
                           highest);
        message_->addWidget(area);
    }

    void AddRow(QWidget* widget) { rows_->insertWidget(rows_->indexOf(buttons_), widget); }

    void AddButton(const QString& text, const QString& name, int result) {
        auto* button = new QPushButton(text, this);
        button->setObjectName(name);
        button->setMinimumWidth(88);
        button->setDefault(buttons_->count() == 1);
        buttons_->addWidget(button);
        connect(button, &QPushButton::clicked, this, [this, result] { done(result); });
    }

 private:
    QVBoxLayout* const rows_ = new QVBoxLayout(this);
    QHBoxLayout* const message_ = new QHBoxLayout;
    QHBoxLayout* const buttons_ = new QHBoxLayout;
};

// The plain pointer, also where the program shows the hourglass.
class ArrowPointer {
 public:
    ArrowPointer() { QGuiApplication::setOverrideCursor(Qt::ArrowCursor); }
    ~ArrowPointer() { QGuiApplication::restoreOverrideCursor(); }
    ArrowPointer(const ArrowPointer&) = delete;
    ArrowPointer& operator=(const ArrowPointer&) = delete;
};

// Whether the box was accepted. It dies with its parent, which is then not accepted.
bool Ask(const QPointer<Box>& box) {
    const ArrowPointer pointer;
    return box->exec() == QDialog::Accepted && box;
}

}  // namespace

Answer MsgBox(QWidget* parent, const QString& text, Buttons buttons, Icon icon, const QString& title) {
    const QPointer<Box> box = new Box(parent, QStringLiteral("MsgBox"), title);
    if (icon == Icon::Information) box->AddPicture(InformationPicture());
    box->AddText(text);
    box->setAccessibleDescription(text);
    SetAccessibleRole(*box, QAccessible::AlertMessage);
    if (buttons == Buttons::Ok) {
        box->AddButton(QStringLiteral("&OK"), QStringLiteral("cmdOk"), QDialog::Accepted);
    } else {
        box->AddButton(QStringLiteral("&Ja"), QStringLiteral("cmdYes"), QDialog::Accepted);
        box->AddButton(QStringLiteral("&Nej"), QStringLiteral("cmdNo"), QDialog::Rejected);
    }
    const bool accepted = Ask(box);
    delete box;
    if (buttons == Buttons::Ok) return Answer::Ok;
    return accepted ? Answer::Yes : Answer::No;
}

QString InputBox(QWidget* parent, const QString& prompt, const QString& title, const QString& default_text) {
    const QPointer<Box> box = new Box(parent, QStringLiteral("InputBox"), title);
    auto* field = new QLineEdit(default_text, box);
    field->setObjectName(QStringLiteral("txtInput"));
    field->setMinimumWidth(340);
    field->setAccessibleName(prompt);
    field->selectAll();
    box->AddText(prompt);
    box->AddRow(field);
    box->AddButton(QStringLiteral("&OK"), QStringLiteral("cmdOk"), QDialog::Accepted);
    box->AddButton(QStringLiteral("&Avbryt"), QStringLiteral("cmdCancel"), QDialog::Rejected);
    field->setFocus();
    const QString answer = Ask(box) ? field->text() : QString();
    delete box;
    return answer;
}

}  // namespace toolkit
