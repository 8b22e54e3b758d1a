#pragma once
// A progress bar made of two picture boxes, the empty one and the filled one inside it.

#include <QWidget>

namespace toolkit {

/// A plain box whose width is also told in twips (15 to the pixel). A filled part lies in its parent, from
/// the left edge and over its whole height, and keeps its share of the parent's width when the parent is
/// resized.
class PictureBox : public QWidget {
    Q_OBJECT
 public:
    enum class Role { Empty, Filled };

    explicit PictureBox(QWidget* parent = nullptr);
    /// A filled part belongs to the parent that it has now, and begins with the width 0.
    void SetRole(Role role);
    double Width() const;         // twips
    void SetWidth(double twips);  // a filled part is held within 0 .. the parent's width
    bool HasFilledPart() const { return filled_part_ != nullptr; }
    int Percent() const;  // of an empty box that is filled; those who hear the window hear it

 protected:
    void paintEvent(QPaintEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

 private:
    void Place();
    void TellPercent();

    PictureBox* filled_part_ = nullptr;  // of an empty box
    int told_percent_ = 0;
    Role role_ = Role::Empty;
    double share_ = 0;  // of the parent's width, for a filled part
    double twips_ = 0;  // as set or scaled; the widget itself has whole pixels only
};

}  // namespace toolkit
