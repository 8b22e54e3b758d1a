#pragma once
// What a selection in the server list means, and which buttons it enables. Pure rules.

#include <QString>

namespace forms {

/// One of both is empty: a link counts as a directory, and everything else, an empty line too, is a file.
struct ServerRow {
    QString file;
    QString dir;
};
ServerRow ClassifyServerRow(const QString& line, const QString& name);

enum class Change { Leave, Enable, Disable };

/// What a click does to the buttons "&Ta hem fil(er)" (2), "&Döp om" (10), "&Kör" (11), "&Visa" (12) and
/// "&Ta bort" (13).
struct ServerButtons {
    Change Command2 = Change::Leave;
    Change Command10 = Change::Leave;
    Change Command11 = Change::Leave;
    Change Command12 = Change::Leave;
    Change Command13 = Change::Leave;
    bool operator==(const ServerButtons&) const = default;
};
/// `selected` is the number of selected rows, `row` the last clicked one; `busy` while a listing is being
/// read.
ServerButtons ButtonsForSelection(const ServerRow& row, int selected, bool busy);

}  // namespace forms
