#include "forms/transfer/transfer_form.h"

#include <QCloseEvent>
#include <QScrollBar>
#include <algorithm>
#include <utility>

#include "app/shared/ftpglob.h"
#include "app/shared/window_routines.h"
#include "ftp/listing_rows.h"
#include "ftp/operation_gate.h"
#include "ftp/progress_arithmetic.h"
#include "ftp/visible_text.h"
#include "platform/drive_path.h"
#include "platform/folder.h"
#include "toolkit/conversions.h"
#include "toolkit/fonts.h"
#include "toolkit/message_box.h"

namespace forms {
namespace {

constexpr int kTitleInterval = 100;       // milliseconds
constexpr std::int32_t kRefused = 10036;  // an operation, while another runs
constexpr double kNoSize = 0x1p63;        // nor is what is larger

/// Nothing where one of the sizes is not known, or all of them are more than can be counted.
template <class Jobs>
std::optional<std::int64_t> TotalOf(const Jobs& jobs) {
    std::int64_t total = 0;
    for (const auto& job : jobs) {
        if (!job.size) return std::nullopt;
        total = ftp::Plus(total, *job.size);
    }
    return total < ftp::kBeyondCounting ? std::optional(total) : std::nullopt;
}

std::optional<std::int64_t> SizeIn(const QString& line) {
    const std::optional<QString> size = ftp::SizeColumn(line);
    const double bytes = size ? toolkit::Val(*size) : kNoSize;
    return bytes < kNoSize ? std::optional(static_cast<std::int64_t>(bytes)) : std::nullopt;
}

}  // namespace

Form1::Form1(const TransferHost& main) : main_(main), Timer1(new QTimer(this)), queue_(new QueueModel(this)) {
    setupUi(this);
    Timer1->setObjectName(QStringLiteral("Timer1"));
    Timer1->setInterval(kTitleInterval);
    l1->setFont(toolkit::FixedPitchFont());
    l1->setModel(queue_);
    for (QObject* watched : std::initializer_list<QObject*>{l1, l1->viewport(), Command1})
        watched->installEventFilter(this);
    ftp::OperationGate::AllowWhileBusy(this);
    Wire();
}

void Form1::Wire() {
    connect(Command1, &QPushButton::clicked, this, &Form1::Command1_Click);
    connect(Timer1, &QTimer::timeout, this, &Form1::Timer1_Timer);
    connect(queue_, &QueueModel::StateChanged, l1,
            [this](int entry) { l1->update(queue_->index(entry, 0)); });
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
    queue_->SetEntries({}, {});
    AbortRequested_ = true;
    if (main_.watch) main_.watch->Abort();
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
    QStringList names, files;
    for (const Upload& file : main_.uploads) {
        names.append(file.name);
        files.append(ftp::VisibleText(file.path));
        jobs.push_back({file.path, file.name, file.size ? file.size : platform::FileLength(file.path), {}});
    }
    queue_->SetEntries(names, files);
    return jobs;
}

std::vector<Form1::Job> Form1::QueueDownloads() {
    std::vector<Job> jobs;
    QStringList lines, files;
    for (const int row : main_.listDir.SelectedRows()) {
        lines.append(main_.listDir.List(row));
        const QString name = ftp::NameOfListingLine(lines.last());
        files.append(name);
        const auto size = SizeIn(lines.last());
        jobs.push_back({name, platform::Join(main_.Dir1.Path(), name), size, size});
    }
    queue_->SetEntries(lines, files);
    return jobs;
}

// What fails on its way is told of until the run is over.
void Form1::Run(const std::vector<Job>& jobs, std::int16_t& running, void (ftp::Component::*transfer)()) {
    if (jobs.empty()) return;
    const app::WatchedBatch watched(main_.watch, TotalOf(jobs));
    QObject listener;
    connect(&main_.Ftp1, &ftp::Component::Error, &listener,
            [this](std::int32_t number, const QString& text) { Ftp1_Error(number, text); });
    const ftp::TransferRun run(main_.Ftp1);
    Transfer(jobs, running, transfer);
}

void Form1::Transfer(const std::vector<Job>& jobs, std::int16_t& running,
                     void (ftp::Component::*transfer)()) {
    int entry = 0;
    for (const Job& job : jobs) {
        if (AbortRequested_) return;
        ShowCurrent(entry);
        entry_ = entry;
        queue_->SetState(entry, EntryState::Running);
        setAccessibleDescription(queue_->Tally());
        if (main_.watch) main_.watch->BeginFile({}, job.size);
        running = 1;
        main_.avb.setEnabled(true);
        main_.Ftp1.SourceFileName = job.source;
        main_.Ftp1.DestinationFileName = job.destination;
        main_.Ftp1.ExpectedSize = job.expected;
        (main_.Ftp1.*transfer)();
        running = 0;
        main_.avb.setEnabled(false);
        if (main_.watch) main_.watch->EndFile();
        if (queue_->State(entry) == EntryState::Running) queue_->SetState(entry, EntryState::Done);
        entry_.reset();
        ++entry;
    }
}

// A small file may fail when the next ones have begun; the error names it then. Where that name is none of
// the queue's, as where the server shows another name than it takes, it is not the current file's either.
void Form1::Ftp1_Error(std::int32_t number, const QString& text) {
    if (number == kRefused) return;
    const int named = queue_->RowOfError(text);
    const bool of_current = entry_ && !(text.endsWith(u']') && text.contains(QStringLiteral(" [")));
    if (named >= 0 || of_current)
        MarkFailed(named >= 0 ? named : *entry_);
    else if (main_.watch)
        main_.watch->AddTrouble();
}

void Form1::MarkFailed(int entry) {
    if (entry < 0 || entry >= queue_->Count() || queue_->State(entry) == EntryState::Failed) return;
    queue_->SetState(entry, EntryState::Failed);
    if (main_.watch) main_.watch->Fail();
}

void Form1::ShowCurrent(int entry) {
    const QRect before = l1->visualRect(l1->currentIndex());
    const bool follow = entry == 0 || l1->viewport()->rect().intersects(before);
    QScrollBar& bar = *l1->verticalScrollBar();
    const int place = bar.value();
    l1->SetListIndex(entry);
    if (!follow) bar.setValue(place);
}

// The queue scrolls, and takes no clicks: its current entry is the file on its way, which stays in sight when
// the window is made smaller.
bool Form1::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonRelease:
        case QEvent::MouseButtonDblClick:
        case QEvent::MouseMove:
        case QEvent::ContextMenu:
            return watched == l1->viewport();
        case QEvent::Resize:  // when the rows have been laid out anew
            if (watched == l1->viewport())
                QTimer::singleShot(0, l1, [this] { l1->scrollTo(l1->currentIndex()); });
            return false;
        case QEvent::KeyPress:
            if (watched == l1) return true;  // a row that an assistive program chooses
            return watched == Command1 && ScrollByKey(static_cast<QKeyEvent*>(event)->key());
        default:
            return QDialog::eventFilter(watched, event);
    }
}

void Form1::keyPressEvent(QKeyEvent* event) {
    if (!ScrollByKey(event->key())) QDialog::keyPressEvent(event);
}

bool Form1::ScrollByKey(int key) {
    using Slider = QAbstractSlider;
    static constexpr std::pair<Qt::Key, Slider::SliderAction> kKeys[] = {
        {Qt::Key_Up, Slider::SliderSingleStepSub},   {Qt::Key_Down, Slider::SliderSingleStepAdd},
        {Qt::Key_PageUp, Slider::SliderPageStepSub}, {Qt::Key_PageDown, Slider::SliderPageStepAdd},
        {Qt::Key_Home, Slider::SliderToMinimum},     {Qt::Key_End, Slider::SliderToMaximum},
        {Qt::Key_Left, Slider::SliderSingleStepSub}, {Qt::Key_Right, Slider::SliderSingleStepAdd}};
    const auto found = std::ranges::find(kKeys, key, [](const auto& pair) { return int{pair.first}; });
    if (found == std::end(kKeys)) return false;
    const bool sideways = key == Qt::Key_Left || key == Qt::Key_Right;
    (sideways ? l1->horizontalScrollBar() : l1->verticalScrollBar())->triggerAction(found->second);
    return true;
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
