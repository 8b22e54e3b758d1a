#pragma once
// The pictures of the help document: what is done in the program to have each of them. UI thread only.

#include "tools/demo/input.h"
#include "tools/demo/step.h"

namespace demo {

/// The steps from the open main window to its closing, in a program that stands beside the server of
/// tools/screens. A picture is a step with a frame, and has the step's name. `input` must outlive them.
std::vector<Step> Screens(Input& input);

}  // namespace demo
