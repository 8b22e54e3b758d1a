#pragma once
// Splitters that the keyboard moves, too.

#include <QSplitter>

namespace toolkit {

/// Between its parts lie handles that take the focus, though not by Tab, which goes on from one part to the
/// next. A handle with the focus moves by the arrows across it, in small steps, and by Home and End as far as
/// the parts let it; Enter or Escape gives the focus back.
class Splitter : public QSplitter {
 public:
    using QSplitter::QSplitter;

 protected:
    QSplitterHandle* createHandle() override;
};

/// Moves the focus to the first visible handle of the window's Splitters, from a handle to the next one, and
/// from the last one back to where it was before.
void FocusNextHandle(const QWidget& window);

}  // namespace toolkit
