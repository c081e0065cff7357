#pragma once

#include <QImage>
#include <QString>

#include "foundation/result.h"

namespace quillmar::ui {

// The picture in a file (PNG, JPEG, WebP, GIF or BMP, whatever its name says), by its path or by the text of
// its file URL. It comes from anybody and is not to be trusted: no other format is tried, and one of 100
// megapixels is refused before it is unpacked. Fails with a QRReaderError. Any thread.
Result<QImage> readPictureFile(const QString& place);

}  // namespace quillmar::ui
