#pragma once
// The state that the forms share for the life of the process; none of it is persisted. UI thread only.

#include <QDateTime>
#include <QString>
#include <cstdint>

namespace app {

struct ftpglob {
    bool SessionOpen = false;          // from the end of a connect until disconnect
    bool ServerListBusy = false;       // while a server listing is being read
    QString ServerSelectionText;       // remembered server selection, emptied with the server lists
    QString SelectedServerFile;        // name of the file row last clicked; empty for a directory row
    QString SelectedServerDir;         // name of the directory or link row last clicked; empty for a file row
    std::int16_t UploadRunning = 0;    // 1 while a file goes up
    std::int16_t DownloadRunning = 0;  // 1 while a file comes down
    bool FolderUploadRunning = false;
    std::int64_t FolderUploadTotal = 0;  // bytes
    QString FileSizeText;                // bytes of the current transfer, as text
    std::int16_t FilterMode = 0;         // 0..8, 0 = no filter
    std::int64_t FilterSizeBytes = 0;
    QDateTime FilterTime;     // date of the filter
    QString FilterTimeValue;  // its time of day, "12:30:00"
    std::int64_t SelectionKilobytes = 0;
    std::int16_t ScanCounter = 0;
};

/// The one instance.
ftpglob& Globals();

}  // namespace app
