#pragma once
// The visible server list. UI thread only.

#include "toolkit/lists.h"

namespace forms {

/// Raw listing lines in one column. Their ends matter most, for the names stand there: a line that is too
/// long for the list loses its middle and keeps both ends, and shows itself whole in a tooltip. That tells a
/// file's size and time in readable words, too.
class ServerList : public toolkit::ListView {
    Q_OBJECT
 public:
    explicit ServerList(QWidget* parent = nullptr);

    void doItemsLayout() override;

 protected:
    void resizeEvent(QResizeEvent* event) override;
    bool viewportEvent(QEvent* event) override;

 private:
    void FitColumn();
};

}  // namespace forms
