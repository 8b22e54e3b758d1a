// Sending the folder: the question, and the job list carried out line by line.

#include <QCoreApplication>

#include "app/shared/ftpglob.h"
#include "app/shared/window_routines.h"
#include "forms/folderupload/folder_upload_form.h"
#include "ftp/operation_gate.h"
#include "ftp/transfer_pace.h"
#include "ftp/visible_text.h"
#include "toolkit/conversions.h"
#include "toolkit/message_box.h"

namespace forms {
namespace {

using toolkit::Buttons;
using toolkit::Icon;

constexpr qsizetype kShortestFolder = 4;
constexpr double kBarAtTheEnd = 15;       // twips
constexpr std::int32_t kRefused = 10036;  // an operation, while another runs

}  // namespace

// The button's letter presses it a moment later, when a scan may be under way.
void fmRekurs::Command3_Click() {
    if (ftp::OperationGate::IsUp()) return;
    if (Dir2->Path().size() < kShortestFolder) return RefuseDriveRoot();
    if (!UserWantsToSend(Dir2->Path())) return;
    app::ftpglob& globals = app::Globals();
    app::SetHourglass(true);
    setEnabled(false);
    globals.FolderUploadRunning = true;
    globals.FolderUploadTotal = statistics_.Bytes();
    kor_Click();
    if (isVisible()) {
        app::SetHourglass(true);
        Command1_Click();
    }
    globals.FolderUploadRunning = false;
    app::SetHourglass(false);
    setEnabled(true);
}

void fmRekurs::RefuseDriveRoot() {
    toolkit::MsgBox(this,
                    QStringLiteral("Du kan ej skicka upp en hel katalogstruktur\r\nDubbelklicka på en av "
                                   "mapparna i [") +
                        Dir2->Path() + u']',
                    Buttons::Ok, Icon::Information, QStringLiteral("FEL!"));
}

bool fmRekurs::UserWantsToSend(QString folder) {
    return toolkit::MsgBox(this,
                           QStringLiteral("Är du säker på att du vill skicka upp katalogen [") +
                               FolderNameOf(folder) + QStringLiteral("] samt dess innehåll?"),
                           Buttons::YesNo, Icon::Information,
                           QStringLiteral("Bekräfta!")) != toolkit::Answer::No;
}

// A step that fails has said so by the component's event, and the next one follows.
void fmRekurs::Command1_Click() {
    main_.Ftp1.ModeFlagA = true;
    main_.Ftp1.ModeFlagB = true;
    {
        const ftp::OperationGate gate;
        QCoreApplication::processEvents();
    }
    SendFolder();
    if (!main_.window.isVisible()) return;
    RefreshServerPanel();
    if (isVisible())
        toolkit::MsgBox(this, QStringLiteral("Överföringen av mapparna är nu klar!"), Buttons::Ok,
                        Icon::None);
    main_.antal.setText(QStringLiteral("0 %"));
    main_.p2.SetWidth(kBarAtTheEnd);
    close();
}

// The watch hears of what fails until the run is over.
void fmRekurs::SendFolder() {
    sending_ = true;
    const app::WatchedBatch watched(main_.watch, BytesToSend());
    QObject listener;
    if (main_.watch)
        connect(&main_.Ftp1, &ftp::Component::Error, &listener, [this](std::int32_t number) {
            if (number != kRefused && !main_.Ftp1.NotMade()) main_.watch->AddTrouble();
        });
    {
        const ftp::TransferRun run(main_.Ftp1);
        int depth = 0;
        for (int row = 0; row < jobs_.Count() && isVisible(); ++row) depth += Perform(row);
        for (; depth > 0; --depth) main_.Ftp1.ChangeToParent();
    }
    if (main_.watch && !isVisible()) main_.watch->Abort();
    sending_ = false;
}

// A file that cannot be read counts for nothing.
std::int64_t fmRekurs::BytesToSend() const {
    std::int64_t bytes = 0;
    app::LongWork work;
    for (int row = 0; row < jobs_.Count() && isVisible(); ++row) {
        if (!jobs_.Line(row).startsWith(kFileLine)) continue;
        bytes = ftp::Plus(bytes, platform::FileLength(jobs_.SourceOf(row)).value_or(0));
        work.Yield();
    }
    return bytes;
}

int fmRekurs::Perform(int row) {
    const QString line = jobs_.Line(row);
    if (line == kUpLine && row > 0) {
        main_.Ftp1.ChangeToParent();
        return -1;
    }
    if (line.startsWith(kFolderLine)) {
        main_.Ftp1.DirectoryName = line.mid(kFolderLine.size());
        main_.Ftp1.MakeDirectory();
        main_.Ftp1.ChangeDirectory();
        return 1;
    }
    if (line.startsWith(kFileLine)) SendFile(row);
    return 0;
}

// Where names differ only by case, the line's own path would not say which file is meant.
void fmRekurs::SendFile(int row) {
    const QString line = jobs_.Line(row);
    const QString source = jobs_.SourceOf(row);
    main_.Ftp1.SourceFileName = source;
    main_.Ftp1.DestinationFileName = line.mid(line.lastIndexOf(u'\\') + 1).toLower();
    if (main_.watch)
        main_.watch->BeginFile(ftp::VisibleText(main_.Ftp1.DestinationFileName),
                               platform::FileLength(source));
    main_.Ftp1.PutFile();
    if (main_.watch) main_.watch->EndFile();
    const double sent = toolkit::Val(main_.label7.property("tag").toString());
    if (const auto length = platform::FileLength(source))
        main_.label7.setProperty("tag", toolkit::Str(sent + static_cast<double>(*length)));
}

void fmRekurs::RefreshServerPanel() {
    app::Globals().ServerListBusy = true;
    for (QPushButton* button : {&main_.Command1, &main_.Command2}) button->setEnabled(false);
    main_.Ftp1.ModeFlagA = true;
    main_.Ftp1.ModeFlagB = true;
    app::SetHourglass(true);
    main_.ClearServerLists();
    main_.Ftp1.ListDirectory();
    for (QPushButton* button : {&main_.Command10, &main_.Command11, &main_.Command12, &main_.Command13})
        button->setEnabled(false);
    main_.BuildServerList();
    app::SetHourglass(false);
    app::Globals().ServerListBusy = false;
}

}  // namespace forms
