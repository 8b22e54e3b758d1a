// The protocol trace, and the status labels above it.

#include "forms/main/main_form.h"
#include "ftp/trace_translator.h"

namespace forms {
namespace {

struct TraceLines {
    toolkit::ListBox& box;

    int Count() const { return box.ListCount(); }
    void RemoveFirst() { box.RemoveItem(0); }
    void Add(const QString& line) { box.AddItem(line); }
    void SelectLast() { box.SetListIndex(box.ListCount() - 1); }
};

}  // namespace

void MainForm::Trace(const QString& text) {
    TraceLines lines{*listTrace};
    ftp::AppendTraceText(lines, text);
}

void MainForm::Ftp1_Debug(const QString& line) {
    const QString text = ftp::TranslateTraceLine(line, Ftp1->SourceFileName, Ftp1->DestinationFileName);
    if (!text.isEmpty()) Trace(text);
}

void MainForm::Ftp1_Error(std::int32_t number, const QString& text) {
    ++failures_;
    Trace(ftp::ErrorLine(number, text));
    lblLastError->Show(QString::number(number) + QLatin1Char(' ') + text);
}

// Only what the trace has words for: the commands around it (type, features, data connections) say nothing to
// the user.
void MainForm::Ftp1_CommandSent(const QString& line) {
    const QString text = ftp::TranslateTraceLine(line, Ftp1->SourceFileName, Ftp1->DestinationFileName);
    if (!text.isEmpty()) lblLastAction->Show(text);
}

void MainForm::Ftp1_ConnectedChanged(bool connected) {
    lblState->Show(connected ? QStringLiteral("Ansluten till ") + Ftp1->HostName
                             : QStringLiteral("Ej ansluten"));
    ShowLock(connected);
}

}  // namespace forms
