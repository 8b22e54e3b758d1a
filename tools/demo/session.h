#pragma once
// The demo session: what is done in the program, and how it is seen that it has been done. UI thread only.

#include <QDir>

#include "tools/demo/input.h"
#include "tools/demo/step.h"

namespace demo {

/// The steps from the open main window to its closing, in a program that has been started in `local` with
/// "Demo" as its first profile, whose account's home folder is `server`. `input` must outlive them.
std::vector<Step> Session(Input& input, const QDir& server, const QDir& local);

}  // namespace demo
