#pragma once
// What the player plays: steps, each of which is done, waited for and pictured. UI thread only.

#include <QPoint>
#include <QRect>
#include <QString>
#include <Qt>
#include <functional>
#include <vector>

namespace demo {

/// A number painted on the picture of a control, inside one of its edges or corners.
struct Mark {
    QString control;  // of the main window
    Qt::Alignment at;
    QPoint shift = {};  // from there, in pixels
};

struct Step {
    QString name;
    std::function<void()> act;    // sends the events and returns at once; throws where it cannot be done
    std::function<bool()> until;  // whether the step is over; asked again and again
    /// The part of the screen that its picture shows; all of it where there is none.
    std::function<QRect()> frame = {};
    std::vector<Mark> marks = {};  // numbered from 1
};

}  // namespace demo
