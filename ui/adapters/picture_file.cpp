#include "ui/adapters/picture_file.h"

#include <QByteArray>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QUrl>
#include <algorithm>
#include <array>

#include "platform/common/zxing_decoder.h"
#include "platform/qr_reader.h"

namespace quillmar::ui {
namespace {

constexpr qint64 largestFile = 256 << 20;
// The memory of the largest picture at four bytes a pixel, in megabytes as QImageReader counts them.
constexpr int allocationMegabytes = tooManyPixels * 4 / (1 << 20) + 1;

struct Format {
  const char* name;
  QByteArrayView mark;
  qsizetype markAt = 0;
};

constexpr qsizetype longestMark = 12;

// Detects the format by its first bytes: Qt would try the reader of every installed format.
QByteArray formatOf(const QByteArray& head) {
  static const std::array formats{Format{"png", "\x89PNG\r\n\x1A\n"}, Format{"jpeg", "\xFF\xD8\xFF"},
                                  Format{"gif", "GIF8"}, Format{"bmp", "BM"}, Format{"webp", "WEBP", 8}};
  const auto format = std::ranges::find_if(formats, [&](const Format& known) {
    return QByteArrayView(head).sliced(std::min(known.markAt, head.size())).startsWith(known.mark);
  });
  return format == formats.end() ? QByteArray() : QByteArray(format->name);
}

Error sentence(const char* text) { return QRReaderError{text}; }

QString pathFrom(const QString& place) {
  return place.startsWith(QLatin1StringView("file:"), Qt::CaseInsensitive) ? QUrl(place).toLocalFile()
                                                                           : place;
}

bool isTooLarge(QSize size) { return qint64{size.width()} * size.height() >= tooManyPixels; }

Result<QImage> decode(QFile& file, const QByteArray& format) {
  static const bool isLimitSet = (QImageReader::setAllocationLimit(allocationMegabytes), true);
  Q_ASSERT(isLimitSet);
  QImageReader reader(&file, format);
  reader.setAutoDetectImageFormat(false);
  if (isTooLarge(reader.size())) {
    return Error(tooLargePicture());
  }
  QImage picture = reader.read();
  if (picture.isNull()) {
    return sentence("This picture cannot be read. It may be damaged.");
  }
  return picture;
}

}  // namespace

Result<QImage> readPictureFile(const QString& place) {
  QFile file(pathFrom(place));
  // Reading a pipe or a device might never end.
  if (!QFileInfo(file).isFile() || !file.open(QIODevice::ReadOnly)) {
    return sentence("This picture cannot be opened.");
  }
  const QByteArray format = formatOf(file.peek(longestMark));
  if (format.isEmpty()) {
    return sentence("This file is not a picture. Use a PNG, JPEG, WebP, GIF or BMP picture.");
  }
  return file.size() > largestFile ? Error(tooLargePicture()) : decode(file, format);
}

}  // namespace quillmar::ui
