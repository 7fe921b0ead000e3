// The editor's small pictures by name.
#pragma once

#include "plugin/EditorPictures.h"
#include "resources/pictures/Paint.h"

namespace pictures {

// So many pixels to a point.
Painting editorPicture(const plugin::EditorPicture& picture, int density);

} // namespace pictures
