#include "forms/main/selection_rules.h"

#include "ftp/listing_rows.h"

namespace forms {

ServerRow ClassifyServerRow(const QString& line, const QString& name) {
    return ftp::IsDirectoryOrLink(line) ? ServerRow{{}, name} : ServerRow{name, {}};
}

// Later rules override earlier ones.
ServerButtons ButtonsForSelection(const ServerRow& row, int selected, bool busy) {
    const bool file = !row.file.isEmpty();
    const bool dir = !row.dir.isEmpty();
    ServerButtons buttons;
    buttons.Command2 = file ? Change::Enable : Change::Disable;
    if (selected == 1 && file)
        buttons.Command10 = buttons.Command11 = buttons.Command12 = buttons.Command13 = Change::Enable;
    if (selected >= 2 || dir) {
        buttons.Command10 = buttons.Command11 = buttons.Command12 = Change::Disable;
        buttons.Command13 = selected >= 2 && dir ? Change::Disable : Change::Enable;
    }
    if (!busy && !dir) buttons.Command2 = Change::Enable;
    return buttons;
}

}  // namespace forms
