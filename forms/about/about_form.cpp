#include "forms/about/about_form.h"

#include <QIcon>

#include "toolkit/accessible.h"

namespace forms {
namespace {

constexpr QSize kIconSize(64, 64);

}  // namespace

Form2::Form2(QWidget& window) : OwnedDialog(window), window_(window) {
    setupUi(this);
    toolkit::MakeDecorative(*Image1);
    Label2->setText(Label2->text().arg(QString::fromLatin1(qVersion())));
    Wire();
}

void Form2::Wire() {
    connect(Command1, &QPushButton::clicked, this, &Form2::Command1_Click);
    connect(Label3, &toolkit::ClickLabel::Click, this, &Form2::HelpWanted);
}

void Form2::Form_Load() {
    Image1->setPixmap(window_.windowIcon().pixmap(kIconSize, window_.devicePixelRatioF()));
    adjustSize();  // is centred by its size
    OpenOverOwner();
    Command1->setFocus();
}

void Form2::Command1_Click() {
    accept();
}

}  // namespace forms
