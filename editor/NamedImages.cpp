#include "editor/NamedImages.h"

#include "platform/codecs/Codecs.h"
#include "platform/drawing/Picture.h"
#include "platform/foundation/Bundle.h"
#include "platform/imaging/Image.h"
#include "platform/imaging/Renderer.h"
#include "plugin/EditorPictures.h"

#include <QHash>
#include <QPixmap>

#include <algorithm>
#include <cstring>

namespace editor {

QImage imageOf(const foundation::PictureRef& picture)
{
    imaging::BitmapRef bitmap = picture ? picture->bitmap() : nullptr;
    if (bitmap && bitmap->format() != imaging::PixelFormat::Rgba8)
        bitmap =
            imaging::render(imaging::Image::fromBitmap(bitmap),
                            {0, 0, bitmap->width(), bitmap->height()}, imaging::PixelFormat::Rgba8);
    if (!bitmap)
        return {};
    const QImage shared(reinterpret_cast<const uchar*>(bitmap->row(0)), bitmap->width(),
                        bitmap->height(), static_cast<qsizetype>(bitmap->bytesPerRow()),
                        QImage::Format_RGBA8888);
    // Premultiplied is what painting is fast with; the conversion copies.
    return shared.convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

namespace {

// By the name alone, which the sub-folder is a part of.
QImage knownImage(const QString& base, const QString& kind, const QString& subfolder = {})
{
    static QHash<QString, QImage> known;
    const QString key = subfolder.isEmpty() ? base : subfolder + QLatin1Char('/') + base;
    if (const auto found = known.constFind(key); found != known.constEnd())
        return *found;
    const auto file =
        foundation::resourcePath(base.toStdString(), kind.toStdString(), subfolder.toStdString());
    const auto picture = file
                             ? codecs::readPicture(*file)
                             : foundation::Result<foundation::PictureRef>(foundation::PictureRef());
    const QImage image = picture ? imageOf(*picture) : QImage();
    if (!image.isNull())
        known.insert(key, image);
    return image;
}

QIcon icon(const QString& name, const QString& subfolder)
{
    // By their pixels alone, so that densities between 1 and 2 shrink the larger one.
    QIcon both;
    for (const char* density : {"", "@2x"}) {
        const QImage image =
            knownImage(name + QLatin1String(density), QStringLiteral("tif"), subfolder);
        if (!image.isNull())
            both.addPixmap(QPixmap::fromImage(image));
    }
    return both;
}

} // namespace

QImage imageWithNameOfType(const QString& name, const QString& type, double density)
{
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    const QString base = type.isEmpty() && dot > 0 ? name.left(dot) : name;
    const QString kind = type.isEmpty() && dot > 0 ? name.mid(dot + 1) : type;
    if (density > 1) {
        QImage dense = knownImage(base + QStringLiteral("@2x"), kind);
        if (!dense.isNull()) {
            dense.setDevicePixelRatio(2);
            return dense;
        }
    }
    return knownImage(base, kind);
}

QIcon iconWithName(const QString& name)
{
    return icon(name, {});
}

QIcon entryIcon(const QString& name)
{
    return name.isEmpty() ? QIcon() : icon(name, QStringLiteral("Icons"));
}

namespace {

// Empty for a type without a picture.
QString nameOfType(int type)
{
    for (const plugin::SmallPicture& small : plugin::kSmallPictures)
        if (small.type == type)
            return QString::fromLatin1(small.name);
    return {};
}

} // namespace

QImage imageFromType(int type, double density)
{
    const QString name = nameOfType(type);
    return name.isEmpty() ? QImage() : imageWithNameOfType(name, QStringLiteral("tif"), density);
}

QIcon iconFromType(int type)
{
    const QString name = nameOfType(type);
    return name.isEmpty() ? QIcon() : iconWithName(name);
}

const QCursor& cursorFromType(int type)
{
    static QHash<int, QCursor> known;
    if (const auto found = known.constFind(type); found != known.constEnd())
        return *found;
    QCursor cursor(type == 6 ? Qt::IBeamCursor : Qt::ArrowCursor);
    for (const plugin::CursorPicture& picture : plugin::kCursorPictures) {
        if (picture.type != type)
            continue;
        const QImage image =
            imageWithNameOfType(QString::fromLatin1(picture.name), QStringLiteral("tif"), 2);
        if (!image.isNull())
            cursor = QCursor(QPixmap::fromImage(image), picture.hotX, picture.hotY);
    }
    return *known.insert(type, cursor);
}

} // namespace editor
