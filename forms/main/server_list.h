#pragma once
// The visible server list. UI thread only.

#include <QElapsedTimer>

#include "toolkit/lists.h"

namespace forms {

/// Raw listing lines in one column. Their ends matter most, for the names stand there: a line that is too
/// long for the list loses its middle and keeps both ends, and shows itself whole in a tooltip. That tells a
/// file's size and time in readable words, too. Letters that are typed find the next row by its name.
class ServerList : public toolkit::ListView {
    Q_OBJECT
 public:
    explicit ServerList(QWidget* parent = nullptr);

    void doItemsLayout() override;
    void keyboardSearch(const QString& letters) override;

 protected:
    void resizeEvent(QResizeEvent* event) override;
    bool viewportEvent(QEvent* event) override;

 private:
    void FitColumn();
    bool IsNamed(int row, const QString& beginning) const;

    QString typed_;  // within the interval that Qt has for it
    QElapsedTimer since_typed_;
};

}  // namespace forms
