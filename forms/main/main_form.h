#pragma once
// The main window: server panel, local panel, transfers, protocol trace and toolbar. UI thread only.
//
// One class in several files, one per region of the window; wiring.cpp holds every connection. A handler
// carries the name of its control and of the event. The controls are those of main_form.ui, by region:
//
//   Toolbar, in Picture2
//     cmdConnection "Ny förbindelse..."     Command16 "Stäng förbindelse"
//     cmdDirectory "Directory", cmdFileTransfers "File Transfers"   kept, without effect
//     Command17 "Hjälp om FTP"   Command18 "Om Websmide's FTP..."   Command19 "Visa/Dölj 1-2-3 hjälp"
//   Local panel, in Frame1 "Din dator"
//     lokal1 picture   Drive1 drives   Text1 file patterns   lk remembered folders   Command22 "Ändra" (menu
//     tabd with tabort2, tabort3)   Command29 favourite folders   Dir1 folders   list2 and hidden List1 the
//     files, two views of one model   File1 hidden source of the files   Label2 state of the filter Command7
//     "&Uppdatera"  Command3 "&Skapa katalog"  Command5 "&Kör"  Command4 "&Visa"  Command6 "&Döp om" Command8
//     "&Ta bort"    fleratabort2 "&Ta bort" in its place while several files are marked
//   Server panel, in Frame2 "Server"
//     server1 picture   listdir2 and hidden listDir the raw listing lines, two views of one model
//     Command9 "&Uppdatera"  Command21 "&cd.."  Command14 "&Skapa katalog"  Command11 "&Kör"  Command12
//     "&Visa" Command10 "&Döp om"    Command13 "&Ta bort"   fleratabort hidden, with its work list l1
//   Transfers, in Picture1
//     Command1 "&Ladda upp fil(er)"  Command2 "&Ta hem fil(er)"  Command23 "Ladda upp &mapp..."
//   Progress strip, in Picture3
//     Label1 "Överfört:"  label7 bytes  p1 empty bar  p2 filled bar  antal, antal2 the percentage  avb
//     "&Avbryt"
//   Trace, in Picture4
//     Label5 "State:" imgLock lblState   Label4 "Last Error:" lblLastError   Label3 "Last Action:"
//     lblLastAction listTrace

#include <QMenu>
#include <QPointer>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

#include "app/shared/transfer_watch.h"
#include "forms/main/local_files_model.h"
#include "forms/main/server_lines_model.h"
#include "ftp/component.h"
#include "ftp/progress_arithmetic.h"
#include "platform/file_result.h"
#include "settings/settings_store.h"
#include "ui_main_form.h"

class QShortcutEvent;

namespace forms {

class favviskat;
class fmRekurs;
class Form1;
class Form2;
class Form3;
class Form4;
class frmConnection;
class TextViewer;
struct Upload;

class MainForm : public QWidget, private Ui::MainForm {
    Q_OBJECT
 public:
    /// `store` must outlive the window.
    explicit MainForm(settings::Store& store, ftp::Deadlines deadlines = {});
    ~MainForm() override;

    /// Shows the three steps when the window has been painted, unless the user has had the program open
    /// before.
    void GreetNewUser();
    /// Stores `code` into the component's action property. The number of the error, which has been shown in a
    /// message box, or 0.
    std::int16_t ExecuteCommand(std::int16_t code);
    /// Shows a child window in the place of the current one; the button of the shown one is bold.
    void LoadForm(QWidget& form, QPushButton& button);
    /// Opens the document with the program that the desktop associates with it; the shell's result: above 32
    /// when it was started, else the trace says why not.
    std::int32_t StartDoc(const QString& path);
    /// Whether the file's time is later, or earlier, than the filter's. The days come from the dates, hour
    /// and minute from the variants.
    bool kolladata1(const QDateTime& file_date, const QDateTime& filter_date, const QDateTime& file_variant,
                    const QDateTime& filter_variant) const;
    bool kolladata2(const QDateTime& file_date, const QDateTime& filter_date, const QDateTime& file_variant,
                    const QDateTime& filter_variant) const;

    /// The path of a local row: the very file that the row was made from.
    QString LocalPathOfRow(int row) const;
    /// Appends lines to listTrace.
    void Trace(const QString& text);

    // Server lists (listing.cpp).
    void ClearServerLists();
    void BuildServerList();
    QString SelectedServerName() const;

    // Handlers that other forms call too.
    void Command9_Click();  // reads the server listing again
    void Command7_Click();  // reads the local files again
    void Dir1_Change();     // rebuilds the local list

 protected:
    void closeEvent(QCloseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

 private:
    // window.cpp
    void MDIForm_Load();
    void MDIForm_QueryUnload();
    void UnloadSecondaryWindows();
    void ShowText(const QString& path);
    int TellShellResult(int result, const QString& path);  // the same result
    bool HasBeenOpenBefore() const;
    void RestorePlace();
    void SavePlace();
    // wiring.cpp
    void Wire();
    void WireComponent();
    void WireServerPanel();
    void WireLocalPanel();
    // layout.cpp
    void PrepareLayout();
    void MDIForm_Resize();
    void FitFileColumns();
    void PlacePercentages();
    void KeepFocusIn(QWidget& list, const QWidget* focused);
    bool PressByLetter(QAbstractButton* button);
    // menus.cpp
    void PrepareMenus();
    void ShowLocalMenu(QPoint place);
    void ShowFolderMenu(QPoint place);
    void ShowServerMenu(QPoint place);
    void ShowTraceMenu(QPoint place);
    void OpenParentFolder();
    void SaveTrace();
    bool HandleListKey(const QObject* list, const QKeyEvent& event);
    bool HandleLocalKey(int key);
    bool HandleServerKey(int key);
    // drops.cpp
    void PrepareDrops();
    bool MayDrop(const QObject* target, const QDropEvent& event) const;
    bool HandleDrag(const QObject* target, QDropEvent& event);
    void TakeDrop(const QDropEvent& event);
    void ActOnDrop();
    void SendDropped(const QList<QUrl>& urls);
    // toolbar.cpp
    void cmdConnection_Click();
    void cmdDirectory_Click();
    void Command16_Click();
    void Command17_Click();
    void Command18_Click();
    void Command19_Click();
    Form4& HelpPanel();
    // encryption.cpp
    void PrepareEncryption();
    void ShowLock(bool connected);
    QWidget& FrontWindow();
    // trace.cpp
    void Ftp1_Debug(const QString& line);
    void Ftp1_Error(std::int32_t number, const QString& text);
    void Ftp1_CommandSent(const QString& line);
    void Ftp1_ConnectedChanged(bool connected);
    // listing.cpp
    void Ftp1_DirItem(const QString& line);
    // server_panel.cpp
    void Command21_Click();
    void listDir_Click();
    void listDir_DblClick();
    void listDir_LostFocus();
    void listdir2_Click();
    void listdir2_DblClick();
    void listdir2_ItemClick(int row);
    void listdir2_LostFocus();
    // server_files.cpp
    void Command10_Click();
    void Command11_Click();
    void Command12_Click();
    void Command13_Click();
    void Command14_Click();
    void fleratabort_Click();
    void RefuseToRenameSeveral();
    void DeleteServerFile(const QString& name);
    void TellUnusable(const QString& name);
    bool UserWantsToDeleteMarked();
    std::optional<QString> FetchIntoTemporaryFolder();  // the copy of the selected server file
    // transfers.cpp
    void PrepareWatch();
    void ComeToFront(const QString& activation_token);
    void Command1_Click();
    void Send(const std::vector<Upload>& uploads, const QString& folder);
    void SendOne(const Upload& file);
    void Watched(const QString& name, std::optional<std::int64_t> size, void (ftp::Component::*transfer)());
    void Command2_Click();
    void Fetch(const QString& file, const QString& local_path);
    void Command23_Click();
    void avb_Click();
    void Ftp1_Progress(std::int64_t bytes);
    void HoldServerPanel();
    void ReleaseServerPanel();
    void ResetStrip();
    void RememberFolder(const QString& folder);
    void ShowTransferWindow(const std::vector<Upload>& uploads);
    std::optional<QString> SizeOfUpload() const;
    std::optional<QString> SizeOfDownload() const;
    void ShowProgress(const ftp::StripChange& change);
    // local_panel.cpp
    void Drive1_Change();
    void list2_Click();
    void List1_Click();
    void List1_KeyUp();
    void ShowDeleteButton(bool of_several);
    void Text1_Click();
    void Text1_KeyPress(int key_ascii);
    // local_files.cpp
    void Command3_Click();
    void Command4_Click();
    void Command5_Click();
    void Command6_Click();
    void Command8_Click();
    void fleratabort2_Click();
    int LocalRow() const;
    int SingleLocalRow() const;
    void Tell(platform::FileResult result, const QString& path);
    // local_dialogs.cpp
    void AddToFavourites(const QString& folder);
    void Command29_Click();
    void OpenFavourites(QWidget& window, toolkit::DriveListBox& drive, toolkit::DirListBox& folders,
                        const QString& tag);
    void Label2_Click();
    void Label2_Change();
    void SetFilterCaption(const QString& caption);
    // remembered_folders.cpp
    void lk_Click();
    void lk_KeyPress(int key_ascii);
    void Command22_Click();
    void tabort2_Click();
    void tabort3_Click();
    void SelectFirstRemembered();

    settings::Store& store_;
    ftp::Component* const Ftp1;
    ServerLinesModel* const server_lines_;
    LocalFilesModel* const local_files_;
    app::TransferWatch watch_;
    QMenu* const tabd;
    bool works_on_server_ = false;   // which panel last had the focus
    QPointer<QWidget> focus_after_;  // the focus when the server panel is released
    int failures_ = 0;               // error events of the component so far
    std::function<void()> dropped_;  // what to do when the drag is over
    // Each the last one that was opened; there may have been none.
    std::unique_ptr<frmConnection> connection_;
    std::unique_ptr<Form1> transfer_;
    std::unique_ptr<Form2> about_;
    std::unique_ptr<Form3> filter_;
    std::unique_ptr<Form4> help_panel_;
    std::unique_ptr<fmRekurs> folder_upload_;
    std::unique_ptr<favviskat> favourites_;  // over the window, or over the folder upload
    std::unique_ptr<TextViewer> viewer_;
    QPointer<QWidget> current_child_;
    QPointer<QPushButton> current_button_;
};

}  // namespace forms
