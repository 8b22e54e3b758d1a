#pragma once
// The transfer progress window: sends or fetches a batch of files, one after the other. UI thread only.

#include <QDialog>
#include <QLabel>
#include <QPushButton>
#include <QTimer>
#include <optional>
#include <vector>

#include "app/shared/transfer_watch.h"
#include "forms/transfer/queue_model.h"
#include "ftp/component.h"
#include "toolkit/file_controls.h"
#include "toolkit/lists.h"
#include "toolkit/picture_bar.h"
#include "ui_transfer_form.h"

namespace forms {

/// A file that goes up, and its name on the server.
struct Upload {
    QString path;
    QString name;
    std::optional<std::int64_t> size = {};  // bytes, where the list tells
};

/// What the window uses of the main window, under the names that it has there. All of it outlives the window.
struct TransferHost {
    QWidget& window;
    ftp::Component& Ftp1;
    toolkit::ListBox& listDir;
    toolkit::ListView& listdir2;
    toolkit::DirListBox& Dir1;
    QPushButton& avb;
    QLabel& antal;
    QLabel& label7;
    toolkit::PictureBox& p2;
    std::vector<Upload> uploads;  // what goes up, in this order: the selected rows of List1, or dropped files
    app::TransferWatch* watch = nullptr;
};

/// One batch: the uploads go up where UploadRunning is 1, the selected rows of listDir come down where
/// DownloadRunning is. The user's closing it asks to abort; closing it from the program ends the batch with
/// the file that is running.
///
/// The queue shows how each file stands. The row of the file on its way is the current one, whatever the user
/// does; the queue scrolls with it, unless the user has scrolled it out of sight.
class Form1 : public QDialog, private Ui::Form1 {
    Q_OBJECT
 public:
    explicit Form1(const TransferHost& main);

    /// Opens the window and runs the whole batch: returns when that is over and the window is closed.
    void Form_Load();

    /// The entry of the queue that is on its way.
    QString CurrentEntry() const { return l1->Text(); }

    void reject() override;

 protected:
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

 private:
    struct Job {
        QString source;
        QString destination;
        std::optional<std::int64_t> size;      // bytes, where they are known
        std::optional<std::int64_t> expected;  // where the listing tells
    };

    void Wire();
    void Form_QueryUnload();
    void Command1_Click();
    void Timer1_Timer();
    void Ftp1_Error(std::int32_t number, const QString& text);
    void skicka();
    std::vector<Job> QueueUploads();
    std::vector<Job> QueueDownloads();
    void Run(const std::vector<Job>& jobs, std::int16_t& running, void (ftp::Component::*transfer)());
    /// One transfer after the other; `running` is 1 during each of them. Small files may still be on their
    /// way when the next one begins.
    void Transfer(const std::vector<Job>& jobs, std::int16_t& running, void (ftp::Component::*transfer)());
    void ShowCurrent(int entry);
    void MarkFailed(int entry);
    bool ScrollByKey(int key);

    const TransferHost main_;
    QTimer* const Timer1;
    QueueModel* const queue_;
    std::optional<int> entry_;  // whose transfer is being called
    bool AbortRequested_ = false;
};

/// What both abort buttons ask before they abort.
bool UserWantsToAbort(QWidget& parent);

/// Twips: an aborted transfer leaves the bar just visible.
inline constexpr double kAbortedBarWidth = 15;

/// The title bar: bytes so far, the total and the percentage.
QString TransferCaption(const QString& bytes, const QString& size, const QString& percent);

}  // namespace forms
