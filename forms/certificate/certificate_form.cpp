#include "forms/certificate/certificate_form.h"

#include <QPointer>
#include <QScrollBar>
#include <QStyle>
#include <QTextBlock>
#include <QTextCursor>

#include "ftp/operation_gate.h"
#include "toolkit/accessible.h"
#include "toolkit/fonts.h"

// The pictures lie in a static library, where nothing else refers to them.
static void RegisterPictures() {
    Q_INIT_RESOURCE(certificate);
}

namespace forms {
namespace {

using ftp::CertificateAnswer;

constexpr int kBetweenColumns = 16, kBetweenFacts = 4;  // pixels
constexpr int kMostLines = 12;                          // of the facts, before they have to be scrolled

// The plain pointer, also where the program shows the hourglass.
class ArrowPointer {
 public:
    ArrowPointer() { QGuiApplication::setOverrideCursor(Qt::ArrowCursor); }
    ~ArrowPointer() { QGuiApplication::restoreOverrideCursor(); }
    ArrowPointer(const ArrowPointer&) = delete;
    ArrowPointer& operator=(const ArrowPointer&) = delete;
};

int WidestName(const QList<CertificateFact>& facts, const QFontMetrics& font) {
    int widest = 0;
    for (const CertificateFact& fact : facts) widest = std::max(widest, font.horizontalAdvance(fact.name));
    return widest;
}

}  // namespace

CertificateAnswer frmCertificate::Ask(QWidget* parent, const ftp::CertificateQuestion& question) {
    const ArrowPointer pointer;
    const QPointer<frmCertificate> dialog = new frmCertificate(parent, question);
    dialog->exec();
    const CertificateAnswer answer = dialog ? dialog->answer_ : CertificateAnswer::Refuse;
    delete dialog;
    return answer;
}

frmCertificate::frmCertificate(QWidget* parent, const ftp::CertificateQuestion& question)
    : QDialog(parent ? parent->window() : nullptr) {
    RegisterPictures();
    setupUi(this);
    toolkit::MakeDecorative(*lblPicture);
    setWindowModality(Qt::ApplicationModal);
    ftp::OperationGate::AllowWhileBusy(this);
    const int extent = style()->pixelMetric(QStyle::PM_MessageBoxIconSize);
    const QIcon picture(question.changed ? QStringLiteral(":/certificate/changed.svg")
                                         : QStringLiteral(":/certificate/unproven.svg"));
    lblPicture->setPixmap(picture.pixmap(QSize(extent, extent), devicePixelRatioF()));
    lblHeading->setText(CertificateHeading(question));
    lblAdvice->setText(CertificateAdvice(question));
    toolkit::MakeHeading(*lblHeading);
    ShowProblems(CertificateProblems(question.certificate));
    ShowFacts(CertificateFacts(question));
    Wire();
    FitFacts();
    resize(minimumSizeHint());
    cmdCancel->setFocus();
}

void frmCertificate::Wire() {
    connect(cmdAlways, &QPushButton::clicked, this, &frmCertificate::cmdAlways_Click);
    connect(cmdNow, &QPushButton::clicked, this, &frmCertificate::cmdNow_Click);
    connect(cmdCancel, &QPushButton::clicked, this, &frmCertificate::reject);
}

void frmCertificate::cmdAlways_Click() {
    answer_ = CertificateAnswer::TrustAlways;
    accept();
}

void frmCertificate::cmdNow_Click() {
    answer_ = CertificateAnswer::TrustNow;
    accept();
}

void frmCertificate::ShowProblems(const QStringList& problems) {
    const QString dot = QStringLiteral("\u2022 ");
    lblProblems->setText(dot + problems.join(u'\n' + dot));
    lblProblems->setVisible(!problems.isEmpty());
}

// Two columns: the lines of a fact hang beside its name.
void frmCertificate::ShowFacts(const QList<CertificateFact>& facts) {
    const int column = WidestName(facts, txtFacts->fontMetrics()) + kBetweenColumns;
    QTextBlockFormat block;
    block.setLeftMargin(column);
    block.setTextIndent(-column);
    block.setTabPositions({QTextOption::Tab(column, QTextOption::LeftTab)});
    block.setBottomMargin(kBetweenFacts);
    QTextCharFormat plain, fixed_pitch;
    fixed_pitch.setFont(toolkit::FixedPitchFont());

    QTextCursor cursor(txtFacts->document());
    for (const CertificateFact& fact : facts) {
        cursor.atStart() ? cursor.setBlockFormat(block) : cursor.insertBlock(block, plain);
        cursor.insertText(fact.name + u'\t', plain);
        cursor.insertText(fact.lines.join(QChar(QChar::LineSeparator)),
                          fact.fixed_pitch ? fixed_pitch : plain);
    }
    txtFacts->moveCursor(QTextCursor::Start);
}

// As wide as half a fingerprint beside its name, and as high as they are, within bounds.
void frmCertificate::FitFacts() {
    QTextDocument& document = *txtFacts->document();
    const QFontMetrics fixed_pitch(toolkit::FixedPitchFont());
    const auto first = document.begin().blockFormat();
    const int text = static_cast<int>(first.leftMargin()) +
                     fixed_pitch.horizontalAdvance(QString(16 * 3, u'0')) +
                     2 * static_cast<int>(document.documentMargin());
    const int frame = 2 * txtFacts->frameWidth();
    txtFacts->setMinimumWidth(text + frame + txtFacts->verticalScrollBar()->sizeHint().width());
    document.setTextWidth(text);
    const int highest = kMostLines * txtFacts->fontMetrics().lineSpacing();
    txtFacts->setMinimumHeight(std::min(static_cast<int>(document.size().height()), highest) + frame);
}

}  // namespace forms
