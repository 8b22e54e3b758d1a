#pragma once
// The favourite folders: choosing one, and keeping the list of them. UI thread only.

#include "app/shared/owned_dialog.h"
#include "settings/favourites.h"
#include "toolkit/file_controls.h"
#include "ui_favourites_form.h"

namespace forms {

/// What the dialog uses of the window that opens it. All of it outlives the dialog.
struct FavouritesHost {
    QWidget& window;
    settings::Store& store;
    toolkit::DriveListBox& Drive1;  // gets the drive of the chosen folder ...
    toolkit::DirListBox& Dir;       // ... and then the folder itself
};

/// The list is saved when a folder is chosen, and not otherwise: whoever closes the dialog takes back what
/// has been removed and moved.
class favviskat : public app::OwnedDialog, private Ui::favviskat {
    Q_OBJECT
 public:
    explicit favviskat(const FavouritesHost& host);

    /// Opens the dialog with the list as stored, the first entry selected. Returns at once.
    void Form_Load();

 private:
    void Wire();
    void List1_Click();
    void Command1_Click();
    void Command2_Click();
    void Command4_Click();
    void Command5_Click();
    void Command6_Click();

    int SelectedRow() const;  // -1 without one
    void Select(int row);
    void ExchangeSelected(int with);
    void ShowCount(int count);

    const FavouritesHost host_;
};

}  // namespace forms
