// What assistive technology learns of a colour slider: in range mode a group of two sliders, the
// range's start and its end; in key-colour mode one slider.
#pragma once

#include "editor/CCColorSlider.h"

namespace editor {

// From now on colour sliders are known to assistive technology.
void announceColorSliders();
// The mark has another value.
void announceValue(CCColorSlider& slider, CCColorSlider::Mark mark);
// Another mark has the keyboard.
void announceFocus(CCColorSlider& slider);

} // namespace editor
