#include "console/opening_row.h"

namespace quillmar {

void OpeningRow::drag(double dx) {
  if (dx < 0) {
    offset = dx;
  }
}

void OpeningRow::endDrag(double dx) {
  if (dx < threshold) {
    offset = threshold;
    isSwiped = true;
  } else {
    close();
  }
}

void OpeningRow::close() {
  offset = 0.0;
  isSwiped = false;
}

}  // namespace quillmar
