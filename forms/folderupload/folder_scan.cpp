// The walk through the folder tree, which makes the job list and counts.

#include <QCoreApplication>
#include <algorithm>
#include <utility>

#include "app/shared/ftpglob.h"
#include "app/shared/window_routines.h"
#include "forms/folderupload/folder_upload_form.h"
#include "platform/drive_path.h"

namespace forms {
namespace {

constexpr int kFilesBetweenYields = 100;
constexpr std::size_t kOverwritesTold = 20;

QString LastName(const QString& path) {
    return path.mid(path.lastIndexOf(u'\\') + 1);
}

/// From the drive's root down to the folder's parent.
std::vector<platform::FolderIdentity> IdentitiesAbove(const QString& folder) {
    std::vector<platform::FolderIdentity> identities;
    for (qsizetype end = 0; (end = folder.indexOf(u'\\', end + 1)) >= 0;)
        identities.push_back(platform::IdentityOf(folder.left(std::max(end, kLengthOfRoot)))
                                 .value_or(platform::FolderIdentity()));
    return identities;
}

QString Count(int number) {
    return QString::number(number) + QStringLiteral(" st");
}

}  // namespace

// What comes by a timer while a scan runs finds it running.
void fmRekurs::kor_Click() {
    if (scan_) return;
    app::SetHourglass(true);
    ResetStatistics();
    app::Globals().ScanCounter = 0;
    Dir2->setProperty("tag", QString());
    PreviousFolder_ = Dir2->Path();
    StartScan();
    app::SetHourglass(false);
}

// The list box sees the lines when they are all there. Closing the dialog ends the walk wherever events are
// let through.
void fmRekurs::StartScan() {
    app::LongWork work;
    scan_ = &work;
    jobs_.Lines().Hold();
    jobs_.Clear();
    hidden_files_ = hidden_folders_ = 0;
    StopScan_ = 0;
    QCoreApplication::processEvents();
    const QString root = ChosenFolder_.size() == kLengthOfRoot ? ChosenFolder_ : ChosenFolder_.chopped(1);
    inside_ = IdentitiesAbove(root);
    if (StopScan_ == 0 && !Enter(root)) EndWalk(root);
    StopScan_ = 1;
    jobs_.Lines().Publish();
    ShowStatistics();
    scan_ = nullptr;
    if (isVisible()) TellOfTheScan();
}

// Where Dir1 is there already, no event comes.
bool fmRekurs::Enter(const QString& folder) {
    const auto identity = platform::IdentityOf(folder).value_or(platform::FolderIdentity());
    if (LeadsBack(folder, identity)) return true;
    inside_.push_back(identity);
    entering_ = folder;
    const bool readable = Dir1->SetPath(folder);
    if (readable && !entering_.isEmpty()) Dir1_Change();
    inside_.pop_back();
    return readable;
}

// One step of the walk, nested in the step of the folder above. The path is the one that the folder was found
// by: a volume in the middle of the tree has a letter of its own in the list.
void fmRekurs::Dir1_Change() {
    if (!scan_) return;
    const QString folder = std::exchange(entering_, QString());
    AddFolderLines(folder);
    FolderPathWithSlash_ = folder.size() > kLengthOfRoot ? folder + u'\\' : folder;
    if (AddFiles()) {
        if (!Check1->isChecked()) StopScan_ = 1;
        WalkSubfolders(folder);
    } else {
        EndWalk(folder);
    }
}

void fmRekurs::AddFolderLines(QString folder) {
    jobs_.AddUp(ClimbLines(PreviousFolder_, folder));
    PreviousFolder_ = folder;
    QString name = FolderNameOf(folder);
    if (!name.isEmpty()) {
        jobs_.AddFolder(name);
        if (c2->isChecked()) statistics_.CountFolder();
        name += u'\\';
    }
    Dir1->setProperty("tag", name);
}

bool fmRekurs::AddFiles() {
    const auto entries = platform::ReadFolder(FolderPathWithSlash_);
    if (!entries) return false;
    int count = 0;
    for (const platform::FolderEntry& file : *entries) {
        if (!file.plain || !platform::MatchesPattern(file.name, FileMask_)) continue;
        if (file.name.startsWith(u'.')) {
            ++hidden_files_;
            continue;
        }
        jobs_.AddFile(FolderPathWithSlash_, file.name);
        if (c2->isChecked() && !statistics_.CountFile(file.size)) return false;
        if (++count % kFilesBetweenYields == 0 && !Yield()) break;
    }
    return true;
}

// Dir1 moves on during the walk, so what it lists is read first. The line of a folder that cannot be read is
// the one that EndWalk takes away.
void fmRekurs::WalkSubfolders(const QString& folder) {
    for (const QString& subfolder : SubfoldersOf(folder)) {
        if (!Yield()) return;
        if (LastName(subfolder).startsWith(u'.')) ++hidden_folders_;
        if (Enter(subfolder)) continue;
        AddFolderLines(subfolder);
        return EndWalk(subfolder);
    }
}

QStringList fmRekurs::SubfoldersOf(const QString& folder) const {
    QStringList subfolders;
    for (int row = Dir1->ListIndex() + 1; row < Dir1->ListCount(); ++row)
        subfolders.append(platform::Join(folder, LastName(Dir1->List(row))));
    return subfolders;
}

// A link to a folder that the walk is in would be walked for ever, and one to a folder above the chosen one
// would send what was not chosen.
bool fmRekurs::LeadsBack(const QString& folder, const platform::FolderIdentity& identity) {
    if (std::ranges::find(inside_, identity) == inside_.end()) return false;
    main_.Trace(QStringLiteral("Länken leder tillbaka och togs inte med: ") + folder);
    return true;
}

bool fmRekurs::Yield() {
    ShowStatistics();
    scan_->Yield();
    return StopScan_ == 0;
}

void fmRekurs::EndWalk(const QString& unreadable) {
    app::SetHourglass(false);
    jobs_.RemoveLast();
    StopScan_ = 1;
    entering_.clear();
    main_.Trace(QStringLiteral("Mappen kan inte läsas, resten togs inte med: ") + unreadable);
}

// The same tree is scanned again and again: with each box that is ticked, and before it is sent.
void fmRekurs::TellOfTheScan() {
    QStringList words = WordsOfTheScan();
    if (words == told_) return;
    for (const QString& line : words) main_.Trace(line);
    told_ = std::move(words);
}

QStringList fmRekurs::WordsOfTheScan() const {
    QStringList words;
    if (hidden_files_ > 0) words.append(QStringLiteral("Dolda filer togs inte med: ") + Count(hidden_files_));
    if (hidden_folders_ > 0) words.append(QStringLiteral("Dolda mappar togs med: ") + Count(hidden_folders_));
    const auto& overwrites = jobs_.Overwrites();
    const std::size_t told = std::min(overwrites.size(), kOverwritesTold);
    for (std::size_t i = 0; i < told; ++i)
        words.append(jobs_.SourceOf(overwrites[i].earlier) + QStringLiteral(" skrivs över på servern av ") +
                     jobs_.SourceOf(overwrites[i].later));
    if (told < overwrites.size())
        words.append(QStringLiteral("Ytterligare filer som skrivs över på servern: ") +
                     Count(static_cast<int>(overwrites.size() - told)));
    return words;
}

}  // namespace forms
