#pragma once

#include <windows.h>

#include <string>
#include <vector>

/// What is wrong with how a dialog's controls are laid out: text that is cut off, controls that overlap or
/// reach beyond the dialog or their group box, labels that are not level with their control, rows that are
/// not level. Works on the controls as they are, at any resolution.
/// @return  one line for each defect; none for a good dialog
[[nodiscard]] std::vector<std::string> LayoutDefects(HWND dialog);
