// The window's small pictures and its cursors, by name and by type.
#pragma once

#include "platform/foundation/Value.h"

#include <QCursor>
#include <QIcon>
#include <QImage>
#include <QString>

namespace editor {

// The picture's pixels for drawing on screen, at its point size: a bitmap's own pixels. A null
// image when there is no picture or its pixels cannot be made.
QImage imageOf(const foundation::PictureRef& picture);

// A picture of the library's resource folder: NAME.TYPE, with NAME@2x.TYPE for dense screens where
// there is one. The type is the name's extension when none is given. Known pictures are kept by
// name for the life of the process. Null when there is no such file or it cannot be read.
QImage imageWithNameOfType(const QString& name, const QString& type = {}, double density = 1);

// The same picture for screens of every density.
QIcon iconWithName(const QString& name);
// The picture of a catalogue entry by its "CIFFilterIcon"; null where none was made.
QIcon entryIcon(const QString& name);

// imageFromType: — the marks of the lists and the selection tool, 7 and 11 to 14; null for others.
QImage imageFromType(int type, double density = 1);
QIcon iconFromType(int type);

// cursorFromType: — 0 to 11; 6 is the I-beam and 7, like all others, the arrow. The same cursor
// every time.
const QCursor& cursorFromType(int type);

} // namespace editor
