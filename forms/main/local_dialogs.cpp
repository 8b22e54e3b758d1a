// The dialogs that change what the local panel shows: the filter and the favourite folders.

#include "forms/favourites/favourites_form.h"
#include "forms/filter/filter_form.h"
#include "forms/main/main_form.h"
#include "settings/favourites.h"
#include "toolkit/message_box.h"

namespace forms {

void MainForm::Label2_Click() {
    filter_ = std::make_unique<Form3>(
        FilterHost{*this, [this](const QString& caption) { SetFilterCaption(caption); }});
    filter_->Form_Load();
}

void MainForm::SetFilterCaption(const QString& caption) {
    if (caption == Label2->text()) return;
    Label2->setText(caption);
    Label2_Change();
}

void MainForm::Label2_Change() {
    Dir1_Change();
}

void MainForm::Command29_Click() {
    OpenFavourites(*this, *Drive1, *Dir1, QStringLiteral("frmmdi"));
}

void MainForm::OpenFavourites(QWidget& window, toolkit::DriveListBox& drive, toolkit::DirListBox& folders,
                              const QString& tag) {
    favourites_ = std::make_unique<favviskat>(FavouritesHost{window, store_, drive, folders});
    favourites_->setProperty("tag", tag);
    favourites_->Form_Load();
}

void MainForm::AddToFavourites(const QString& folder) {
    const QString last = folder.mid(folder.lastIndexOf(u'\\') + 1);
    const QString name =
        toolkit::InputBox(this, QStringLiteral("Namn på favoriten ") + folder,
                          QStringLiteral("Lägg till i favoriter"), last.isEmpty() ? folder : last);
    if (!name.isEmpty()) settings::AppendFavourite(store_, name, folder);
}

}  // namespace forms
