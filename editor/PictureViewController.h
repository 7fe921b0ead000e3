// What the picture view asks of, and tells, the window it is shown in.
#pragma once

#include "platform/foundation/Value.h"

#include <cstdint>
#include <string>

namespace editor {

class PictureViewController {
public:
    virtual ~PictureViewController() = default;

    // Identifier of the current entry; empty when none is chosen. A generator's begins with
    // "GLIF_".
    virtual std::string filterName() const = 0;
    // 0: the picture is shown as it is and the user selects; else the current entry is applied at
    // every change.
    virtual int editMode() const = 0;
    // 2: a click picks the centre point.
    virtual int pointingMode() const = 0;

    virtual void applyCurrentFilter() = 0;
    // In picture points, y up.
    virtual void setCenterPoint(foundation::Point point) = 0;

    // selectionDidChange: — after the selection was made, changed or dropped.
    virtual void selectionDidChange() = 0;
    // scrollWheelDidChange: — after the user changed the zoom in the view.
    virtual void scrollWheelDidChange() = 0;

    // The steps of an undoable Generate: seed the random numbers, apply, show what can be undone.
    virtual void initRandomSeedWithValue(std::uint32_t seed) = 0;
    virtual void applyFilterWithAttributes(const std::string& identifier,
                                           const foundation::Dictionary& attributes) = 0;
    virtual void updateUndoRedoButtons() = 0;
    // Undoing also brings back the entry and the values that the picture was made of.
    virtual void restoreAttributes(const std::string& identifier,
                                   const foundation::Dictionary& attributes) = 0;
};

} // namespace editor
