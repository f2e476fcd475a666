#pragma once

#include <string>

#include "toolkit/Controls.h"

/// The tree of controls below `root` as a person would see it, drawn plainly, as SVG text. What is
/// hidden is left out, what is disabled is grey.
std::string PanelPicture(const TControl& root);

/// A caption as it is shown: "&&" is an ampersand, a single "&" marks a key.
std::string ShownCaption(const TControl& control);
/// Pixels that the control's caption takes, with its mark.
int CaptionWidth(const TControl& control);
