#pragma once

#include <QImage>
#include <QString>

#include "foundation/result.h"

namespace quillmar::ui {

// Reads a picture (PNG, JPEG, WebP, GIF or BMP, whatever its file name) by its path or file URL. The file is
// untrusted: no other format is tried, and a picture of 100 megapixels is refused before it is decoded.
// Fails with a QRReaderError. May be called on any thread.
Result<QImage> readPictureFile(const QString& place);

}  // namespace quillmar::ui
