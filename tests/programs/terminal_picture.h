#pragma once

#include <string_view>

#include "testing/grey_canvas.h"

namespace quillmar::agent {

// What a terminal shows of this output, as a camera would see it: cells twice as high as wide, block
// characters, the colours black and white in both their kinds, and reversed video. Other characters look like
// a grey cell. The terminal's own colours are light on dark unless told otherwise.
GreyCanvas pictureOf(std::string_view output, bool isDarkTerminal = true);

}  // namespace quillmar::agent
