#pragma once
// A progress bar made of two picture boxes, the empty one and the filled one inside it.

#include <QWidget>

namespace toolkit {

/// A plain box whose width is also told in twips (15 to the pixel). As a filled part it keeps its share of the
/// parent's width when the parent is resized.
class PictureBox : public QWidget {
    Q_OBJECT
 public:
    enum class Role { Empty, Filled };
    explicit PictureBox(QWidget* parent = nullptr);
    void SetRole(Role role);
    double Width() const;             // twips
    void SetWidth(double twips);      // clipped to 0 .. the parent's width for a filled part

 protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

 private:
    Role role_ = Role::Empty;
    double twips_ = -1;               // set width; -1: follow the widget
};

}  // namespace toolkit
