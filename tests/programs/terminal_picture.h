#pragma once

#include <string_view>

#include "testing/grey_canvas.h"

namespace quillmar::agent {

// Renders this output as a camera would see it in a terminal: cells twice as high as wide, block characters,
// both kinds of black and white, and reversed video. Any other character becomes a grey cell. The terminal's
// default colours are light on dark unless `isDarkTerminal` is false.
GreyCanvas pictureOf(std::string_view output, bool isDarkTerminal = true);

}  // namespace quillmar::agent
