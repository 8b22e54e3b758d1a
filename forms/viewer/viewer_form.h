#pragma once
// A window that shows a text file and changes nothing. UI thread only.

#include <QDialog>

#include "ui_viewer_form.h"

namespace forms {

/// Shows one file at a time; the next one takes its place. Not modal: the main window can be used meanwhile,
/// and so can this one while an operation of the FTP component runs. Ctrl+F looks for a text, Escape closes.
class TextViewer : public QDialog, private Ui::TextViewer {
    Q_OBJECT
 public:
    /// Stays above `window`, which outlives it.
    explicit TextViewer(QWidget& window);

    /// Reads the file (drive-letter notation) and opens the window. Of a large file only the beginning is
    /// shown, and a line says so; a file that cannot be read is a line that tells why.
    void ShowFile(const QString& path);

 private:
    void Wire();
    void Read(const QString& path);
    void Say(const QString& line);  // an empty line is not shown
    void OpenFindBar();
    void CloseFindBar();
    void Find(QTextDocument::FindFlags direction);  // goes on at the other end

    QWidget& window_;
};

}  // namespace forms
