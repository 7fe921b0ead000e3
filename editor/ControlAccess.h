// What assistive technology learns of sliders, steppers and colour wells: the name that the label
// before them shows, and the value as the user knows it.
//
// A control's label is the one whose buddy it is or, as a label has only one buddy, the one that
// the property "labelledBy" names.
#pragma once

class QString;
class QWidget;

namespace editor {

// From now on these controls are known to assistive technology.
void announceControls();
// The control has another value.
void announceValue(QWidget& control);
// As it is read out: the label's text without the colon and the mark of a shortcut. Empty when the
// control has none.
QString labelOf(const QWidget& control);

} // namespace editor
