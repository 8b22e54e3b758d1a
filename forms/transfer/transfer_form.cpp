#include "forms/transfer/transfer_form.h"

#include <QCloseEvent>

#include "app/shared/ftpglob.h"
#include "app/shared/window_routines.h"
#include "ftp/listing_rows.h"
#include "ftp/operation_gate.h"
#include "ftp/progress_arithmetic.h"
#include "platform/drive_path.h"
#include "toolkit/conversions.h"
#include "toolkit/fonts.h"
#include "toolkit/message_box.h"

namespace forms {
namespace {

constexpr int kTitleInterval = 100;  // milliseconds

std::optional<std::int64_t> SizeIn(const QString& line) {
    const std::optional<QString> size = ftp::SizeColumn(line);
    return size ? std::optional(static_cast<std::int64_t>(toolkit::Val(*size))) : std::nullopt;
}

}  // namespace

Form1::Form1(const TransferHost& main) : main_(main), Timer1(new QTimer(this)) {
    setupUi(this);
    Timer1->setObjectName(QStringLiteral("Timer1"));
    Timer1->setInterval(kTitleInterval);
    l1->setFont(toolkit::FixedPitchFont());
    l1->viewport()->setAttribute(
        Qt::WA_TransparentForMouseEvents);  // the current entry is the file on its way
    ftp::OperationGate::AllowWhileBusy(this);
    Wire();
}

void Form1::Wire() {
    connect(Command1, &QPushButton::clicked, this, &Form1::Command1_Click);
    connect(Timer1, &QTimer::timeout, this, &Form1::Timer1_Timer);
}

void Form1::Form_Load() {
    AbortRequested_ = false;
    app::CentreOnScreen(*this);
    app::SetOwner(*this, main_.window);
    show();
    Timer1->start();
    skicka();
}

void Form1::Form_QueryUnload() {
    app::ClearOwner(*this);
    main_.listdir2.setEnabled(true);
}

// The close box of the window asks as the button does; the program's own closing does not.
void Form1::closeEvent(QCloseEvent* event) {
    if (event->spontaneous()) {
        event->ignore();
        Command1_Click();
        return;
    }
    AbortRequested_ = true;
    Form_QueryUnload();
    event->accept();
}

// The Escape key.
void Form1::reject() {
    Command1_Click();
}

void Form1::Command1_Click() {
    if (!UserWantsToAbort(*this)) return;
    l1->Clear();
    AbortRequested_ = true;
    main_.antal.setText(QStringLiteral("0 %"));
    main_.p2.SetWidth(kAbortedBarWidth);
    Timer1->stop();
    main_.Ftp1.AbortTransfer();
}

void Form1::Timer1_Timer() {
    QString& size = app::Globals().FileSizeText;
    if (size.isEmpty()) size = QStringLiteral("0");
    if (main_.label7.text().isEmpty()) main_.label7.setText(QStringLiteral("0"));
    const QString caption = TransferCaption(main_.label7.text(), size, main_.antal.text());
    if (caption != windowTitle()) setWindowTitle(caption);
}

void Form1::skicka() {
    app::ftpglob& globals = app::Globals();
    if (globals.UploadRunning == 1) {
        Run(QueueUploads(), globals.UploadRunning, &ftp::Component::PutFile);
    } else if (globals.DownloadRunning == 1) {
        Run(QueueDownloads(), globals.DownloadRunning, &ftp::Component::GetFile);
        app::SetHourglass(false);
    } else {
        return;
    }
    close();
}

std::vector<Form1::Job> Form1::QueueUploads() {
    std::vector<Job> jobs;
    QStringList names;
    for (const Upload& file : main_.uploads) {
        names.append(file.name);
        jobs.push_back({file.path, file.name});
    }
    l1->Lines()->SetLines(names);
    return jobs;
}

std::vector<Form1::Job> Form1::QueueDownloads() {
    std::vector<Job> jobs;
    QStringList lines;
    for (const int row : main_.listDir.SelectedRows()) {
        lines.append(main_.listDir.List(row));
        const QString name = ftp::NameOfListingLine(lines.last());
        jobs.push_back({name, platform::Join(main_.Dir1.Path(), name), SizeIn(lines.last())});
    }
    l1->Lines()->SetLines(lines);
    return jobs;
}

void Form1::Run(const std::vector<Job>& jobs, std::int16_t& running, void (ftp::Component::*transfer)()) {
    if (jobs.empty()) return;
    const ftp::TransferRun run(main_.Ftp1);
    int entry = 0;
    for (const Job& job : jobs) {
        if (AbortRequested_) return;
        l1->SetListIndex(entry++);
        running = 1;
        main_.avb.setEnabled(true);
        main_.Ftp1.SourceFileName = job.source;
        main_.Ftp1.DestinationFileName = job.destination;
        main_.Ftp1.ExpectedSize = job.size;
        (main_.Ftp1.*transfer)();
        running = 0;
        main_.avb.setEnabled(false);
    }
}

bool UserWantsToAbort(QWidget& parent) {
    return toolkit::MsgBox(&parent, QStringLiteral("Vill du avbryta överföringen ?"), toolkit::Buttons::YesNo,
                           toolkit::Icon::Information,
                           QStringLiteral("Avbryt överföring!")) == toolkit::Answer::Yes;
}

QString TransferCaption(const QString& bytes, const QString& size, const QString& percent) {
    return QStringLiteral("Överfört: ") + bytes + QStringLiteral(" av ") + size.trimmed() +
           QStringLiteral("  ") + percent;
}

}  // namespace forms
