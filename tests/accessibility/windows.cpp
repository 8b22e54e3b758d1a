#include "tests/accessibility/windows.h"

#include <QAbstractButton>
#include <QApplication>
#include <QTimer>

#include "forms/certificate/certificate_form.h"
#include "forms/transfer/transfer_form.h"
#include "forms/viewer/viewer_form.h"
#include "settings/favourites.h"
#include "tests/support/box_answerer.h"
#include "toolkit/message_box.h"

namespace forms {
namespace {

using Look = std::function<void(QWidget&)>;

QWidget* Shown(const QByteArray& name) {
    for (QWidget* window : QApplication::topLevelWidgets())
        if (window->isVisible() && window->objectName() == QString::fromLatin1(name)) return window;
    return nullptr;
}

ftp::CertificateQuestion SomeQuestion() {
    ftp::CertificateQuestion question;
    question.server = QStringLiteral("ftp.exempel.se:21");
    question.certificate.fingerprint = "00:AB";
    question.certificate.names = {"ftp.exempel.se"};
    question.certificate.subject = "CN=ftp.exempel.se";
    question.certificate.issuer = "CN=Exempel CA";
    question.certificate.unknown_issuer = true;
    return question;
}

void VisitCertificate(QWidget& parent, const Look& look) {
    QTimer::singleShot(0, &parent, [look] {
        const auto active = [] { return QApplication::activeWindow() == Shown("frmCertificate"); };
        ASSERT_TRUE(QTest::qWaitFor([&] { return Shown("frmCertificate") && active(); }));
        look(*Shown("frmCertificate"));
        Shown("frmCertificate")->close();
    });
    frmCertificate::Ask(&parent, SomeQuestion());
}

void VisitBox(QWidget& parent, const Look& look, bool with_field) {
    const QString text = QStringLiteral("Spara profil som ");
    const QString title = QStringLiteral("Spara profil");
    toolkit_test::ExpectBox box(title, text, with_field ? "cmdCancel" : "cmdNo");
    box.Meanwhile([&look](QDialog& dialog) {
        EXPECT_TRUE(QTest::qWaitFor([&] { return QApplication::activeWindow() == &dialog; }));
        look(dialog);
    });
    if (with_field)
        toolkit::InputBox(&parent, text, title);
    else
        toolkit::MsgBox(&parent, text, toolkit::Buttons::YesNo, toolkit::Icon::Information, title);
}

bool IsInside(const QWidget& widget) {
    return widget.objectName().startsWith(QStringLiteral("qt_")) || widget.inherits("QScrollBar") ||
           widget.inherits("QHeaderView") || widget.inherits("QComboBoxPrivateContainer") ||
           widget.window()->inherits("QComboBoxPrivateContainer");
}

}  // namespace

void Windows::SetUp() {
    MainWindow::SetUp();
    MakeFile(QStringLiteral("a.txt"), 10);
    MakeFile(QStringLiteral("b.txt"), 20);
    settings::SaveFavourites(store_, {"Bilder", "Sidor", "Webb"}, {"C:\\", "C:\\", "C:\\"});
    Open();
}

QWidget* Windows::OpenByName(const QByteArray& name) {
    if (name == "frmConnection") ClickOn("cmdConnection");
    if (name == "Form2") ClickOn("Command18");
    if (name == "Form3") QTest::keyClick(&Get("Label2"), Qt::Key_Space);
    if (name == "Form4") ClickOn("Command19");
    if (name == "favviskat") ClickOn("Command29");
    if (name == "fmRekurs") {
        Button("Command23").setEnabled(true);
        ClickOn("Command23");
    }
    if (name == "Form1") {
        auto form = std::make_shared<Form1>(TransferHost{*window_,
                                                         Get<ftp::Component>("Ftp1"),
                                                         Get<toolkit::ListBox>("listDir"),
                                                         Get<toolkit::ListView>("listdir2"),
                                                         Get<toolkit::DirListBox>("Dir1"),
                                                         Button("avb"),
                                                         Get<QLabel>("antal"),
                                                         Get<QLabel>("label7"),
                                                         Get<toolkit::PictureBox>("p2"),
                                                         {}});
        form->Form_Load();
        own_ = form;
    }
    if (name == "TextViewer") {
        auto viewer = std::make_shared<TextViewer>(*window_);
        viewer->ShowFile(Folder() + QStringLiteral("\\a.txt"));
        own_ = viewer;
    }
    return Shown(name);
}

void Windows::Visit(const Look& look) {
    const QByteArray name = GetParam();
    if (name == "frmCertificate") return VisitCertificate(*window_, look);
    if (name == "MsgBox" || name == "InputBox") return VisitBox(*window_, look, name == "InputBox");
    QWidget* const window = OpenByName(name);
    ASSERT_TRUE(window);
    window->activateWindow();  // the help panel leaves the focus where it is
    ASSERT_TRUE(QTest::qWaitFor([window] { return QApplication::activeWindow() == window; }));
    if (name == "TextViewer") QTest::keyClick(window->windowHandle(), Qt::Key_F, Qt::ControlModifier);
    look(*window);
    if (window != window_.get()) window->close();
    own_.reset();
}

QList<QWidget*> ControlsOf(const QWidget& window) {
    QList<QWidget*> controls;
    for (QWidget* widget : window.findChildren<QWidget*>()) {
        const bool acts = widget->focusPolicy() != Qt::NoFocus || qobject_cast<QAbstractButton*>(widget);
        if (acts && widget->isVisibleTo(&window) && !IsInside(*widget)) controls.append(widget);
    }
    return controls;
}

void EnableAll(QWidget& window) {
    app::Globals().ServerListBusy =
        true;  // the server's list would disable its button when it loses the focus
    for (QWidget* control : ControlsOf(window)) control->setEnabled(true);
}

QList<QWidget*> TabStopsOf(const QWidget& window) {
    QList<QWidget*> stops;
    for (QWidget* control : ControlsOf(window))
        if (control->focusPolicy() & Qt::TabFocus && !control->focusProxy()) stops.append(control);
    return stops;
}

}  // namespace forms
