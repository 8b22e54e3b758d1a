#pragma once
// The folder upload: choosing a folder, counting what is in it, and sending it with all its files. UI thread
// only.

#include <QIcon>
#include <QLabel>
#include <QPushButton>
#include <functional>
#include <vector>

#include "app/shared/long_work.h"
#include "app/shared/owned_dialog.h"
#include "app/shared/transfer_watch.h"
#include "forms/folderupload/folder_rules.h"
#include "forms/folderupload/job_list.h"
#include "ftp/component.h"
#include "platform/folder.h"
#include "toolkit/file_controls.h"
#include "toolkit/picture_bar.h"
#include "ui_folder_upload_form.h"

namespace forms {

/// What the dialog uses of the main window, under the names that it has there. All of it outlives the dialog.
struct FolderUploadHost {
    QWidget& window;  // closed only when the program ends
    ftp::Component& Ftp1;
    QPushButton &Command1, &Command2;  // the transfers
    QPushButton &Command10, &Command11, &Command12, &Command13;
    QLabel& label7;
    QLabel& antal;
    toolkit::PictureBox& p2;
    QIcon favourites_picture;
    std::function<void()> ClearServerLists;
    std::function<void()> BuildServerList;
    std::function<void(const QString& line)> Trace;
    std::function<bool(QWidget& parent)> UserWantsToAbort;
    /// Opens the favourite folders over `window`; the chosen one goes into the two lists.
    std::function<void(QWidget& window, toolkit::DriveListBox& Drive1, toolkit::DirListBox& Dir2)>
        OpenFavourites;
    app::TransferWatch* watch = nullptr;
};

/// A folder is opened in `Dir2` to choose it. A scan walks it and makes the job list, one line a step; the
/// run carries the lines out against the server. Both are over when the handler returns, and let events
/// through meanwhile. Closing the dialog stops a scan where it is; a run ends with the files that are under
/// way, and the server comes back to the directory where it began. After the component's shutdown no list
/// and no strip of the main window is changed any more.
class fmRekurs : public app::OwnedDialog, private Ui::fmRekurs {
    Q_OBJECT
 public:
    explicit fmRekurs(const FolderUploadHost& main);

    /// Opens the dialog at the root of the program's own drive, with no folder chosen. Returns at once.
    void Form_Load();

 protected:
    void done(int result) override;
    void closeEvent(QCloseEvent* event) override;

 private:
    // folder_upload_form.cpp
    void Wire();
    void Drive1_Change();
    void Dir2_Change();
    void Check1_Click();
    void c2_Click();
    void Combo1_Click();
    void Combo1_KeyUp();
    void Command2_Click();
    void Command29_Click();
    bool IsFolderChosen() const;
    void ShowStatistics();
    void ResetStatistics();
    // folder_scan.cpp
    void kor_Click();
    void StartScan();
    void Dir1_Change();
    bool Enter(const QString& folder);  // walks it; false where it cannot be read
    void AddFolderLines(QString folder);
    bool AddFiles();  // false where the folder cannot be read
    void WalkSubfolders(const QString& folder);
    QStringList SubfoldersOf(const QString& folder) const;
    bool LeadsBack(const QString& folder, const platform::FolderIdentity& identity);
    bool Yield();  // false when the walk is to end
    void EndWalk(const QString& unreadable);
    void TellOfTheScan();
    QStringList WordsOfTheScan() const;
    // folder_run.cpp
    void Command3_Click();
    void Command1_Click();
    void RefuseDriveRoot();
    bool UserWantsToSend(QString folder);
    int Perform(int row);  // what it adds to the depth on the server
    void SendFolder();
    void SendFile(int row);
    std::int64_t BytesToSend() const;  // nothing where a file cannot be read
    void RefreshServerPanel();

    const FolderUploadHost main_;
    QString ChosenFolder_;         // with a separator at its end; a drive's root is none
    QString PreviousFolder_;       // that the scan has visited last
    QString FolderPathWithSlash_;  // that it is in
    QString FileMask_;
    int StopScan_ = 1;  // 1: no further subfolder is walked
    FolderStatistics statistics_;
    JobList jobs_;
    app::LongWork* scan_ = nullptr;                 // while one runs
    QString entering_;                              // the folder that Dir1 is being set to
    std::vector<platform::FolderIdentity> inside_;  // the folders from the chosen one down
    int hidden_files_ = 0, hidden_folders_ = 0;     // the files are left out
    QStringList told_;                              // of the last scan
    bool sending_ = false;
};

}  // namespace forms
