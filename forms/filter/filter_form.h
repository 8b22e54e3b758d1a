#pragma once
// The dialog that sets the filter of the local file list. UI thread only.

#include <functional>

#include "app/shared/owned_dialog.h"
#include "forms/filter/filter_rules.h"
#include "ui_filter_form.h"

namespace forms {

/// What the dialog uses of the main window. All of it outlives the dialog.
struct FilterHost {
    QWidget& window;
    std::function<void(const QString& caption)>
        SetFilterCaption;  // of Label2; an unchanged one changes nothing
};

/// Shows the filter in force, and sets another one. A day that the calendar does not have and a size beyond
/// 32 bits surface as the program's unhandled error: the dialog stays open with what has been chosen, the
/// caption stays, and so does what was stored before the step that failed.
class Form3 : public app::OwnedDialog, private Ui::Form3 {
    Q_OBJECT
 public:
    explicit Form3(const FilterHost& main);

    /// Opens the dialog. Returns at once.
    void Form_Load();

 private:
    void Wire();
    void Command1_Click();
    void Command2_Click();

    void FillLists();
    void SelectDefaults();
    void RestoreFilter();
    void StoreFilter();
    void StoreTime();
    void StoreSize();
    FilterRelations Relations() const;  // those that are ticked

    const FilterHost main_;
};

}  // namespace forms
