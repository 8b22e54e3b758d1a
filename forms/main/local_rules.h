#pragma once
// The rules of the local file list: its filter, and the selection's size and time. Pure functions.

#include <QDateTime>
#include <QString>
#include <cstdint>

namespace forms {

/// Whether the file's time is later (earlier) than the filter's, to the minute: seconds are never compared.
bool IsLater(QDate file_date, QDate filter_date, QTime file_time, QTime filter_time);
bool IsEarlier(QDate file_date, QDate filter_date, QTime file_time, QTime filter_time);

/// How a file stands to the filter; `larger` and `smaller` are strict, so a file may be neither.
struct FileStanding {
    bool larger, smaller, later, earlier;
};
/// Whether filter mode 0..8 lists the file.
bool FilterLists(int mode, const FileStanding& file);

/// A file's bytes in KB, a half upwards.
std::int64_t Kilobytes(std::int64_t bytes);

/// The window title that tells the selection's size, and its time over a modem of 28.8 kbit/s (3.2 KB a
/// second).
QString SelectionTitle(std::int64_t kilobytes);

}  // namespace forms
